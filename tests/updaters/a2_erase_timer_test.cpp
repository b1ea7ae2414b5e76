// SPDX-License-Identifier: MIT
#include "updaters/a2_erase_timer.h"

#include <gtest/gtest.h>

namespace hollin {
namespace {

using std::chrono::milliseconds;

TEST(A2EraseTimerTest, TheFirstPauseIs700MillisecondsAndEachLaterOne20) {
  A2EraseTimer timer;
  EXPECT_EQ(timer.NextPause(), milliseconds(700));
  timer.CountPause();
  EXPECT_EQ(timer.elapsed, 700U);
  EXPECT_EQ(timer.NextPause(), milliseconds(20));
  timer.CountPause();
  EXPECT_EQ(timer.elapsed, 720U);
  EXPECT_EQ(timer.NextPause(), milliseconds(20));
}

TEST(A2EraseTimerTest, AnEraseIsLateOnceItsTimeIsExceeded) {
  const A2EraseTimer timer{.elapsed = 720};
  EXPECT_FALSE(timer.IsLate(721));
  EXPECT_FALSE(timer.IsLate(720));
  EXPECT_TRUE(timer.IsLate(719));
}

// 700 milliseconds and then 20 at a time reach 2^32 - 16 after 49.7 days, and pass the largest time
// that a description can allow with the next poll.
TEST(A2EraseTimerTest, TheLargestTimeEndsBeyond32Bits) {
  constexpr uint32_t kLargest = 0xFFFFFFFF;
  A2EraseTimer timer{.elapsed = 700 + uint64_t{20} * 214748329};
  EXPECT_EQ(timer.elapsed, 0xFFFFFFF0U);
  EXPECT_FALSE(timer.IsLate(kLargest));
  EXPECT_EQ(timer.NextPause(), milliseconds(20));
  timer.CountPause();
  EXPECT_EQ(timer.elapsed, 0x100000004U);
  EXPECT_TRUE(timer.IsLate(kLargest));
  EXPECT_EQ(timer.NextPause(), milliseconds(20));
}

}  // namespace
}  // namespace hollin
