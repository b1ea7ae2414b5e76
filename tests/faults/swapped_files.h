// SPDX-License-Identifier: MIT
// What somebody who is quick can do to a temporary file between its making and its loading.
#pragma once

#include <string>
#include <vector>

namespace hollin::faults {

struct Swap {
  const char* name;
  // `path` need not exist; what cannot be done is left undone.
  void (*make)(const std::string& path);
};
[[nodiscard]] const std::vector<Swap>& Swaps();

// Removes what swaps at that path may have put beside it.
void RemoveLeftovers(const std::string& path);

}  // namespace hollin::faults
