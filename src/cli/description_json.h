// SPDX-License-Identifier: MIT
// The values of a flash description, defaults included, by the names of the fields that hold them.
#pragma once

#include "cli/json.h"
#include "device/ax_update.h"

namespace hollin {

// Of an updater that has read its description.
[[nodiscard]] Json DescriptionJson(const AXUpdate& updater);

// What its middle steps do: {"unit": "sector", "count": 3, ...}.
[[nodiscard]] Json PlanJson(const AXUpdate& updater);

}  // namespace hollin
