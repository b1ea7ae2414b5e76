// SPDX-License-Identifier: MIT
// How a sector gets its data, whatever the flash: erase it, program it, and when programming fails
// start over.
#pragma once

namespace hollin {

inline constexpr int kSectorAttempts = 6;

// `readPosition` is put back before another attempt, so that it sends the same bytes. A failed
// erase is not tried again: a sector that cannot be erased will not be by asking more often.
template <typename Position, typename Erase, typename Program>
[[nodiscard]] bool EraseAndProgram(Position& readPosition, const Erase& erase,
                                   const Program& program) {
  for (int attempt = 0; attempt < kSectorAttempts; attempt++) {
    if (!erase()) return false;
    const Position start = readPosition;
    if (program()) return true;
    readPosition = start;
  }
  return false;
}

}  // namespace hollin
