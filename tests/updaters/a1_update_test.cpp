// SPDX-License-Identifier: MIT
// Whole A1 updates: mode, blocks, verify, end.
#include "updaters/a1_update.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

#include "tests/updaters/a1_update_fixture.h"

namespace hollin {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

// 300 bytes of 0x01, 0x02 and 0x03 in blocks of 128, 128 and 44 bytes. Their sums are 0x80, 0x100
// and 0x84, together 0x204.
class A1UpdateTest : public A1Fixture {
 protected:
  void LoadThreeBlocks() {
    Load(first + second + third, "Start Address=0x1000\nData Length=128\n");
  }

  void QueueWholeUpdate() {
    hidapi.Reply(Hex("F1"));
    AcceptBlock(header1);
    AcceptBlock(header2);
    AcceptBlock(header3);
    hidapi.Reply(Hex("08  00 10 00 00  2C 01 00 00  04 02"));
    hidapi.Reply(Hex("09 00 00 00"));
  }

  // As the sequencer drives it.
  bool RunWholeUpdate() {
    if (!update->EnterUpdateMode(5)) return false;
    for (uint32_t index = 0; index + 2 < update->StepCount(); index++) {
      if (!update->RunStep(index)) return false;
    }
    return update->VerifyImage() && update->FinishUpdate(true);
  }

  const Bytes first = Filled(128, 0x01);
  const Bytes second = Filled(128, 0x02);
  const Bytes third = Filled(44, 0x03);
  const Bytes half1 = Filled(64, 0x01);
  const Bytes half2 = Filled(64, 0x02);
  const Bytes header1 = Hex("07  00 00 00 00  80 00  80 00  00 00 00");
  const Bytes header2 = Hex("07  80 00 00 00  80 00  00 01  00 00 00");
  const Bytes header3 = Hex("07  00 01 00 00  2C 00  84 00  00 00 00");
};

TEST_F(A1UpdateTest, AWholeUpdateOfThreeBlocks) {
  LoadThreeBlocks();
  EXPECT_EQ(update->StepCount(), 5U);
  QueueWholeUpdate();
  ASSERT_TRUE(RunWholeUpdate());
  EXPECT_THAT(hidapi.SentMessages(),
              ElementsAre(Hex("01 0A 4D 02"), header1, half1, half1, header2, half2, half2, header3,
                          third, Hex("08  00 10 00 00  2C 01 00 00  00"), Hex("09 00 00 00")));
  EXPECT_THAT(hidapi.replies, IsEmpty());
  EXPECT_FALSE(HidDevice::IsOpen());
}

// Blocks before the last have the description's length, in every run of the program.
TEST_F(A1UpdateTest, ASecondRunWritesTheSameBytes) {
  LoadThreeBlocks();
  QueueWholeUpdate();
  ASSERT_TRUE(RunWholeUpdate());
  const std::vector<Bytes> written = hidapi.SentMessages();
  hidapi.writes.clear();
  QueueWholeUpdate();
  ASSERT_TRUE(RunWholeUpdate());
  EXPECT_EQ(hidapi.SentMessages(), written);
}

TEST_F(A1UpdateTest, ARunAfterABrokenOneStartsAtZero) {
  LoadThreeBlocks();
  AcceptBlock(header1);
  ASSERT_TRUE(update->RunStep(0));
  hidapi.ReplyFailure();
  EXPECT_FALSE(update->RunStep(1));
  EXPECT_EQ(update->writeAddress, 128U);
  EXPECT_EQ(update->sentTotal, 256U);
  hidapi.writes.clear();
  QueueWholeUpdate();
  EXPECT_TRUE(RunWholeUpdate());
}

TEST_F(A1UpdateTest, IndexesBeyondTheBlocksAreRefusedWithNothingSent) {
  LoadThreeBlocks();
  for (const uint32_t index : {3U, 4U, 5U, 0xFFFFFFFFU}) EXPECT_FALSE(update->RunStep(index));
  EXPECT_THAT(hidapi.calls, IsEmpty());
  AcceptBlock(Hex("07  00 00 00 00  2C 00  84 00  00 00 00"));
  EXPECT_TRUE(update->RunStep(2));
}

TEST_F(A1UpdateTest, ThePlanDecidesAndNotTheImage) {
  LoadThreeBlocks();
  update->stepCount = 4;
  EXPECT_FALSE(update->RunStep(2));
  EXPECT_THAT(hidapi.calls, IsEmpty());
}

// The headers count, not the indexes: addresses follow what was written.
TEST_F(A1UpdateTest, WriteAddressesFollowWhatWasWritten) {
  LoadThreeBlocks();
  AcceptBlock(header1);
  ASSERT_TRUE(update->RunStep(0));
  AcceptBlock(Hex("07  80 00 00 00  2C 00  84 00  00 00 00"));
  ASSERT_TRUE(update->RunStep(2));
  EXPECT_EQ(update->writeAddress, 172U);
  EXPECT_EQ(update->sentTotal, 172U);
}

TEST_F(A1UpdateTest, ABlockOf65536BytesIsAnnouncedAsZeroAndArrivesWhole) {
  const Bytes block = Counting(65536);  // 256 times 32640, that is 0x7F8000
  Load(block + Hex("AA"));
  EXPECT_EQ(update->StepCount(), 4U);
  AcceptBlock(Hex("07  00 00 00 00  00 00  00 80  00 00 00"));
  AcceptBlock(Hex("07  00 00 01 00  01 00  AA 00  00 00 00"));
  ASSERT_TRUE(update->RunStep(0));
  ASSERT_TRUE(update->RunStep(1));
  const std::vector<Bytes> messages = hidapi.SentMessages();
  ASSERT_THAT(messages, SizeIs(1 + 1024 + 1 + 1));
  Bytes arrived;
  for (size_t i = 1; i <= 1024; i++) {
    EXPECT_EQ(messages[i].size(), 64U);
    arrived = arrived + messages[i];
  }
  EXPECT_EQ(arrived, block);
  EXPECT_EQ(messages[1026], Hex("AA"));
  EXPECT_EQ(update->sentTotal, 65537U);
}

TEST_F(A1UpdateTest, ALastBlockOfFullLengthIsWrittenWhole) {
  Load(first + second, "Data Length=128\n");
  EXPECT_EQ(update->StepCount(), 4U);
  AcceptBlock(header1);
  AcceptBlock(header2);
  EXPECT_TRUE(update->RunStep(0));
  EXPECT_TRUE(update->RunStep(1));
  EXPECT_THAT(hidapi.SentMessages(), ElementsAre(header1, half1, half1, header2, half2, half2));
}

TEST_F(A1UpdateTest, AChipTypeOfFiveMakesTheModeCommandCarryFive) {
  Load(first, "", "Chip Type=5\n");
  hidapi.Reply(Hex("F1"));
  EXPECT_TRUE(update->EnterUpdateMode(5));
  EXPECT_THAT(hidapi.SentMessages(), ElementsAre(Hex("01 0A 4D 05")));
}

// Blocks are addressed from 0, but the range to verify begins at the start address.
TEST_F(A1UpdateTest, VerifyNamesTheStartAddressAndWhatWasSent) {
  LoadThreeBlocks();
  update->sentTotal = 0x12345678;
  hidapi.Reply(Hex("08  00 10 00 00  78 56 34 12  04 02"));
  EXPECT_TRUE(update->VerifyImage());
  EXPECT_THAT(hidapi.SentMessages(), ElementsAre(Hex("08  00 10 00 00  78 56 34 12  00")));
  EXPECT_EQ(update->checksum, 0x0204);
}

TEST_F(A1UpdateTest, VerifySumsTheWholeImageEvenWhenNothingWasSent) {
  LoadThreeBlocks();
  hidapi.Reply(Hex("08  00 10 00 00  00 00 00 00  04 02"));
  EXPECT_TRUE(update->VerifyImage());
}

TEST_F(A1UpdateTest, AWrongSumFailsTheVerify) {
  LoadThreeBlocks();
  for (const auto reply :
       {"08  00 10 00 00  00 00 00 00  05 02", "08  00 10 00 00  00 00 00 00  04 03",
        "08  00 10 00 00  01 00 00 00  04 02", "08  00 00 00 00  00 00 00 00  04 02"}) {
    hidapi.Reply(Hex(reply));
    EXPECT_FALSE(update->VerifyImage()) << reply;
  }
}

TEST_F(A1UpdateTest, VerifyDoesNotConnect) {
  LoadThreeBlocks();
  HidDevice::Close();
  hidapi.calls.clear();
  EXPECT_FALSE(update->VerifyImage());
  EXPECT_THAT(hidapi.calls, IsEmpty());
}

TEST_F(A1UpdateTest, TheEndIsTheBasesOwn) {
  LoadThreeBlocks();
  hidapi.Reply(Hex("09 01 00 00"));
  EXPECT_TRUE(update->FinishUpdate(false));
  EXPECT_THAT(hidapi.calls, ElementsAre("hid_write", "hid_read", "hid_close", "hid_exit"));
}

}  // namespace
}  // namespace hollin
