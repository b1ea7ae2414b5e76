// SPDX-License-Identifier: MIT
// hollin-cli update: the whole update without a window.
#pragma once

#include "cli/arguments.h"
#include "cli/update_display.h"

namespace hollin {

// Blocks until the update has ended. Wants the link's ids to be set. From then on the calling
// thread takes no Ctrl-C any more. The temporary files are gone at the end, whatever the outcome.
[[nodiscard]] ExitCode RunUpdateCommand(const UpdateArguments& arguments, UpdateDisplay& display);

}  // namespace hollin
