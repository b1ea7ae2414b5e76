// SPDX-License-Identifier: MIT
// hollin-cli pack: makes a package.
#pragma once

#include "cli/arguments.h"
#include "cli/console.h"

namespace hollin {

[[nodiscard]] ExitCode RunPackCommand(const PackArguments& arguments, const Console& console);

}  // namespace hollin
