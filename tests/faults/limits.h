// SPDX-License-Identifier: MIT
// What a program may use at most. For child processes: nothing here can be taken back.
#pragma once

#include <cstddef>

namespace hollin::faults {

// Lets no file grow beyond `size` bytes.
void LimitFileSize(size_t size);

// Leaves the program as much more memory. Under a sanitizer, which does not live with that, no
// single allocation may be larger instead.
void LimitMemory(size_t more);

}  // namespace hollin::faults
