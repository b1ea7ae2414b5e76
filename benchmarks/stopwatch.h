// SPDX-License-Identifier: MIT
// Times the work of a benchmark against the bare work it cannot do without, taken in turns, so that
// whatever else the machine does weighs on both.
#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <ctime>
#include <limits>

namespace hollin {

// The processor's time alone, for work that waits for nothing: what else runs does not count.
struct ProcessorClock {
  using duration = std::chrono::nanoseconds;
  using rep = duration::rep;
  using period = duration::period;
  using time_point = std::chrono::time_point<ProcessorClock>;
  static constexpr bool is_steady = true;

  static time_point now() {
    timespec time = {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return time_point(std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec));
  }
};

template <typename Clock = std::chrono::steady_clock, typename Work>
double SecondsOf(const Work& work) {
  const auto start = Clock::now();
  work();
  return std::chrono::duration<double>(Clock::now() - start).count();
}

struct Comparison {
  double work = std::numeric_limits<double>::max();  // the best time of each, in seconds
  double bare = std::numeric_limits<double>::max();
};

// Runs the benchmark's loop; the time that is reported is the work's alone.
template <typename Clock = std::chrono::steady_clock, typename Work, typename Bare>
Comparison CompareInTurns(benchmark::State& state, const Work& work, const Bare& bare) {
  Comparison best;
  for ([[maybe_unused]] auto _ : state) {
    best.bare = std::min(best.bare, SecondsOf<Clock>(bare));
    const double seconds = SecondsOf<Clock>(work);
    best.work = std::min(best.work, seconds);
    state.SetIterationTime(seconds);
  }
  return best;
}

}  // namespace hollin
