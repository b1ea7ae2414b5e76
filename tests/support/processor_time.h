// SPDX-License-Identifier: MIT
// What a piece of work costs, for comparing two of them in one run. The best of three, so that a
// busy machine matters little.
#pragma once

#include <algorithm>
#include <ctime>
#include <functional>

namespace hollin {

// In clock ticks of this process, at least one.
inline std::clock_t ProcessorTimeOf(const std::function<void()>& work) {
  std::clock_t best = 0;
  for (int run = 0; run < 3; run++) {
    const std::clock_t begin = std::clock();
    work();
    const std::clock_t spent = std::max<std::clock_t>(std::clock() - begin, 1);
    best = run == 0 ? spent : std::min(best, spent);
  }
  return best;
}

}  // namespace hollin
