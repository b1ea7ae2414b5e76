// SPDX-License-Identifier: MIT
// What a C1 update checks and plans, and where the data sectors go.
#include <string>
#include <utility>
#include <vector>

#include "tests/support/processor_time.h"
#include "tests/updaters/c1_test.h"

namespace hollin {
namespace {

class C1UpdatePlanTest : public C1Test {
 protected:
  // The sectors of the first `count` data sectors; shorter when one is not found.
  [[nodiscard]] std::vector<uint32_t> Sectors(uint32_t count) {
    std::vector<uint32_t> found;
    uint32_t sector = 0;
    for (uint32_t i = 0; i < count && update.FindUnreservedSector(i, sector); i++) {
      found.push_back(sector);
    }
    return found;
  }

  [[nodiscard]] bool PlanFlash(uint32_t sectorSize, std::vector<uint32_t> reserved) {
    update.flash.sectorSize = sectorSize;
    update.flash.reservedSectors = std::move(reserved);
    return Plan(Counting(1));
  }

  // -1 where there is none.
  [[nodiscard]] int32_t Span(uint32_t length) {
    int32_t span = 0;
    return update.FindSpan(length, span) ? span : -1;
  }
};

TEST_F(C1UpdatePlanTest, AnImageFillsItsLengthInSectorsRoundedUp) {
  struct Case {
    size_t length;
    uint32_t sectors;
  };
  for (const Case& c :
       std::vector<Case>{{1, 1}, {31, 1}, {32, 1}, {33, 2}, {95, 3}, {96, 3}, {97, 4}}) {
    ASSERT_TRUE(Plan(Counting(c.length)));
    EXPECT_EQ(update.dataSectorCount, c.sectors);
    EXPECT_EQ(update.StepCount(), c.sectors + 2);
    EXPECT_EQ(update.dataLength, c.length);
    EXPECT_EQ(update.dataStart, 0U);
  }
}

TEST_F(C1UpdatePlanTest, TheChecksumIsTheSumOfTheImagesWords) {
  ASSERT_TRUE(Plan(Hex("01 02 03 04 05")));
  EXPECT_EQ(update.checksum, 0x0604);
}

TEST_F(C1UpdatePlanTest, ASectorSizeOf0MakesNoPlan) {
  update.flash.sectorSize = 0;
  EXPECT_TRUE(update.CheckConfig());
  EXPECT_FALSE(Plan(Counting(1)));
}

TEST_F(C1UpdatePlanTest, EveryOtherSectorSizeMakesOne) {
  for (const uint32_t size : {1U, 0xFFFFFFU, 0x1000000U, 0xFFFFFFFFU}) {
    update.flash.sectorSize = size;
    ASSERT_TRUE(Plan(Counting(3)));
    EXPECT_EQ(update.dataSectorCount, size == 1 ? 3U : 1U);
  }
}

TEST_F(C1UpdatePlanTest, AStepCountBeyond31BitsFailsThePlan) {
  update.flash.sectorSize = 1;
  EXPECT_TRUE(PlanLength(0x7FFFFFFC));
  EXPECT_TRUE(PlanLength(0x7FFFFFFD));
  EXPECT_EQ(update.StepCount(), 0x7FFFFFFFU);
  EXPECT_FALSE(PlanLength(0x7FFFFFFE));
  EXPECT_FALSE(PlanLength(0xFFFFFFFE));  // and two steps are 0 in 32 bits
  EXPECT_FALSE(PlanLength(0xFFFFFFFF));
}

TEST_F(C1UpdatePlanTest, DataSectorsGoToTheSectorsThatAreNotReserved) {
  ASSERT_TRUE(PlanFlash(32, {0x60, 0x20, 0x20}));
  EXPECT_EQ(Sectors(4), (std::vector<uint32_t>{0, 2, 4, 5}));
  EXPECT_TRUE(update.IsReserved(1));
  EXPECT_TRUE(update.IsReserved(3));
  EXPECT_FALSE(update.IsReserved(2));
  EXPECT_EQ(update.SectorAddress(3), 0x60U);
  EXPECT_EQ(update.SectorSize(), 32U);
}

TEST_F(C1UpdatePlanTest, AnyDataSectorMayBeAskedForInAnyOrder) {
  ASSERT_TRUE(PlanFlash(32, {0, 0x40}));
  uint32_t sector = 0;
  for (const auto& [index, expected] :
       std::vector<std::pair<uint32_t, uint32_t>>{{3, 5}, {0, 1}, {0, 1}, {2, 4}, {1, 3}}) {
    ASSERT_TRUE(update.FindUnreservedSector(index, sector));
    EXPECT_EQ(sector, expected);
  }
}

TEST_F(C1UpdatePlanTest, AnEntryThatIsNoMultipleOfTheSectorSizeReservesNothing) {
  ASSERT_TRUE(PlanFlash(32, {1, 0x1F, 0x21}));
  EXPECT_EQ(Sectors(3), (std::vector<uint32_t>{0, 1, 2}));
}

TEST_F(C1UpdatePlanTest, WithSector0ReservedOneByteSpansTwoSectors) {
  ASSERT_TRUE(PlanFlash(65536, {0}));
  EXPECT_EQ(Sectors(1), std::vector<uint32_t>{1});
  EXPECT_EQ(Span(1), 131072);
}

TEST_F(C1UpdatePlanTest, TheSpanCountsReservedSectorsBetweenAndNotAbove) {
  ASSERT_TRUE(PlanFlash(32, {0x20, 0x80}));
  EXPECT_EQ(Span(0), 0);
  EXPECT_EQ(Span(1), 32);
  EXPECT_EQ(Span(32), 32);
  EXPECT_EQ(Span(33), 96);
  EXPECT_EQ(Span(96), 128);  // the sector at 128 is reserved, and above
  EXPECT_EQ(Span(97), 192);
}

TEST_F(C1UpdatePlanTest, ASpanEndsAt31Bits) {
  ASSERT_TRUE(PlanFlash(65536, {0x12345}));
  EXPECT_EQ(Span(0x7FFF0000), 0x7FFF0000);
  EXPECT_EQ(Span(0x7FFF0001), -1);
  EXPECT_EQ(Span(0xFFFFFFFF), -1);
  ASSERT_TRUE(PlanFlash(0x7FFFFFFF, {1}));
  EXPECT_EQ(Span(1), 0x7FFFFFFF);
  EXPECT_EQ(Span(0x80000000), -1);
  ASSERT_TRUE(PlanFlash(0x80000000, {1}));
  EXPECT_EQ(Span(1), -1);
}

TEST_F(C1UpdatePlanTest, WhenEverySectorIsReservedNoneIsFound) {
  ASSERT_TRUE(PlanFlash(0x80000000, {0x80000000, 0}));
  EXPECT_TRUE(Sectors(1).empty());
  EXPECT_EQ(Span(1), -1);
  EXPECT_FALSE(update.RunStep(0));
  EXPECT_FALSE(update.VerifyImage());
  EXPECT_TRUE(hidapi.calls.empty());
}

TEST_F(C1UpdatePlanTest, AllSectorsOf64KibibytesMayBeReserved) {
  std::vector<uint32_t> all;
  for (uint32_t sector = 0; sector < 65536; sector++) all.push_back(sector << 16);
  ASSERT_TRUE(PlanFlash(65536, all));
  EXPECT_TRUE(Sectors(1).empty());
  EXPECT_EQ(Span(1), -1);
  all.pop_back();
  ASSERT_TRUE(PlanFlash(65536, all));
  EXPECT_EQ(Sectors(1), std::vector<uint32_t>{65535});
}

class C1AllReservedTest : public C1UpdatePlanTest {
 protected:
  // Looks for a free one among so many sectors, a power of two, all of them reserved.
  void SearchSectors(uint32_t sectors) {
    const auto size = static_cast<uint32_t>((uint64_t{1} << 32) / sectors);
    std::vector<uint32_t> all;
    for (uint32_t sector = 0; sector < sectors; sector++) all.push_back(sector * size);
    ASSERT_TRUE(PlanFlash(size, all));
    EXPECT_TRUE(Sectors(1).empty());
    EXPECT_EQ(Span(1), -1);
    EXPECT_FALSE(update.RunStep(0));
    EXPECT_FALSE(update.VerifyImage());
  }
};

// No sector is looked up in a list from its beginning.
TEST_F(C1AllReservedTest, SectorsCostAsMuchEachAsFewDo) {
  EXPECT_LT(LeastGrowth([this] { SearchSectors(4096); }, [this] { SearchSectors(65536); }),
            kMostGrowthOf16Times);
}

// As many reserved sectors in a row as there are distinct entries still leave a free one behind.
TEST_F(C1UpdatePlanTest, ARowOfAllEntriesIsPassed) {
  ASSERT_TRUE(PlanFlash(32, {0, 0x40, 0x20, 0x20}));
  EXPECT_EQ(Sectors(2), (std::vector<uint32_t>{3, 4}));
}

TEST_F(C1UpdatePlanTest, AResetBringsTheDefaultsBackAndReservesNothing) {
  ASSERT_TRUE(PlanFlash(32, {0}));
  update.flash.lineMode = 4;
  update.flash.spiNumber = 1;
  update.flash.chipSelectNumber = 1;
  update.mode = 9;
  update.Reset();
  EXPECT_EQ(update.mode, 3U);
  EXPECT_TRUE(update.flash.reservedSectors.empty());
  EXPECT_FALSE(update.IsReserved(0));
  EXPECT_EQ(Sectors(1), std::vector<uint32_t>{0});
  EXPECT_EQ(update.flash.lineMode, 1U);
  EXPECT_EQ(update.flash.spiNumber, 0U);
  EXPECT_EQ(update.flash.chipSelectNumber, 0U);
  EXPECT_EQ(update.flash.sectorSize, 65536U);
}

struct Rule {
  const char* name;
  void (*change)(C1Description& flash);
  bool isAcceptable;
};

void PrintTo(const Rule& rule, std::ostream* out) { *out << rule.name; }

class C1UpdateRuleTest : public C1Test, public testing::WithParamInterface<Rule> {};

TEST_P(C1UpdateRuleTest, ADescriptionIsCheckedRuleByRule) {
  GetParam().change(update.flash);
  EXPECT_EQ(update.CheckConfig(), GetParam().isAcceptable);
}

using Flash = C1Description;

const Rule kRules[] = {
    {"AsItIs", [](Flash&) {}, true},
    {"NothingReserved", [](Flash& f) { f.reservedSectors = {}; }, false},
    {"ReservedAnywhere", [](Flash& f) { f.reservedSectors = {0xFFFFFFFF}; }, true},
    {"NoLine", [](Flash& f) { f.lineMode = 0; }, false},
    {"OneLine", [](Flash& f) { f.lineMode = 1; }, true},
    {"TwoLines", [](Flash& f) { f.lineMode = 2; }, true},
    {"ThreeLines", [](Flash& f) { f.lineMode = 3; }, false},
    {"FourLines", [](Flash& f) { f.lineMode = 4; }, true},
    {"FiveLines", [](Flash& f) { f.lineMode = 5; }, false},
    {"EightLines", [](Flash& f) { f.lineMode = 8; }, false},
    {"Lines33", [](Flash& f) { f.lineMode = 33; }, false},
    {"Lines4294967295", [](Flash& f) { f.lineMode = 0xFFFFFFFF; }, false},
    {"Spi1", [](Flash& f) { f.spiNumber = 1; }, true},
    {"Spi2", [](Flash& f) { f.spiNumber = 2; }, false},
    {"Spi4294967295", [](Flash& f) { f.spiNumber = 0xFFFFFFFF; }, false},
    {"ChipSelect1", [](Flash& f) { f.chipSelectNumber = 1; }, true},
    {"ChipSelect2", [](Flash& f) { f.chipSelectNumber = 2; }, false},
    {"ChipSelect4294967295", [](Flash& f) { f.chipSelectNumber = 0xFFFFFFFF; }, false},
    {"AnySectorSize", [](Flash& f) { f.sectorSize = 0; }, true},
};

INSTANTIATE_TEST_SUITE_P(Rules, C1UpdateRuleTest, testing::ValuesIn(kRules),
                         [](const auto& test) { return std::string(test.param.name); });

}  // namespace
}  // namespace hollin
