// SPDX-License-Identifier: MIT
// hidapi over whatever a fuzz target puts there: one keyboard, or none.
#pragma once

#include <functional>
#include <span>

#include "base/bytes.h"

namespace hollin::fuzz {

struct OneDevice {
  std::function<bool(ByteView report)> write;
  std::function<int(std::span<uint8_t> report)> read;
};

// Null for none. Lent; must outlive its use.
void PlugIn(OneDevice* device);
[[nodiscard]] size_t OpenHandles();

}  // namespace hollin::fuzz
