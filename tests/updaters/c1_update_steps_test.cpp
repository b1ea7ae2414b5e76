// SPDX-License-Identifier: MIT
// The steps of a C1 update over its data sectors, and the verification behind them.
#include "tests/support/processor_time.h"
#include "tests/updaters/c1_test.h"

namespace hollin {
namespace {

class C1UpdateStepsTest : public C1Test {
 protected:
  [[nodiscard]] bool RunAll() { return RunSteps(update.dataSectorCount) && update.VerifyImage(); }

  // The sums of Counting(70), a data sector each.
  void KnowTheSums() {
    keyboard.sums = {{0x00, Hex("F0 01")}, {0x40, Hex("F0 05")}, {0x60, Hex("8F 01")}};
  }
};

TEST_F(C1UpdateStepsTest, DataSectorsPassTheReservedSectors) {
  ASSERT_TRUE(Plan(Counting(70)));
  ASSERT_TRUE(RunSteps(3));
  EXPECT_EQ(hidapi.SentMessages(),
            (Messages{Hex("02 00 00 00 00"), Hex("03 00 00 00 00"),
                      Hex("07 00 00 00 00 20 00 00 00 F0 01 00"), Counting(32),  //
                      Hex("02 40 00 00 00"), Hex("03 40 00 00 00"),
                      Hex("07 40 00 00 00 20 00 00 00 F0 05 00"), Counting(32, 32),
                      Hex("02 60 00 00 00"), Hex("03 60 00 00 00"),
                      Hex("07 60 00 00 00 06 00 00 00 8F 01 00"), Counting(6, 64)}));
  EXPECT_EQ(update.readPosition, 70U);
  EXPECT_EQ(update.bytesDone, 96U);
}

TEST_F(C1UpdateStepsTest, WithSector0ReservedDataBeginsInTheNext) {
  update.flash.reservedSectors = {0};
  update.flash.sectorSize = 65536;
  ASSERT_TRUE(Plan(Counting(1)));
  ASSERT_TRUE(update.RunStep(0));
  EXPECT_EQ(keyboard.commands[0], Hex("02 00 00 01 00"));
  EXPECT_EQ(keyboard.commands[2], Hex("07 00 00 01 00 01 00 00 00 00 00 00"));
}

TEST_F(C1UpdateStepsTest, AnIndexBeyondThePlanIsRefusedWithNothingSent) {
  ASSERT_TRUE(Plan(Counting(70)));
  for (const uint32_t index : {3U, 4U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
    EXPECT_FALSE(update.RunStep(index));
  }
  EXPECT_TRUE(hidapi.calls.empty());
  EXPECT_TRUE(RunSteps(3));
}

TEST_F(C1UpdateStepsTest, VerifyAsksForEveryDataSectorInBytes) {
  ASSERT_TRUE(Plan(Counting(70)));
  KnowTheSums();
  update.readPosition = 99;
  update.bytesDone = 99;
  EXPECT_TRUE(update.VerifyImage());
  EXPECT_EQ(hidapi.SentMessages(),
            (Messages{Hex("08 00 00 00 00 20 00 00 00 00"), Hex("08 40 00 00 00 20 00 00 00 00"),
                      Hex("08 60 00 00 00 06 00 00 00 00")}));
  EXPECT_EQ(update.readPosition, 70U);
  EXPECT_EQ(update.bytesDone, 96U);
}

TEST_F(C1UpdateStepsTest, VerifyEndsAtTheFirstSectorThatDiffers) {
  ASSERT_TRUE(Plan(Counting(70)));
  KnowTheSums();
  keyboard.sums[0x40] = Hex("F1 05");
  EXPECT_FALSE(update.VerifyImage());
  EXPECT_EQ(keyboard.CountOf(0x08), 2U);
}

TEST_F(C1UpdateStepsTest, VerifyIsNotTriedAgain) {
  ASSERT_TRUE(Plan(Counting(70)));
  KnowTheSums();
  keyboard.AnswerNext(0x08, {std::nullopt});
  EXPECT_FALSE(update.VerifyImage());
  EXPECT_EQ(keyboard.CountOf(0x08), 1U);
}

TEST_F(C1UpdateStepsTest, WithoutADataSectorVerifyHasNothingToDo) {
  EXPECT_TRUE(update.VerifyImage());
  EXPECT_TRUE(hidapi.calls.empty());
}

TEST_F(C1UpdateStepsTest, ASecondRunSendsTheSame) {
  ASSERT_TRUE(Plan(Counting(70)));
  KnowTheSums();
  ASSERT_TRUE(RunAll());
  const Messages first = hidapi.SentMessages();
  hidapi.writes.clear();
  ASSERT_TRUE(RunAll());
  EXPECT_EQ(hidapi.SentMessages(), first);
}

TEST_F(C1UpdateStepsTest, ARunAfterOneThatBrokeOffSendsTheSame) {
  ASSERT_TRUE(Plan(Counting(70)));
  KnowTheSums();
  ASSERT_TRUE(RunAll());
  const Messages first = hidapi.SentMessages();
  ASSERT_TRUE(RunSteps(2));
  keyboard.AnswerNext(0x02, {Hex("00")});
  EXPECT_FALSE(update.RunStep(2));
  hidapi.writes.clear();
  ASSERT_TRUE(RunAll());
  EXPECT_EQ(hidapi.SentMessages(), first);
}

// The cursor belongs to the steps before: one taken out of turn must not leave the image.
TEST_F(C1UpdateStepsTest, AStepTakenAgainReadsNothingBehindTheImage) {
  ASSERT_TRUE(Plan(Counting(70)));
  ASSERT_TRUE(RunSteps(3));
  hidapi.writes.clear();
  EXPECT_FALSE(update.RunStep(1));
  EXPECT_TRUE(hidapi.writes.empty());
}

TEST_F(C1UpdateStepsTest, SectorsOfOneByteAreWrittenOneByOne) {
  update.flash.sectorSize = 1;
  update.flash.reservedSectors = {1};
  ASSERT_TRUE(Plan(Hex("AA BB")));
  ASSERT_TRUE(RunSteps(2));
  EXPECT_EQ(keyboard.commands[2], Hex("07 00 00 00 00 01 00 00 00 AA 00 00"));
  EXPECT_EQ(keyboard.commands[5], Hex("07 02 00 00 00 01 00 00 00 BB 00 00"));
}

class C1ManySectorsTest : public C1UpdateStepsTest {
 protected:
  // Verifies an image of `sectors` sectors that are written around reserved ones.
  void VerifySectors(uint32_t sectors) {
    update.flash.sectorSize = 16;
    update.flash.reservedSectors.clear();
    const uint32_t reserved = sectors / 2;
    for (uint32_t entry = 0; entry < reserved; entry++) {
      update.flash.reservedSectors.push_back((2 * reserved - 2 * entry) * 16);
    }
    ASSERT_TRUE(Plan(Filled(size_t{sectors} * 16, 0)));
    EXPECT_EQ(update.StepCount(), sectors + 2);
    keyboard.commands.clear();
    EXPECT_TRUE(update.VerifyImage());
    EXPECT_EQ(keyboard.CountOf(0x08), sectors);
  }
};

TEST_F(C1ManySectorsTest, AreVerifiedAroundTheReservedOnes) {
  VerifySectors(65536);
  EXPECT_EQ(keyboard.commands.back(), Hex("08 F0 FF 17 00 10 00 00 00 00"));
}

// No sector is looked up in a list from its beginning.
TEST_F(C1ManySectorsTest, CostAsMuchEachAsFewDo) {
  EXPECT_LT(LeastGrowth([this] { VerifySectors(4096); }, [this] { VerifySectors(65536); }),
            kMostGrowthOf16Times);
}

}  // namespace
}  // namespace hollin
