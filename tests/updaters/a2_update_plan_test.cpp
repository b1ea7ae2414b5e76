// SPDX-License-Identifier: MIT
// What an A2 update checks before it begins: the plan, and whether the plan stays in the image.
#include "tests/updaters/a2_test.h"

namespace hollin {
namespace {

class A2UpdatePlanTest : public A2Test {
 protected:
  // Plans with these sectors; the plan succeeds, and its first step is refused with nothing sent.
  void ExpectRefusedBeforeTheFirstErase(const Bytes& image) {
    ASSERT_TRUE(Plan(image));
    hidapi.calls.clear();
    for (uint32_t index = 0; index < update.plannedSectors; index++) {
      EXPECT_FALSE(update.RunStep(index));
    }
    EXPECT_FALSE(update.VerifyImage());
    EXPECT_TRUE(hidapi.calls.empty());
  }
};

TEST_F(A2UpdatePlanTest, ThePlanHoldsTheSumTheStartTheBytesAndTheSteps) {
  update.flash.fileOffset = 2;
  ASSERT_TRUE(Plan(Counting(39)));
  EXPECT_EQ(update.checksum, 0x6A56);  // of all 19 whole words, skipped ones included
  EXPECT_EQ(update.imageStart, 4U);
  EXPECT_EQ(update.bytesToWrite, 35U);
  EXPECT_EQ(update.plannedSectors, 3U);
  EXPECT_EQ(update.StepCount(), 5U);
}

TEST_F(A2UpdatePlanTest, AnImageThatEndsInsideSectorKPlansKSectors) {
  struct Case {
    size_t length;
    uint32_t sectors;
  };
  update.flash.sectorAddrs = {0, 0x8000, 0x10000, 0x18000};
  const std::vector<Case> cases{{1, 1},       {0xFFFF, 1},  {0x10000, 1},
                                {0x10001, 2}, {0x20000, 2}, {0x20001, 3},
                                {0x30000, 3}, {0x30001, 4}, {0x40000, 4}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.length);
    ASSERT_TRUE(Plan(Filled(c.length, 0)));
    EXPECT_EQ(update.plannedSectors, c.sectors);
    EXPECT_EQ(update.StepCount(), c.sectors + 2);
  }
  EXPECT_FALSE(Plan(Filled(0x40001, 0)));
}

TEST_F(A2UpdatePlanTest, TheLastSectorIsAsLargeAsTheOneBeforeIt) {
  update.flash.sectorAddrs = {0, 8, 12};  // 16, 8 and again 8 bytes
  EXPECT_TRUE(Plan(Counting(32)));
  EXPECT_FALSE(Plan(Counting(33)));
}

TEST_F(A2UpdatePlanTest, NeitherOneSectorNorNoneMakesAPlan) {
  update.flash.sectorAddrs = {0x100};
  EXPECT_FALSE(Plan(Counting(16)));
  update.flash.sectorAddrs = {};
  EXPECT_FALSE(Plan(Counting(16)));
  update.flash.sectorAddrs = {0x100, 0x108};
  EXPECT_TRUE(Plan(Counting(16)));
}

TEST_F(A2UpdatePlanTest, TheDoubledLengthIsComparedWithTheUndoubledOffset) {
  for (const uint32_t offset : {79U, 80U}) {
    update.flash.fileOffset = offset;
    EXPECT_TRUE(Plan(Counting(40)));
  }
  update.flash.fileOffset = 81;
  EXPECT_FALSE(Plan(Counting(40)));
  update.flash.fileOffset = 0xFFFFFFFF;
  EXPECT_FALSE(Plan(Counting(40)));
}

TEST_F(A2UpdatePlanTest, TheCapacityIsComparedAsASignedNumber) {
  update.flash.sectorAddrs = {0, 0x1FFFFFFF};  // 2^31 - 4 bytes
  EXPECT_TRUE(Plan(Counting(16)));
  update.flash.sectorAddrs = {0, 0x20000000};  // 2^31 bytes, less than nothing
  EXPECT_FALSE(Plan(Counting(16)));
  update.flash.fileOffset = 12;  // -8 bytes to write, still more than that
  EXPECT_FALSE(Plan(Counting(16)));
}

TEST_F(A2UpdatePlanTest, TheReachOfTheImageIsComparedAsAnUnsignedNumber) {
  update.flash.sectorAddrs = {0, 0x40000000, 0x10, 0x20};  // the second begins at byte 2^31
  ASSERT_TRUE(Plan(Counting(40)));
  EXPECT_EQ(update.plannedSectors, 1U);
  update.flash.sectorAddrs = {0, 8, 16};
  update.flash.fileOffset = 21;  // 2^32 - 2 bytes to write reach every sector
  ASSERT_TRUE(Plan(Counting(40)));
  EXPECT_EQ(update.bytesToWrite, 0xFFFFFFFEU);
  EXPECT_EQ(update.plannedSectors, 3U);
}

TEST_F(A2UpdatePlanTest, AFileOffsetBeyondTheImageErasesNothing) {
  for (const uint32_t offset : {21U, 40U, 80U}) {
    SCOPED_TRACE(offset);
    update.flash.fileOffset = offset;
    ExpectRefusedBeforeTheFirstErase(Counting(40));
  }
}

TEST_F(A2UpdatePlanTest, AFileOffsetAtTheEndOfTheImageLeavesNothingToWrite) {
  update.flash.fileOffset = 20;
  ASSERT_TRUE(Plan(Counting(40)));
  EXPECT_EQ(update.bytesToWrite, 0U);
  EXPECT_EQ(update.plannedSectors, 1U);
  EXPECT_TRUE(update.RunStep(0));
  EXPECT_EQ(Erases(), 1U);
  EXPECT_TRUE(keyboard.dataOfBlocks.empty());
}

TEST_F(A2UpdatePlanTest, AFileOffsetOneWordBeforeTheEndLeavesOneWord) {
  update.flash.fileOffset = 19;
  ASSERT_TRUE(Plan(Counting(40)));
  EXPECT_TRUE(update.RunStep(0));
  EXPECT_EQ(keyboard.dataOfBlocks, Messages{Hex("26 27")});
}

TEST_F(A2UpdatePlanTest, AListThatDoesNotAscendErasesNothing) {
  update.flash.sectorAddrs = {0x100, 0x108, 0x104, 0x110};  // the second has -8 bytes
  ExpectRefusedBeforeTheFirstErase(Counting(40));
}

TEST_F(A2UpdatePlanTest, AListThatWrapsErasesNothing) {
  update.flash.sectorAddrs = {0x100, 0x108, 0x80000100, 0x110, 0x118};
  ExpectRefusedBeforeTheFirstErase(Counting(40));
}

// The reserved second sector has -16 bytes. In 32 bits the third would begin at byte 0 again.
TEST_F(A2UpdatePlanTest, PositionsThatWrapBackIntoTheImageEraseNothing) {
  update.flash.reservedSectors = {0x108};
  update.flash.sectorAddrs = {0x100, 0x108, 0x100, 0x108};
  ExpectRefusedBeforeTheFirstErase(Counting(30));
}

// The reserved second sector has -8 bytes: before the last one 2^32 + 8 are done.
TEST_F(A2UpdatePlanTest, BytesDoneBeyondTheBytesToWriteEraseNothing) {
  update.flash.reservedSectors = {0x108};
  update.flash.sectorAddrs = {0x100, 0x108, 0x104, 0x110};
  ASSERT_TRUE(Plan(Counting(20)));
  EXPECT_EQ(update.plannedSectors, 3U);
  ExpectRefusedBeforeTheFirstErase(Counting(20));
}

// The refused sector is the last of the plan: nothing before it may be erased either.
TEST_F(A2UpdatePlanTest, APlanIsRefusedAsAWhole) {
  update.flash.sectorAddrs = {0x100, 0x108, 0x110, 0x10C, 0x118};
  ExpectRefusedBeforeTheFirstErase(Counting(40));
}

TEST_F(A2UpdatePlanTest, AListThatRepeatsAnAddressErasesNothing) {
  for (const auto& sectors : std::vector<std::vector<uint32_t>>{{0x100, 0x100, 0x108, 0x110},
                                                                {0x100, 0x108, 0x108, 0x110},
                                                                {0x100, 0x108, 0x110, 0x110}}) {
    update.flash.sectorAddrs = sectors;
    ExpectRefusedBeforeTheFirstErase(Counting(32));
  }
}

// Only the first sector is planned, but a list out of order describes no flash.
TEST_F(A2UpdatePlanTest, DisorderBehindThePlanErasesNothingEither) {
  update.flash.sectorAddrs = {0x100, 0x108, 0x118, 0x110, 0x120};
  ExpectRefusedBeforeTheFirstErase(Counting(16));
  EXPECT_EQ(update.plannedSectors, 1U);
}

TEST_F(A2UpdatePlanTest, AddressesMayBeAsCloseAsOneWord) {
  update.flash.sectorAddrs = {0x100, 0x101, 0x102};
  ASSERT_TRUE(Plan(Counting(6)));
  EXPECT_TRUE(RunSteps(3));
  EXPECT_EQ(Erases(), 3U);
}

// Of the reserved second sector 2^32 - 8 bytes lie behind the image; in 32 bits the third begins at
// its byte 8.
TEST_F(A2UpdatePlanTest, AReservedSectorThatReachesBehindTheImageErasesNothing) {
  update.flash.reservedSectors = {0x108};
  update.flash.sectorAddrs = {0x100, 0x108, 0x80000104, 0x80000110};
  ExpectRefusedBeforeTheFirstErase(Counting(40));
  EXPECT_EQ(update.plannedSectors, 4U);
}

// The second sector has 2^32 bytes, which are none in 32 bits.
TEST_F(A2UpdatePlanTest, ASizeThatWrapsToNothingErasesNothing) {
  update.flash.sectorAddrs = {0x100, 0x108, 0x80000108, 0x80000110};
  ExpectRefusedBeforeTheFirstErase(Counting(40));
}

// The image reaches a little of it and no more is read.
TEST_F(A2UpdatePlanTest, TheLastPlannedSectorMayEndFarBehindTheImage) {
  for (const uint32_t reserved : {0x7FFFU, 0x108U}) {
    update.flash.reservedSectors = {reserved};
    update.flash.sectorAddrs = {0x100, 0x108, 0x20000108, 0x20000110};
    ASSERT_TRUE(Plan(Counting(18)));
    EXPECT_TRUE(RunSteps(2));
  }
  EXPECT_EQ(Erases(), 3U);
  EXPECT_EQ(keyboard.dataOfBlocks.size(), 5U);
}

// 2 x 0x80000000 words are 0 bytes in 32 bits. Of this image only the length is there.
TEST_F(A2UpdatePlanTest, AFileOffsetWhoseBytesWrapErasesNothing) {
  update.flash.fileOffset = 0x80000000;
  update.flash.sectorAddrs = {0, 0x20000000, 0x20000001};
  update.imageLength = 0x40000000;
  ASSERT_TRUE(update.PlanSteps());
  EXPECT_EQ(update.imageStart, 0U);
  EXPECT_FALSE(update.RunStep(0));
  EXPECT_TRUE(hidapi.calls.empty());
}

// Of its 2^32 + 16 bytes 16 would be written, and the rest forgotten.
TEST_F(A2UpdatePlanTest, AnImageBeyond32BitsErasesNothing) {
  update.flash.sectorAddrs = {0, 0x80000008};
  update.imageLength = 0x100000010;
  ASSERT_TRUE(update.PlanSteps());
  EXPECT_EQ(update.bytesToWrite, 16U);
  EXPECT_FALSE(update.RunStep(0));
  EXPECT_TRUE(hidapi.calls.empty());
}

// 2^31 bytes are, as a signed number, fewer than any flash has.
TEST_F(A2UpdatePlanTest, AnImageThatFitsOnlyBySignErasesNothing) {
  update.flash.sectorAddrs = {0, 8, 16};
  update.imageLength = 0x80000000;
  ASSERT_TRUE(update.PlanSteps());
  EXPECT_EQ(update.plannedSectors, 3U);
  EXPECT_FALSE(update.RunStep(0));
  EXPECT_TRUE(hidapi.calls.empty());
}

}  // namespace
}  // namespace hollin
