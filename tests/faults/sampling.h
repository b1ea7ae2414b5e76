// SPDX-License-Identifier: MIT
// How much of a matrix is run: a sample, the same every day or the one that HOLLIN_CAMPAIGN_SEED
// asks for, or all of it where HOLLIN_CAMPAIGN_ALL is set.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <random>
#include <vector>

namespace hollin::faults {

inline bool RunsAll() { return std::getenv("HOLLIN_CAMPAIGN_ALL") != nullptr; }

inline unsigned Seed() {
  const char* given = std::getenv("HOLLIN_CAMPAIGN_SEED");
  return given == nullptr ? 30U : static_cast<unsigned>(std::strtoul(given, nullptr, 10));
}

template <typename T>
void Reduce(std::vector<T>& all, size_t sampleSize) {
  if (RunsAll()) return;
  std::shuffle(all.begin(), all.end(), std::mt19937(Seed()));
  all.resize(std::min(all.size(), sampleSize));
}

}  // namespace hollin::faults
