// SPDX-License-Identifier: MIT
// Files of our own in a folder that everybody writes to: the parts of a package on their way to the
// updaters. Nothing here throws.
#pragma once

#include <string>

#include "base/bytes.h"

namespace hollin {

// Creates or empties a file of our own and writes `bytes` into it. For folders such as /tmp, where
// other users may have prepared the name: no link is followed, and an existing file is used only if
// it is a regular file that the user owns under this one name; it is then set to mode 0600. False
// when the file could not be made; whether all bytes found room is not checked.
[[nodiscard]] bool WriteOwnFile(const std::string& path, ByteView bytes);

// Removes a file, a link or an empty folder if the user owns it; never what lies inside or behind
// it. Errors are ignored, as is an empty path.
void RemoveOwnFile(const std::string& path);

}  // namespace hollin
