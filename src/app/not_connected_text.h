// SPDX-License-Identifier: MIT
// What to tell a user whose keyboard is not there, in the user's language.
#pragma once

#include <QString>

namespace hollin {

class DatFileExamine;

// The package's own message where there is no translation of it.
[[nodiscard]] QString NotConnectedText(const DatFileExamine& datFile);

}  // namespace hollin
