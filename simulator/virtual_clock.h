// SPDX-License-Identifier: MIT
// The keyboard's own time: what passed for real, if it goes by that at all, plus what it was told
// has passed. A program whose pauses are skipped tells their length, and an erase that takes two
// seconds is then as far as it would be.
#pragma once

#include <chrono>

namespace hollin::simulator {

class VirtualClock {
 public:
  using Duration = std::chrono::nanoseconds;

  explicit VirtualClock(bool withRealTime) : withRealTime(withRealTime) {}

  [[nodiscard]] Duration Now() const {
    if (!withRealTime) return told;
    return told + (std::chrono::steady_clock::now() - start);
  }
  void Pass(Duration length) { told += length; }

 private:
  bool withRealTime;
  std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now();
  Duration told{};
};

}  // namespace hollin::simulator
