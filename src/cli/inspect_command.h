// SPDX-License-Identifier: MIT
// hollin-cli inspect: what is inside a package. Touches neither the temporary files nor the
// keyboard.
#pragma once

#include "cli/arguments.h"
#include "cli/console.h"

namespace hollin {

[[nodiscard]] ExitCode RunInspectCommand(const InspectArguments& arguments, const Console& console);

}  // namespace hollin
