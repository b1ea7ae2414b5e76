// SPDX-License-Identifier: MIT
// Waiting for what other processes do.
#pragma once

#include <chrono>
#include <functional>
#include <thread>

namespace hollin {

// Asks again and again until `isTrue` or it takes too long; the last answer.
[[nodiscard]] inline bool Eventually(const std::function<bool()>& isTrue) {
  using namespace std::chrono_literals;
  const auto end = std::chrono::steady_clock::now() + 60s;
  while (!isTrue()) {
    if (std::chrono::steady_clock::now() >= end) return false;
    std::this_thread::sleep_for(10ms);
  }
  return true;
}

}  // namespace hollin
