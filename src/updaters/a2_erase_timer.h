// SPDX-License-Identifier: MIT
// How long the erase of an A2 sector has taken, as told by the pauses before its polls.
#pragma once

#include <chrono>
#include <cstdint>

namespace hollin {

struct A2EraseTimer {
  static constexpr std::chrono::milliseconds kFirstPause{700};
  static constexpr std::chrono::milliseconds kLaterPause{20};

  // Milliseconds. Deliberate: 64 bits, so that the longest time that a description can allow ends
  // after its 49.7 days instead of wrapping into polls for ever.
  uint64_t elapsed = 0;

  // The pause before the next poll: a long one before the first, then short ones.
  [[nodiscard]] std::chrono::milliseconds NextPause() const {
    return elapsed == 0 ? kFirstPause : kLaterPause;
  }
  // Counts the pause that NextPause gave.
  void CountPause() { elapsed += static_cast<uint64_t>(NextPause().count()); }
  // Whether more than the allowed milliseconds are over.
  [[nodiscard]] bool IsLate(uint32_t allowed) const { return elapsed > allowed; }
};

}  // namespace hollin
