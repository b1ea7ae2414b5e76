// SPDX-License-Identifier: MIT
// Files that the command line makes for the user.
#pragma once

#include <string>

#include "base/bytes.h"

namespace hollin {

// Writes a file that is there either whole or, when the answer is false, as it was before: the
// bytes go to a temporary name beside it, which is then renamed. Only a regular file is replaced;
// where `path` is a link, the file that it names. `reason` says why it failed.
[[nodiscard]] bool WriteOutputFile(const std::string& path, ByteView bytes, std::string& reason);

}  // namespace hollin
