// SPDX-License-Identifier: MIT
// The numbers of the simulator's options and faults: decimal, or hexadecimal after 0x; a decimal
// one may end in K (1024) or M (1024 x 1024).
#pragma once

#include <cstdint>
#include <string_view>

namespace hollin::simulator {

// False, with `value` as it was, when the text is no such number or it exceeds `most`.
[[nodiscard]] bool ParseNumber(std::string_view text, uint64_t most, uint64_t& value);

// The same for a whole text of hexadecimal digits without 0x.
[[nodiscard]] bool ParseHex(std::string_view text, uint64_t most, uint64_t& value);

}  // namespace hollin::simulator
