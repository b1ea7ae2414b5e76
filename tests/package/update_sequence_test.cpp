// SPDX-License-Identifier: MIT
// How the steps of one update are spread over the updaters of a package.
#include <gtest/gtest.h>

#include <limits>

#include "package/dat_file_examine.h"
#include "tests/package/fake_update.h"
#include "tests/support/hex_bytes.h"
#include "tests/support/link_test.h"

namespace hollin {
namespace {

class UpdateSequenceTest : public LinkTest {
 protected:
  void OnePack(uint32_t steps) {
    datFile.isFileReady = true;
    datFile.countDataPack = 1;
    datFile.Update1 = std::make_unique<FakeUpdate>("1", steps, story);
  }

  void TwoPacks(uint32_t steps1, uint32_t steps2) {
    OnePack(steps1);
    datFile.countDataPack = 2;
    datFile.Update2 = std::make_unique<FakeUpdate>("2", steps2, story);
  }

  void RunSteps(uint32_t count) {
    for (uint32_t i = 0; i < count; i++) EXPECT_TRUE(datFile.RunUpdateStep(i)) << i;
  }

  static void FailAt(AXUpdate& updater, const std::string& operation) {
    dynamic_cast<FakeUpdate&>(updater).answer = [operation](const std::string& line) {
      return line != operation;
    };
  }

  Story story;
  DatFileExamine datFile;
};

TEST_F(UpdateSequenceTest, PacksOfFourAndSixStepsTakeTenSteps) {
  TwoPacks(4, 6);
  EXPECT_EQ(datFile.TotalStepCount(), 10);
  RunSteps(10);
  EXPECT_EQ(story, (Story{"1 EnterUpdateMode(5)", "1 RunStep(0)", "1 RunStep(1)", "1 VerifyImage",
                          "2 EnterUpdateMode(5)", "2 RunStep(0)", "2 RunStep(1)", "2 RunStep(2)",
                          "2 RunStep(3)", "2 VerifyImage"}));
}

TEST_F(UpdateSequenceTest, IndexesBeyondTwoPacksGoToTheSecond) {
  TwoPacks(4, 6);
  EXPECT_TRUE(datFile.RunUpdateStep(10));
  EXPECT_TRUE(datFile.RunUpdateStep(0xFFFFFFFF));
  EXPECT_EQ(story, (Story{"2 RunStep(5)", "2 RunStep(4294967290)"}));
}

TEST_F(UpdateSequenceTest, WithOnePackEveryIndexGoesToTheFirstUpdater) {
  OnePack(3);
  datFile.Update2 = std::make_unique<FakeUpdate>("2", 6, story);  // not of this package
  EXPECT_EQ(datFile.TotalStepCount(), 3);
  RunSteps(3);
  EXPECT_TRUE(datFile.RunUpdateStep(3));
  EXPECT_TRUE(datFile.RunUpdateStep(4));
  EXPECT_TRUE(datFile.RunUpdateStep(0xFFFFFFFF));
  EXPECT_EQ(story, (Story{"1 EnterUpdateMode(5)", "1 RunStep(0)", "1 VerifyImage", "1 RunStep(2)",
                          "1 RunStep(3)", "1 RunStep(4294967294)"}));
}

TEST_F(UpdateSequenceTest, AnUpdaterOfOneStepOnlyEntersUpdateMode) {
  TwoPacks(1, 1);
  RunSteps(2);
  EXPECT_EQ(story, (Story{"1 EnterUpdateMode(5)", "2 EnterUpdateMode(5)"}));
}

TEST_F(UpdateSequenceTest, AnUpdaterOfTwoStepsEntersUpdateModeAndVerifies) {
  OnePack(2);
  RunSteps(2);
  EXPECT_EQ(story, (Story{"1 EnterUpdateMode(5)", "1 VerifyImage"}));
}

TEST_F(UpdateSequenceTest, AStepAnswersWhatTheUpdaterAnswers) {
  TwoPacks(3, 3);
  FailAt(*datFile.Update1, "EnterUpdateMode(5)");
  FailAt(*datFile.Update2, "RunStep(0)");
  EXPECT_FALSE(datFile.RunUpdateStep(0));
  EXPECT_TRUE(datFile.RunUpdateStep(1));
  EXPECT_TRUE(datFile.RunUpdateStep(2));
  EXPECT_FALSE(datFile.RunUpdateStep(4));
  FailAt(*datFile.Update2, "VerifyImage");
  EXPECT_FALSE(datFile.RunUpdateStep(5));
}

TEST_F(UpdateSequenceTest, TheTotalIsASigned32BitNumber) {
  TwoPacks(0x7FFFFFFE, 1);
  EXPECT_EQ(datFile.TotalStepCount(), std::numeric_limits<int32_t>::max());
  TwoPacks(0, 0);
  EXPECT_EQ(datFile.TotalStepCount(), 0);
}

TEST_F(UpdateSequenceTest, TheEndOfTheUpdateGoesThroughTheFirstUpdaterOnly) {
  TwoPacks(3, 3);
  hidapi.Reply(Hex("09 00 00 00"));

  EXPECT_TRUE(datFile.EndUpdate(true));

  EXPECT_EQ(hidapi.SentMessages(), std::vector<Bytes>{Hex("09 00 00 00")});
  EXPECT_EQ(hidapi.CountOf("hid_close"), 1U);
  EXPECT_EQ(datFile.Update1->link, HidDevice::instance);
  EXPECT_EQ(datFile.Update2->link, nullptr);
  EXPECT_EQ(story, Story{});
}

TEST_F(UpdateSequenceTest, TheEndOfAFailedUpdateSaysSo) {
  OnePack(3);
  hidapi.Reply(Hex("09 01 00 00"));
  EXPECT_TRUE(datFile.EndUpdate(false));
  EXPECT_EQ(hidapi.SentMessages(), std::vector<Bytes>{Hex("09 01 00 00")});
}

TEST_F(UpdateSequenceTest, AnEndThatIsNotAcknowledgedIsFalse) {
  OnePack(3);
  hidapi.Reply(Hex("09 01 00 00"));
  EXPECT_FALSE(datFile.EndUpdate(true));
  EXPECT_FALSE(HidDevice::IsOpen());
}

TEST_F(UpdateSequenceTest, ARecordThatIsNotReadyRunsNothing) {
  TwoPacks(3, 3);
  datFile.isFileReady = false;
  EXPECT_FALSE(datFile.RunUpdateStep(0));
  EXPECT_FALSE(datFile.RunUpdateStep(3));
  EXPECT_FALSE(datFile.EndUpdate(false));
  EXPECT_EQ(story, Story{});
  EXPECT_EQ(hidapi.calls, Story{});
}

TEST_F(UpdateSequenceTest, AnEmptyRecordBearsEveryOperation) {
  EXPECT_FALSE(datFile.ExamineDatFile());
  EXPECT_EQ(datFile.TotalStepCount(), 0);
  EXPECT_FALSE(datFile.RunUpdateStep(0));
  EXPECT_FALSE(datFile.RunUpdateStep(0xFFFFFFFF));
  EXPECT_FALSE(datFile.EndUpdate(true));
  EXPECT_FALSE(datFile.EndUpdate(false));
  EXPECT_EQ(datFile.ProductModelText(), "");
  EXPECT_EQ(datFile.FirmwareVersionText(), "");
  EXPECT_EQ(datFile.NotConnectedMessage(), "The TS30 is not connected.");
  EXPECT_FALSE(datFile.WriteTempFile("/tmp/hollin-never", 0, 1));
  datFile.DeleteTempFiles();
  EXPECT_EQ(hidapi.calls, Story{});
}

// Not a state that an examination leaves, but none in which half an update may run or succeed.
TEST_F(UpdateSequenceTest, EveryOperationBearsMissingUpdaters) {
  datFile.isFileReady = true;
  for (const uint8_t packs : Hex("01 02")) {
    datFile.countDataPack = packs;
    EXPECT_EQ(datFile.TotalStepCount(), 0);
    EXPECT_FALSE(datFile.RunUpdateStep(0));
    EXPECT_FALSE(datFile.EndUpdate(true));
  }
  TwoPacks(2, 2);
  datFile.Update2.reset();
  EXPECT_EQ(datFile.TotalStepCount(), 0);
  EXPECT_FALSE(datFile.RunUpdateStep(0));
  EXPECT_FALSE(datFile.RunUpdateStep(2));
  EXPECT_FALSE(datFile.EndUpdate(true));
  EXPECT_EQ(story, Story{});
}

TEST_F(UpdateSequenceTest, AnExaminationDropsTheEarlierUpdatersFirst) {
  TwoPacks(3, 3);
  EXPECT_FALSE(datFile.ExamineDatFile());
  EXPECT_EQ(datFile.Update1, nullptr);
  EXPECT_EQ(datFile.Update2, nullptr);
  EXPECT_FALSE(datFile.IsFileReady());
}

}  // namespace
}  // namespace hollin
