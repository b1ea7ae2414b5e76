// SPDX-License-Identifier: MIT
// The steps of an A2 update over its sectors, and the verification behind them.
#include "tests/support/processor_time.h"
#include "tests/updaters/a2_test.h"

namespace hollin {
namespace {

class A2UpdateStepsTest : public A2Test {
 protected:
  // The data of all blocks so far, one behind the other.
  [[nodiscard]] Bytes Written() const {
    Bytes all;
    for (const Bytes& block : keyboard.dataOfBlocks) all = all + block;
    return all;
  }

  [[nodiscard]] Messages Sent(uint8_t code) const {
    Messages found;
    for (const Bytes& command : keyboard.commands) {
      if (command.front() == code) found.push_back(command);
    }
    return found;
  }

  // The middle steps and the verification, in order.
  [[nodiscard]] bool RunAll() { return RunSteps(update.plannedSectors) && update.VerifyImage(); }
};

TEST_F(A2UpdateStepsTest, TheLastPlannedSectorWritesOnlyTheRemainingBytes) {
  ASSERT_TRUE(Plan(Counting(38)));
  ASSERT_TRUE(RunSteps(3));
  EXPECT_EQ(Written(), Counting(38));
  EXPECT_EQ(keyboard.commands.back(), Hex("07 10 01 00 00 03 00 66 69 00 00 00"));
}

TEST_F(A2UpdateStepsTest, AnOddByteIsDropped) {
  ASSERT_TRUE(Plan(Counting(39)));
  ASSERT_TRUE(RunSteps(3));
  EXPECT_EQ(Written(), Counting(38));
  EXPECT_EQ(keyboard.commands.back(), Hex("07 10 01 00 00 03 00 66 69 00 00 00"));
}

TEST_F(A2UpdateStepsTest, ALastSectorWithoutAWholeWordIsErasedAndGetsNoBlock) {
  ASSERT_TRUE(Plan(Counting(33)));
  ASSERT_TRUE(RunSteps(3));
  EXPECT_EQ(Erases(), 3U);
  EXPECT_EQ(keyboard.CountOf(0x04), 3U);
  EXPECT_EQ(Written(), Counting(32));
}

TEST_F(A2UpdateStepsTest, TheImageProperBeginsBehindTheFileOffset) {
  update.flash.fileOffset = 2;
  ASSERT_TRUE(Plan(Counting(20)));
  ASSERT_TRUE(RunSteps(1));
  EXPECT_EQ(Written(), Counting(16, 4));
}

TEST_F(A2UpdateStepsTest, AReservedSectorInTheMiddleSendsNothingAndItsBytesAreSkipped) {
  update.flash.reservedSectors = {0x108};
  ASSERT_TRUE(Plan(Counting(40)));
  ASSERT_TRUE(update.RunStep(0));
  const size_t sent = hidapi.writes.size();
  ASSERT_TRUE(update.RunStep(1));
  EXPECT_EQ(hidapi.writes.size(), sent);
  EXPECT_EQ(update.readPos, 32U);
  EXPECT_EQ(update.bytesDone, 32U);
  ASSERT_TRUE(update.RunStep(2));
  EXPECT_EQ(Written(), Counting(16) + Counting(8, 32));
  EXPECT_EQ(keyboard.commands.back(), Hex("07 10 01 00 00 04 00 8C 90 00 00 00"));
}

TEST_F(A2UpdateStepsTest, AReservedFirstSectorIsSkippedAndRestartsTheCursor) {
  update.flash.reservedSectors = {0x100};
  ASSERT_TRUE(Plan(Counting(32)));
  update.readPos = 99;
  update.bytesDone = 99;
  ASSERT_TRUE(update.RunStep(0));
  EXPECT_EQ(update.readPos, 16U);
  EXPECT_EQ(update.bytesDone, 16U);
  EXPECT_TRUE(hidapi.writes.empty());
  ASSERT_TRUE(update.RunStep(1));
  EXPECT_EQ(Written(), Counting(16, 16));
}

TEST_F(A2UpdateStepsTest, AReservedLastSectorSendsNothing) {
  update.flash.reservedSectors = {0x110};
  ASSERT_TRUE(Plan(Counting(40)));
  ASSERT_TRUE(RunSteps(3));
  EXPECT_EQ(Written(), Counting(32));
  keyboard.commands.clear();
  keyboard.sums = {{0x100, Hex("38 40")}, {0x108, Hex("B8 C0")}};
  EXPECT_TRUE(update.VerifyImage());
  EXPECT_EQ(keyboard.CountOf(0x08), 2U);
}

TEST_F(A2UpdateStepsTest, EveryPlannedSectorMayBeReserved) {
  update.flash.reservedSectors = {0x110, 0x100, 0x108, 0x108};
  ASSERT_TRUE(Plan(Counting(40)));
  EXPECT_TRUE(RunAll());
  EXPECT_TRUE(hidapi.writes.empty());
}

TEST_F(A2UpdateStepsTest, AReservedAddressInsideASectorReservesNothing) {
  update.flash.reservedSectors = {0x101, 0x107};
  ASSERT_TRUE(Plan(Counting(16)));
  ASSERT_TRUE(update.RunStep(0));
  EXPECT_EQ(Written(), Counting(16));
}

TEST_F(A2UpdateStepsTest, AnIndexBeyondThePlanIsRefusedWithNothingSent) {
  ASSERT_TRUE(Plan(Counting(32)));
  for (const uint32_t index : {2U, 3U, 4U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
    EXPECT_FALSE(update.RunStep(index));
  }
  EXPECT_TRUE(hidapi.calls.empty());
  EXPECT_TRUE(RunSteps(2));
}

TEST_F(A2UpdateStepsTest, VerifyAsksForEverySectorInWords) {
  ASSERT_TRUE(Plan(Counting(40)));
  update.readPos = 99;
  update.bytesDone = 99;
  keyboard.sums = {{0x100, Hex("38 40")}, {0x108, Hex("B8 C0")}, {0x110, Hex("8C 90")}};
  EXPECT_TRUE(update.VerifyImage());
  EXPECT_EQ(hidapi.SentMessages(),
            (Messages{Hex("08 00 01 00 00 08 00 00 00 00"), Hex("08 08 01 00 00 08 00 00 00 00"),
                      Hex("08 10 01 00 00 04 00 00 00 00")}));
  EXPECT_EQ(update.readPos, 40U);
  EXPECT_EQ(update.bytesDone, 48U);
}

TEST_F(A2UpdateStepsTest, VerifyLeavesAnOddByteOut) {
  ASSERT_TRUE(Plan(Counting(7)));
  keyboard.sums = {{0x100, Hex("06 09")}};
  EXPECT_TRUE(update.VerifyImage());
  EXPECT_EQ(keyboard.commands, Messages{Hex("08 00 01 00 00 03 00 00 00 00")});
}

TEST_F(A2UpdateStepsTest, VerifySkipsReservedSectorsAndTheirBytes) {
  update.flash.reservedSectors = {0x108};
  ASSERT_TRUE(Plan(Counting(40)));
  keyboard.sums = {{0x100, Hex("38 40")}, {0x110, Hex("8C 90")}};
  EXPECT_TRUE(update.VerifyImage());
  EXPECT_EQ(hidapi.SentMessages(),
            (Messages{Hex("08 00 01 00 00 08 00 00 00 00"), Hex("08 10 01 00 00 04 00 00 00 00")}));
}

TEST_F(A2UpdateStepsTest, VerifyBeginsBehindTheFileOffset) {
  update.flash.fileOffset = 2;
  ASSERT_TRUE(Plan(Counting(8)));
  keyboard.sums = {{0x100, Hex("0A 0C")}};
  EXPECT_TRUE(update.VerifyImage());
}

TEST_F(A2UpdateStepsTest, VerifyEndsAtTheFirstSectorThatDiffers) {
  ASSERT_TRUE(Plan(Counting(40)));
  keyboard.sums = {{0x100, Hex("38 40")}, {0x108, Hex("B9 C0")}, {0x110, Hex("8C 90")}};
  EXPECT_FALSE(update.VerifyImage());
  EXPECT_EQ(keyboard.CountOf(0x08), 2U);
}

TEST_F(A2UpdateStepsTest, EveryByteOfAVerifyReplyCounts) {
  ASSERT_TRUE(Plan(Counting(16)));
  const Bytes good = Hex("08 00 01 00 00 08 00 00 00 38 40");
  for (size_t i = 0; i < good.size(); i++) {
    Bytes reply = good;
    reply[i] ^= 0x01;
    keyboard.AnswerNext(0x08, {reply});
    EXPECT_FALSE(update.VerifyImage()) << "byte " << i;
  }
  keyboard.AnswerNext(0x08, {good});
  EXPECT_TRUE(update.VerifyImage());
}

TEST_F(A2UpdateStepsTest, WithoutAPlannedSectorVerifyHasNothingToDo) {
  EXPECT_TRUE(update.VerifyImage());
  EXPECT_TRUE(hidapi.calls.empty());
}

TEST_F(A2UpdateStepsTest, ASecondRunSendsTheSame) {
  update.flash.reservedSectors = {0x108};
  ASSERT_TRUE(Plan(Counting(40)));
  keyboard.sums = {{0x100, Hex("38 40")}, {0x110, Hex("8C 90")}};
  ASSERT_TRUE(RunAll());
  const Messages first = hidapi.SentMessages();
  hidapi.writes.clear();
  ASSERT_TRUE(RunAll());
  EXPECT_EQ(hidapi.SentMessages(), first);
}

TEST_F(A2UpdateStepsTest, ARunAfterOneThatBrokeOffSendsTheSame) {
  ASSERT_TRUE(Plan(Counting(40)));
  ASSERT_TRUE(RunSteps(3));
  const Messages first = hidapi.SentMessages();
  keyboard.AnswerNext(0x02, {Hex("00")});
  EXPECT_FALSE(update.RunStep(0));
  ASSERT_TRUE(update.RunStep(0));
  hidapi.writes.clear();
  ASSERT_TRUE(RunSteps(3));
  EXPECT_EQ(hidapi.SentMessages(), first);
}

// The cursor belongs to the steps before: one taken out of turn must not leave the image.
TEST_F(A2UpdateStepsTest, AStepTakenAgainReadsNothingBehindTheImage) {
  ASSERT_TRUE(Plan(Counting(40)));
  ASSERT_TRUE(RunSteps(3));
  hidapi.writes.clear();
  EXPECT_FALSE(update.RunStep(1));
  EXPECT_FALSE(update.RunStep(2));
  EXPECT_TRUE(hidapi.writes.empty());
}

TEST_F(A2UpdateStepsTest, ModeIs1UntilTheDescriptionSaysOtherwise) {
  EXPECT_TRUE(update.EnterUpdateMode(5));
  EXPECT_EQ(keyboard.commands, Messages{Hex("01 0A 4D 01")});
}

// Verifies a flash of `sectors` sectors, every other one of them reserved.
class A2ManySectorsTest : public A2UpdateStepsTest {
 protected:
  void VerifySectors(uint32_t sectors) {
    const uint32_t reserved = sectors / 2;
    update.flash.sectorAddrs.clear();
    update.flash.reservedSectors.clear();
    for (uint32_t sector = 0; sector < sectors; sector++) {
      update.flash.sectorAddrs.push_back(sector * 8);
      if (sector < reserved) update.flash.reservedSectors.push_back((sectors - 1 - 2 * sector) * 8);
    }
    ASSERT_TRUE(Plan(Filled(size_t{sectors} * 16, 0)));
    EXPECT_EQ(update.StepCount(), sectors + 2);
    keyboard.commands.clear();
    EXPECT_TRUE(update.VerifyImage());
    EXPECT_EQ(keyboard.CountOf(0x08), sectors - reserved);
  }
};

TEST_F(A2ManySectorsTest, AreAllVerifiedButTheReservedOnes) { VerifySectors(65536); }

// No sector is looked up in a list from its beginning.
TEST_F(A2ManySectorsTest, CostAsMuchEachAsFewDo) {
  EXPECT_LT(LeastGrowth([this] { VerifySectors(4096); }, [this] { VerifySectors(65536); }),
            kMostGrowthOf16Times);
}

}  // namespace
}  // namespace hollin
