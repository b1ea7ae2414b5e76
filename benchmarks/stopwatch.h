// SPDX-License-Identifier: MIT
// Times the work of a benchmark against the bare work it cannot do without, taken in turns, so that
// whatever else the machine does weighs on both.
#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <limits>

namespace hollin {

template <typename Work>
double SecondsOf(const Work& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

struct Comparison {
  double work = std::numeric_limits<double>::max();  // the best time of each, in seconds
  double bare = std::numeric_limits<double>::max();
};

// Runs the benchmark's loop; the time that is reported is the work's alone.
template <typename Work, typename Bare>
Comparison CompareInTurns(benchmark::State& state, const Work& work, const Bare& bare) {
  Comparison best;
  for ([[maybe_unused]] auto _ : state) {
    best.bare = std::min(best.bare, SecondsOf(bare));
    const double seconds = SecondsOf(work);
    best.work = std::min(best.work, seconds);
    state.SetIterationTime(seconds);
  }
  return best;
}

}  // namespace hollin
