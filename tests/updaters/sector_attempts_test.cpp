// SPDX-License-Identifier: MIT
#include "updaters/sector_attempts.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace hollin {
namespace {

// Programming that fails the first `failures` times, and moves the read position whenever it runs.
class SectorAttemptsTest : public testing::Test {
 protected:
  [[nodiscard]] bool Run(int failures) {
    return EraseAndProgram(
        position,
        [this] {
          erases++;
          return erases != failingErase;
        },
        [this, failures] {
          starts.push_back(position);
          position += 10;
          return static_cast<int>(starts.size()) > failures;
        });
  }

  uint32_t position = 100;
  int erases = 0;
  int failingErase = 0;
  std::vector<uint32_t> starts;
};

TEST_F(SectorAttemptsTest, OneAttemptIsEnoughWhenItWorks) {
  EXPECT_TRUE(Run(0));
  EXPECT_EQ(erases, 1);
  EXPECT_EQ(position, 110U);
}

TEST_F(SectorAttemptsTest, AnotherAttemptErasesAgainFromTheSamePosition) {
  EXPECT_TRUE(Run(2));
  EXPECT_EQ(erases, 3);
  EXPECT_EQ(starts, (std::vector<uint32_t>{100, 100, 100}));
  EXPECT_EQ(position, 110U);
}

TEST_F(SectorAttemptsTest, TheSixthAttemptMayWork) {
  EXPECT_TRUE(Run(5));
  EXPECT_EQ(erases, 6);
}

TEST_F(SectorAttemptsTest, ThereIsNoSeventhAttempt) {
  EXPECT_FALSE(Run(6));
  EXPECT_EQ(erases, 6);
  EXPECT_EQ(starts.size(), 6U);
  EXPECT_EQ(position, 100U);
}

TEST_F(SectorAttemptsTest, AFailedEraseIsNotTriedAgain) {
  failingErase = 1;
  EXPECT_FALSE(Run(0));
  EXPECT_EQ(erases, 1);
  EXPECT_TRUE(starts.empty());
}

TEST_F(SectorAttemptsTest, AFailedEraseEndsLaterAttemptsToo) {
  failingErase = 3;
  EXPECT_FALSE(Run(6));
  EXPECT_EQ(erases, 3);
  EXPECT_EQ(starts.size(), 2U);
}

}  // namespace
}  // namespace hollin
