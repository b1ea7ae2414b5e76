// SPDX-License-Identifier: MIT
#include "app/progress_words.h"

#include <gtest/gtest.h>

#include <limits>

namespace hollin {
namespace {

using namespace std::chrono_literals;

class ProgressWordsTest : public ::testing::Test {
 protected:
  [[nodiscard]] std::string RunningAt(std::chrono::milliseconds time) const {
    QString text = words.Running(start + time);
    return text.replace(QString::fromUtf8("  ·  "), "; ").toStdString();
  }

  ProgressWords::Time start{1000h};
  ProgressWords words;
};

TEST_F(ProgressWordsTest, StepIsTheOneThatRuns) {
  words.Start(3, start);
  EXPECT_EQ(RunningAt(0s), "Step 1 of 3; 0:00 elapsed");
  words.CompleteStep(0, start + 1s);
  EXPECT_EQ(RunningAt(1s), "Step 2 of 3; 0:01 elapsed");
  words.CompleteStep(2, start + 2s);
  EXPECT_EQ(RunningAt(2s), "Step 3 of 3; 0:02 elapsed");
}

TEST_F(ProgressWordsTest, TimeIsCountedInMinutesAndHours) {
  words.Start(3, start);
  EXPECT_EQ(RunningAt(999ms), "Step 1 of 3; 0:00 elapsed");
  EXPECT_EQ(RunningAt(1s), "Step 1 of 3; 0:01 elapsed");
  EXPECT_EQ(RunningAt(59s), "Step 1 of 3; 0:59 elapsed");
  EXPECT_EQ(RunningAt(60s), "Step 1 of 3; 1:00 elapsed");
  EXPECT_EQ(RunningAt(59min + 59s), "Step 1 of 3; 59:59 elapsed");
  EXPECT_EQ(RunningAt(1h + 2min + 3s), "Step 1 of 3; 1:02:03 elapsed");
}

TEST_F(ProgressWordsTest, RestIsEstimatedFromTheSecondCompletedStepOn) {
  words.Start(12, start);
  words.CompleteStep(0, start + 10s);
  EXPECT_EQ(RunningAt(10s), "Step 2 of 12; 0:10 elapsed");
  words.CompleteStep(1, start + 20s);
  EXPECT_EQ(RunningAt(20s), "Step 3 of 12; 0:20 elapsed; about 1:40 left");
  EXPECT_EQ(RunningAt(24s), "Step 3 of 12; 0:24 elapsed; about 1:40 left");
  EXPECT_EQ(RunningAt(25s), "Step 3 of 12; 0:25 elapsed; about 1:35 left");
}

TEST_F(ProgressWordsTest, LongRestIsRoundedUpToHalfMinutes) {
  words.Start(26, start);
  words.CompleteStep(1, start + 10s);  // 24 steps of 5 s are left
  EXPECT_EQ(RunningAt(10s), "Step 3 of 26; 0:10 elapsed; about 2:00 left");
  EXPECT_EQ(RunningAt(11s), "Step 3 of 26; 0:11 elapsed; about 2:00 left");
  words.Start(27, start);
  words.CompleteStep(1, start + 10s);
  EXPECT_EQ(RunningAt(10s), "Step 3 of 27; 0:10 elapsed; about 2:30 left");
}

TEST_F(ProgressWordsTest, ShortRestIsAFewSeconds) {
  words.Start(4, start);
  words.CompleteStep(1, start + 10s);
  EXPECT_EQ(RunningAt(10s), "Step 3 of 4; 0:10 elapsed; about 0:10 left");
  EXPECT_EQ(RunningAt(10s + 1s), "Step 3 of 4; 0:11 elapsed; a few seconds left");
  EXPECT_EQ(RunningAt(1h), "Step 3 of 4; 1:00:00 elapsed; a few seconds left");
}

TEST_F(ProgressWordsTest, MostStepsThatThereCanBeAreCountedToTheLast) {
  constexpr int kMost = std::numeric_limits<int>::max();
  words.Start(kMost, start);
  words.CompleteStep(1, start + 1h);
  EXPECT_EQ(RunningAt(1h), "Step 3 of 2147483647; 1:00:00 elapsed; about 1073741822:30:00 left");
  words.CompleteStep(kMost - 2, start + 1h);
  EXPECT_EQ(words.Failed(start + 1h), "Stopped in step 2147483647 of 2147483647 after 1:00:00");
  words.CompleteStep(kMost - 1, start + 1h);
  EXPECT_EQ(RunningAt(1h), "Step 2147483647 of 2147483647; 1:00:00 elapsed");
}

TEST_F(ProgressWordsTest, EndTellsTheWholeTime) {
  words.Start(12, start);
  words.CompleteStep(2, start + 3s);
  EXPECT_EQ(words.Completed(start + 65s), "Completed in 1:05");
  EXPECT_EQ(words.Failed(start + 65s), "Stopped in step 4 of 12 after 1:05");
  words.CompleteStep(11, start + 4s);
  EXPECT_EQ(words.Failed(start + 5s), "Stopped in step 12 of 12 after 0:05");
}

TEST_F(ProgressWordsTest, WithoutStepsThereAreNoWords) {
  for (const int count : {0, -1}) {
    words.Start(count, start);
    EXPECT_EQ(RunningAt(1s), "");
    EXPECT_EQ(words.Failed(start), "");
  }
}

TEST_F(ProgressWordsTest, SecondUpdateBeginsAnew) {
  words.Start(3, start);
  words.CompleteStep(2, start + 9s);
  words.Start(3, start + 1h);
  EXPECT_EQ(RunningAt(1h + 1s), "Step 1 of 3; 0:01 elapsed");
}

}  // namespace
}  // namespace hollin
