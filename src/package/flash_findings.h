// SPDX-License-Identifier: MIT
// What the values of a description, together with its image, will do that their author will not
// have meant.
#pragma once

#include <cstddef>

#include "device/ax_update.h"
#include "package/finding.h"

namespace hollin {

// Looks at a loaded updater.
void FindInFlash(AXUpdate& updater, size_t pack, FindingList& findings);

}  // namespace hollin
