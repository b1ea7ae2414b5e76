// SPDX-License-Identifier: MIT
// A package with all sums set right, so that what lies behind them is reached.
#pragma once

#include "base/bytes.h"

namespace hollin::fuzz {

// Regions that do not lie inside stay as they are.
[[nodiscard]] Bytes MendedPackage(ByteView input);

}  // namespace hollin::fuzz
