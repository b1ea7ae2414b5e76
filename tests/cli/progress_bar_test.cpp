// SPDX-License-Identifier: MIT
#include "cli/progress_bar.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace hollin {
namespace {

using namespace std::chrono_literals;
using std::chrono::seconds;

TEST(ProgressBarTest, DurationsAreMinutesAndHours) {
  EXPECT_EQ(FormatDuration(0s), "0:00");
  EXPECT_EQ(FormatDuration(59s), "0:59");
  EXPECT_EQ(FormatDuration(60s), "1:00");
  EXPECT_EQ(FormatDuration(61s), "1:01");
  EXPECT_EQ(FormatDuration(3599s), "59:59");
  EXPECT_EQ(FormatDuration(3600s), "1:00:00");
  EXPECT_EQ(FormatDuration(3601s), "1:00:01");
}

TEST(ProgressBarTest, TheTimeLeftFollowsFromTheStepsSoFar) {
  UpdateProgress progress{.completed = 2, .total = 10, .elapsed = 6s, .lastCompleted = 6s};
  EXPECT_EQ(progress.TimeLeft(), seconds(24));
  progress.elapsed = 8s;
  EXPECT_EQ(progress.TimeLeft(), seconds(22));
}

TEST(ProgressBarTest, ASlowStepLeavesNoNegativeTime) {
  const UpdateProgress progress{.completed = 2, .total = 4, .elapsed = 60s, .lastCompleted = 6s};
  EXPECT_EQ(progress.TimeLeft(), seconds(0));
}

TEST(ProgressBarTest, BeforeTheFirstStepAndAfterTheLastThereIsNoTimeLeft) {
  EXPECT_EQ((UpdateProgress{.completed = 0, .total = 4}).TimeLeft(), std::nullopt);
  EXPECT_NE((UpdateProgress{.completed = 1, .total = 4}).TimeLeft(), std::nullopt);
  EXPECT_EQ((UpdateProgress{.completed = 4, .total = 4}).TimeLeft(), std::nullopt);
}

TEST(ProgressBarTest, ShowsStepAndTimes) {
  const UpdateProgress progress{.completed = 5,
                                .total = 10,
                                .stepName = "write block 5 of 8",
                                .elapsed = 12s,
                                .lastCompleted = 10s};
  EXPECT_EQ(RenderProgress(progress, 79),
            "[#######........]  50%  step 6/10  0:12, 0:08 left  write block 5 of 8");
}

TEST(ProgressBarTest, TheBarIsEmptyAtFirstAndFullAtLast) {
  EXPECT_EQ(RenderProgress({.completed = 0, .total = 4}, 79),
            "[...............]   0%  step 1/4  0:00");
  EXPECT_EQ(RenderProgress({.completed = 4, .total = 4}, 79),
            "[###############] 100%  step 4/4  0:00");
}

TEST(ProgressBarTest, FitsEveryWidth) {
  const UpdateProgress progress{.completed = 123456,
                                .total = 200000,
                                .stepName = "write sector 99999 of 99999 (pack 2)",
                                .elapsed = 100000s,
                                .lastCompleted = 99999s};
  for (size_t width = 0; width < 200; width++) {
    EXPECT_LE(RenderProgress(progress, width).size(), width) << width;
  }
}

TEST(ProgressBarTest, ANarrowTerminalLosesTheNameAndThenTheBar) {
  const UpdateProgress progress{.completed = 0, .total = 4, .stepName = "verify"};
  const std::string whole = "[..........]   0%  step 1/4  0:00  verify";
  EXPECT_EQ(RenderProgress(progress, whole.size()), whole);
  EXPECT_EQ(RenderProgress(progress, whole.size() - 1), whole.substr(0, whole.size() - 1));
  EXPECT_EQ(RenderProgress(progress, 33), "[..........]   0%  step 1/4  0:00");
  EXPECT_EQ(RenderProgress(progress, 32), "  0%  step 1/4  0:00");
}

TEST(ProgressBarTest, TheBarsLengthDependsOnTheWidthAlone) {
  EXPECT_THAT(RenderProgress({.completed = 1, .total = 4, .stepName = "a"}, 100),
              ::testing::StartsWith("[#####...............] "));
  EXPECT_THAT(RenderProgress({.completed = 1, .total = 4, .stepName = std::string(90, 'a')}, 100),
              ::testing::StartsWith("[#####...............] "));
}

}  // namespace
}  // namespace hollin
