// SPDX-License-Identifier: MIT
// hollin-cli inspect: what is inside a package. Touches neither the temporary files nor the
// keyboard.
#pragma once

#include "cli/arguments.h"
#include "cli/console.h"
#include "package/package_inspection.h"

namespace hollin {

[[nodiscard]] ExitCode RunInspectCommand(const InspectArguments& arguments, const Console& console);

// How a program ends that has looked at a package; with `strict`, findings are an error.
[[nodiscard]] ExitCode ExitCodeOf(const PackageInspection& inspection, bool strict);

}  // namespace hollin
