// SPDX-License-Identifier: MIT
// What the values of a description, together with its image, will do that their author will not
// have meant.
#pragma once

#include <cstdint>
#include <optional>

#include "device/ax_update.h"
#include "package/finding.h"

namespace hollin {

// Looks at a loaded updater. `describedDataLength` is what an A1 description said.
void FindInFlash(AXUpdate& updater, size_t pack, std::optional<uint32_t> describedDataLength,
                 FindingList& findings);

}  // namespace hollin
