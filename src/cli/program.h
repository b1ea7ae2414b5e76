// SPDX-License-Identifier: MIT
// hollin-cli itself, but for what main() does to the process.
#pragma once

#include <string>
#include <vector>

#include "cli/console.h"
#include "cli/exit_code.h"

namespace hollin {

// `arguments` without the program's name.
[[nodiscard]] ExitCode RunProgram(const std::vector<std::string>& arguments,
                                  const Console& console);

}  // namespace hollin
