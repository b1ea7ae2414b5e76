// SPDX-License-Identifier: MIT
// What the desktop knows the program by.
#pragma once

namespace hollin {

// Gives the application its name, and its desktop entry, from which desktops take its icon and by
// which they tell whose window it is.
void NameProgram();

}  // namespace hollin
