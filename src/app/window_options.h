// SPDX-License-Identifier: MIT
// What the window program answers on its standard output instead of opening a window.
#pragma once

#include <string>

namespace hollin {

// The text for --help and --version, empty for every other argument. Asked before anything else, so
// that neither needs a display.
[[nodiscard]] std::string AnswerToOption(const std::string& argument);

}  // namespace hollin
