// SPDX-License-Identifier: MIT
// hollin-cli devices: the keyboards that are attached. Opens none.
#pragma once

#include "cli/arguments.h"
#include "cli/console.h"
#include "cli/surroundings.h"

namespace hollin {

[[nodiscard]] ExitCode RunDevicesCommand(const DevicesArguments& arguments, const Console& console,
                                         const Surroundings& surroundings);

}  // namespace hollin
