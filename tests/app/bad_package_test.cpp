// SPDX-License-Identifier: MIT
// A good package, then a bad one, then an update: wherever the bad one was found out, nothing of
// either is written and nothing is called a success.
#include <gtest/gtest.h>

#include "app/update_loop.h"
#include "tests/app/bad_packages.h"
#include "tests/package/examine_test.h"
#include "tests/package/literal_packages.h"
#include "tests/support/recorded_pause.h"

namespace hollin {
namespace {

class BadPackageTest : public ExamineTest, public ::testing::WithParamInterface<BadPackage> {
 protected:
  void ExpectUpdateRefused() {
    std::vector<int32_t> progress;
    EXPECT_EQ(RunUpdate(datFile, [&](int32_t value) { progress.push_back(value); }),
              UpdateOutcome::kFailed);
    EXPECT_EQ(progress, (std::vector<int32_t>{-2}));
    EXPECT_EQ(hidapi.calls, std::vector<std::string>{});
    EXPECT_TRUE(pauses.lengths.empty());
  }

  RecordedPause pauses;
};

TEST_P(BadPackageTest, NothingIsSentAndTheUpdateFails) {
  ASSERT_TRUE(Examine(GetParam().Before()));

  EXPECT_FALSE(Examine(GetParam().After()));

  EXPECT_FALSE(datFile.IsFileReady());
  EXPECT_EQ(datFile.TotalStepCount(), 0);
  EXPECT_FALSE(datFile.RunUpdateStep(0));
  EXPECT_EQ(datFile.NotConnectedMessage(), "The TS30 is not connected.");
  ExpectUpdateRefused();
}

INSTANTIATE_TEST_SUITE_P(AfterAGoodOne, BadPackageTest, ::testing::ValuesIn(BadPackages()),
                         NameOfBadPackage);

using BadPackageFilesTest = ExamineTest;

TEST_F(BadPackageFilesTest, AfterATempFileThatCouldNotBeWrittenNothingIsSent) {
  ASSERT_TRUE(Examine(TwoPackPackage()));
  RemoveTempFiles();
  std::filesystem::create_directory("/tmp/TEMP2.BIN");
  EXPECT_FALSE(Examine(TwoPackPackage()));
  EXPECT_EQ(RunUpdate(datFile, [](int32_t value) { EXPECT_EQ(value, -2); }),
            UpdateOutcome::kFailed);
  EXPECT_EQ(hidapi.calls, std::vector<std::string>{});
}

}  // namespace
}  // namespace hollin
