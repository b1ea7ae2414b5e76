// SPDX-License-Identifier: MIT
// What a piece of work costs, for comparing two of them in one run.
#pragma once

#include <algorithm>
#include <ctime>
#include <functional>
#include <limits>

namespace hollin {

// For sixteen times as much to do: 2.5 times for each of the four doublings. Looking back at all
// that was done before takes 256 times as long.
inline constexpr double kMostGrowthOf16Times = 39;

// In clock ticks of this process, at least one.
inline std::clock_t ProcessorTimeOf(const std::function<void()>& work) {
  const std::clock_t begin = std::clock();
  work();
  return std::max<std::clock_t>(std::clock() - begin, 1);
}

// How many times as long `many` takes as `few`: the least of three pairs, of which the first below
// the limit is enough. The two are measured in turn, so that what else the machine does slows both;
// and `few` runs once before, so that it is not the one that pays for fresh memory.
inline double LeastGrowth(const std::function<void()>& few, const std::function<void()>& many) {
  few();
  double least = std::numeric_limits<double>::infinity();
  for (int pair = 0; pair < 3 && least >= kMostGrowthOf16Times; pair++) {
    const auto fewTime = static_cast<double>(ProcessorTimeOf(few));
    least = std::min(least, static_cast<double>(ProcessorTimeOf(many)) / fewTime);
  }
  return least;
}

}  // namespace hollin
