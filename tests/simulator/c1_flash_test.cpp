// SPDX-License-Identifier: MIT
#include "simulator/c1_flash.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <vector>

#include "simulator/keyboard.h"
#include "tests/simulator/host.h"

namespace hollin::simulator {
namespace {

using std::chrono::milliseconds;

// A chip of 64 KiB at controller 0, select 0, and one of 128 KiB at controller 1, select 1.
class C1FlashTest : public testing::Test {
 protected:
  C1FlashTest() { host.Ask(kModeC1); }

  void Configure() { ASSERT_EQ(host.Ask(configure), (Bytes{0xF1, 0x00, 0x00, 0x01, 0x00})); }
  const FlashMemory& Memory() { return keyboard.C1().memory; }

  const Bytes configure = {0x0B, 0, 0, 4, 0x00, 0x10, 0x00};
  const Bytes erase = {0x02, 0x00, 0x10, 0, 0};
  const Bytes status = {0x03, 0x00, 0x10, 0, 0};
  const Bytes busy = {0x03, 0x00, 0x10, 0, 0, 0x00, 0x00};
  const Bytes done = {0x03, 0x00, 0x10, 0, 0, 0xFF, 0xFF};
  // Four bytes at 0x10FE; their sum is 10.
  const Bytes header = {0x07, 0xFE, 0x10, 0, 0, 4, 0, 0, 0, 10, 0, 0};
  const Bytes data = {1, 2, 3, 4};

  Keyboard keyboard{
      {.c1 = {.capacities = {{{0x10000, 0}, {0, 0x20000}}}, .eraseTime = milliseconds(60)}}};
  Host host{keyboard};
};

TEST_F(C1FlashTest, ConfigureTellsTheCapacityOfTheChipItChooses) {
  Configure();
  EXPECT_EQ(keyboard.C1().Configured().lineMode, 4);
  EXPECT_EQ(keyboard.C1().Configured().sectorSize, 0x1000U);
  EXPECT_EQ(host.Ask({0x0B, 1, 1, 2, 0x00, 0x00, 0x01}), (Bytes{0xF1, 0x00, 0x00, 0x02, 0x00}));
  EXPECT_EQ(keyboard.C1().Configured().chip, (Range{0x10000, 0x20000}));
}

TEST_F(C1FlashTest, APlaceWithoutAChipHasNoCapacity) {
  EXPECT_EQ(host.Ask({0x0B, 0, 1, 1, 0x00, 0x10, 0x00}), (Bytes{0xF1, 0, 0, 0, 0}));
}

TEST_F(C1FlashTest, ImpossibleConfigurationsAreRefused) {
  const Bytes refused = {0xF0, 0, 0, 0, 0};
  EXPECT_EQ(host.Ask({0x0B, 2, 0, 1, 0x00, 0x10, 0x00}), refused);
  EXPECT_EQ(host.Ask({0x0B, 0, 2, 1, 0x00, 0x10, 0x00}), refused);
  for (const uint8_t lines : Bytes{0, 3, 5, 8})
    EXPECT_EQ(host.Ask({0x0B, 0, 0, lines, 0, 0x10, 0}), refused);
  EXPECT_EQ(host.Ask({0x0B, 0, 0, 1, 0x00, 0x20, 0x00}), refused);
  EXPECT_EQ(host.Ask({0x0B, 0, 0, 1, 0x00, 0x00, 0x00}), refused);
  EXPECT_EQ(host.Ask({0x0B, 0, 0, 1, 0x00, 0x10}), kRefusal);
  EXPECT_EQ(keyboard.Record().refusals, 9U);
}

TEST_F(C1FlashTest, MoreLinesThanAreConnectedAreRefused) {
  Keyboard narrow({.c1 = {.lines = 2}});
  Host narrowHost(narrow);
  narrowHost.Ask(kModeC1);
  EXPECT_EQ(narrowHost.Ask(configure)[0], 0xF0);
  EXPECT_EQ(narrowHost.Ask({0x0B, 0, 0, 2, 0x00, 0x10, 0x00})[0], 0xF1);
}

TEST_F(C1FlashTest, NothingWorksBeforeConfigure) {
  EXPECT_EQ(host.Ask(erase), kRefusal);
  EXPECT_EQ(host.Ask(status), kRefusal);
  EXPECT_EQ(host.Ask(header), kRefusal);
  EXPECT_EQ(host.Ask({0x08, 0, 0, 0, 0, 0, 0, 0, 0, 0}), kRefusal);
  Configure();
  host.Ask(kModeC1);
  EXPECT_EQ(host.Ask(erase), kRefusal);
}

TEST_F(C1FlashTest, AnEraseIsInProgressForItsTime) {
  Configure();
  EXPECT_EQ(host.Ask(erase), erase);
  EXPECT_EQ(host.Ask(status), busy);
  keyboard.PassTime(milliseconds(59));
  EXPECT_EQ(host.Ask(status), busy);
  keyboard.PassTime(milliseconds(1));
  EXPECT_EQ(host.Ask(status), done);
  EXPECT_EQ(Memory().erased, (std::vector<Range>{{0x1000, 0x1000}}));
}

TEST_F(C1FlashTest, TheStatusOfAnotherSectorIsNeverErased) {
  Configure();
  EXPECT_EQ(host.Ask(status), busy);  // nothing was erased yet
  host.Ask(erase);
  keyboard.PassTime(milliseconds(60));
  EXPECT_EQ(host.Ask({0x03, 0xFF, 0x0F, 0, 0})[5], 0x00);
  EXPECT_EQ(host.Ask({0x03, 0x00, 0x20, 0, 0})[5], 0x00);
  EXPECT_EQ(host.Ask({0x03, 0xFF, 0x1F, 0, 0})[5], 0xFF);  // its last byte
  EXPECT_EQ(host.Ask(status), done);
}

TEST_F(C1FlashTest, ABusyChipTakesNothing) {
  Configure();
  host.Ask(erase);
  EXPECT_EQ(host.Ask(erase), kRefusal);
  EXPECT_EQ(host.Ask(header), kRefusal);
  EXPECT_EQ(host.Ask({0x08, 0, 0, 0, 0, 1, 0, 0, 0, 0}), kRefusal);
}

TEST_F(C1FlashTest, OnlyWholeSectorsOfTheChipAreErased) {
  Configure();
  EXPECT_EQ(host.Ask({0x02, 0x01, 0x10, 0, 0}), kRefusal);
  EXPECT_EQ(host.Ask({0x02, 0x00, 0x00, 0x01, 0}), kRefusal);
  EXPECT_EQ(host.Ask({0x02, 0x00, 0xF0, 0, 0}), (Bytes{0x02, 0x00, 0xF0, 0, 0}));
}

TEST_F(C1FlashTest, ABlockIsProgrammedPageByPage) {
  Configure();
  EXPECT_EQ(host.Ask(header), header);
  EXPECT_EQ(host.Ask(data), Bytes{0xF4});
  EXPECT_EQ(Memory().programmed, (std::vector<Range>{{0x10FE, 2}, {0x1100, 2}}));
  EXPECT_EQ(Memory().Contents()[0x1101], 4);
  EXPECT_EQ(host.Ask({0x08, 0xFE, 0x10, 0, 0, 4, 0, 0, 0, 0}),
            (Bytes{0x08, 0xFE, 0x10, 0, 0, 4, 0, 0, 0, 10, 0}));
}

TEST_F(C1FlashTest, TheOtherChipsStayAsTheyAre) {
  host.Ask({0x0B, 1, 1, 1, 0x00, 0x10, 0x00});
  host.Ask(header);
  host.Ask(data);
  EXPECT_EQ(Memory().Contents()[0x10FE], 0xFF);
  EXPECT_EQ(Memory().Contents()[0x10000 + 0x10FE], 1);
}

TEST_F(C1FlashTest, ABlockWithAnotherSumIsNotWritten) {
  Configure();
  host.Ask(header);
  EXPECT_EQ(host.Ask({1, 2, 3, 5}), kRefusal);
  EXPECT_TRUE(Memory().programmed.empty());
}

TEST_F(C1FlashTest, CellsThatWereNotErasedLoseBitsAndTheSumTells) {
  Configure();
  host.Ask(header);
  host.Ask(data);
  host.Ask({0x07, 0xFE, 0x10, 0, 0, 1, 0, 0, 0, 2, 0, 0});
  EXPECT_EQ(host.Ask({2}), Bytes{0xF4});
  EXPECT_EQ(Memory().Contents()[0x10FE], 0);
}

TEST_F(C1FlashTest, BlocksHaveFourByteLengthsUpToTheBuffer) {
  Configure();
  EXPECT_EQ(host.Ask({0x07, 0, 0, 0, 0, 0x00, 0x20, 0, 0, 0, 0, 0}).size(), 12U);
  EXPECT_EQ(host.Ask({0x07, 0, 0, 0, 0, 0x01, 0x20, 0, 0, 0, 0, 0}), kRefusal);
  EXPECT_EQ(host.Ask({0x07, 0, 0, 0, 0, 0x01, 0, 0x01, 0, 0, 0, 0}), kRefusal);
  EXPECT_EQ(host.Ask({0x07, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}), kRefusal);
}

TEST_F(C1FlashTest, BlocksAndSumsEndWithTheChip) {
  Configure();
  EXPECT_EQ(host.Ask({0x07, 0xFF, 0xFF, 0, 0, 1, 0, 0, 0, 0, 0, 0}).size(), 12U);
  EXPECT_EQ(host.Ask({0x07, 0xFF, 0xFF, 0, 0, 2, 0, 0, 0, 0, 0, 0}), kRefusal);
  EXPECT_EQ(host.Ask({0x08, 0, 0, 0, 0, 0x00, 0, 0x01, 0, 0}).size(), 11U);
  EXPECT_EQ(host.Ask({0x08, 0, 0, 0, 0, 0x01, 0, 0x01, 0, 0}), kRefusal);
}

}  // namespace
}  // namespace hollin::simulator
