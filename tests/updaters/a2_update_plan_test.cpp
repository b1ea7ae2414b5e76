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

TEST_F(A2UpdatePlanTest, ARepeatedAddressIsASectorOfNothing) {
  update.flash.sectorAddrs = {0x100, 0x108, 0x108, 0x110};
  ASSERT_TRUE(Plan(Counting(32)));
  ASSERT_TRUE(RunSteps(3));
  EXPECT_EQ(Erases(), 3U);
  EXPECT_EQ(keyboard.CountOf(0x07), 4U);
  EXPECT_EQ(keyboard.commands.back(), Hex("07 0C 01 00 00 04 00 6C 70 00 00 00"));
}

// Nothing of a reserved sector is read, wherever it is.
TEST_F(A2UpdatePlanTest, AReservedSectorMayLieBehindTheImage) {
  update.flash.reservedSectors = {0x108};
  update.flash.sectorAddrs = {0x100, 0x108, 0x20000108, 0x20000110};
  ASSERT_TRUE(Plan(Counting(17)));
  EXPECT_TRUE(RunSteps(2));
  EXPECT_EQ(Erases(), 1U);
}

struct Rule {
  const char* name;
  void (*change)(A2Description& flash);
  bool isUsable;
};

void PrintTo(const Rule& rule, std::ostream* out) { *out << rule.name; }

class A2UpdateRuleTest : public A2Test, public testing::WithParamInterface<Rule> {};

TEST_P(A2UpdateRuleTest, ADescriptionIsCheckedRuleByRule) {
  GetParam().change(update.flash);
  EXPECT_EQ(update.CheckConfig(), GetParam().isUsable);
}

using Flash = A2Description;

const Rule kRules[] = {
    {"AsItIs", [](Flash&) {}, true},
    {"NoModel", [](Flash& f) { f.flashModel = ""; }, false},
    {"NothingReserved", [](Flash& f) { f.reservedSectors = {}; }, false},
    {"BlockOf0", [](Flash& f) { f.blockSize = 0; }, false},
    {"BlockOf1", [](Flash& f) { f.blockSize = 1; }, false},
    {"BlockOf2", [](Flash& f) { f.blockSize = 2; }, true},
    {"BlockOf4097", [](Flash& f) { f.blockSize = 4097; }, false},
    {"BlockOf65534", [](Flash& f) { f.blockSize = 0xFFFE; }, true},
    {"BlockOf65536", [](Flash& f) { f.blockSize = 0x10000; }, true},
    {"BlockOf65537", [](Flash& f) { f.blockSize = 0x10001; }, false},
    {"BlockOf65538", [](Flash& f) { f.blockSize = 0x10002; }, false},
    {"BlockOf4294967294", [](Flash& f) { f.blockSize = 0xFFFFFFFE; }, false},
    {"NoWriteBack", [](Flash& f) { f.maxWriteBack = 0; }, false},
    {"WriteBackOf1", [](Flash& f) { f.maxWriteBack = 1; }, true},
    {"NoEraseTime", [](Flash& f) { f.maxSectorEraseTime = 0; }, false},
    {"EraseTimeOf1", [](Flash& f) { f.maxSectorEraseTime = 1; }, true},
    {"EraseAddressMissing", [](Flash& f) { f.eraseAddrs.pop_back(); }, false},
    {"EraseAddressTooMany", [](Flash& f) { f.eraseAddrs.push_back(0); }, false},
    {"EraseDataMissing", [](Flash& f) { f.eraseData.pop_back(); }, false},
    {"EraseDataTooMany", [](Flash& f) { f.eraseData.push_back(0); }, false},
    {"ProgramAddressMissing", [](Flash& f) { f.programAddrs.pop_back(); }, false},
    {"ProgramAddressTooMany", [](Flash& f) { f.programAddrs.push_back(0); }, false},
    {"ProgramDataMissing", [](Flash& f) { f.programData.pop_back(); }, false},
    {"ProgramDataTooMany", [](Flash& f) { f.programData.push_back(0); }, false},
    {"WriteBufferAddressMissing", [](Flash& f) { f.writeBufferAddrs.pop_back(); }, false},
    {"WriteBufferAddressTooMany", [](Flash& f) { f.writeBufferAddrs.push_back(0); }, false},
    {"WriteBufferDataMissing", [](Flash& f) { f.writeBufferData.pop_back(); }, false},
    {"WriteBufferDataTooMany", [](Flash& f) { f.writeBufferData.push_back(0); }, false},
    {"ProgramBufferAddressMissing", [](Flash& f) { f.programBufferAddrs.pop_back(); }, false},
    {"ProgramBufferAddressTooMany", [](Flash& f) { f.programBufferAddrs.push_back(0); }, false},
    {"ProgramBufferDataMissing", [](Flash& f) { f.programBufferData.pop_back(); }, false},
    {"ProgramBufferDataTooMany", [](Flash& f) { f.programBufferData.push_back(0); }, false},
    {"NoSector", [](Flash& f) { f.sectorAddrs = {}; }, false},
    {"OneSector", [](Flash& f) { f.sectorAddrs = {0}; }, true},
    // The lists of the way of programming that is not used count as well.
    {"WordProgramBrokenInWriteBufferMode",
     [](Flash& f) {
       f.writeBufferMode = true;
       f.programData.pop_back();
     },
     false},
    {"WriteBufferMode", [](Flash& f) { f.writeBufferMode = true; }, true},
};

INSTANTIATE_TEST_SUITE_P(Rules, A2UpdateRuleTest, testing::ValuesIn(kRules),
                         [](const auto& test) { return std::string(test.param.name); });

}  // namespace
}  // namespace hollin
