// SPDX-License-Identifier: MIT
// The numbers behind the refusal of a description or image.
#pragma once

#include <string>

#include "device/ax_update.h"

namespace hollin::words {

// "100", "3 and 2 of 6"; empty where the words say everything.
[[nodiscard]] std::string DetailOf(LoadRefusal refusal, const AXUpdate& updater);

}  // namespace hollin::words
