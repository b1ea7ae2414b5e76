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

// The largest time that a description can allow ends after 49.7 days.
TEST(A2EraseTimerTest, ElapsedPasses32Bits) {
  A2EraseTimer timer{.elapsed = 0xFFFFFFF0};
  timer.CountPause();
  EXPECT_EQ(timer.elapsed, 0x100000004U);
  EXPECT_GT(timer.elapsed, uint64_t{0xFFFFFFFF});
  EXPECT_EQ(timer.NextPause(), milliseconds(20));
}

}  // namespace
}  // namespace hollin
