// SPDX-License-Identifier: MIT
// Updates of A2 flashes of many shapes leave every byte of the chip as it must be.
#include "tests/app/simulated_update_test.h"

namespace hollin {
namespace {

using simulator::Range;
using Sectors = std::vector<uint32_t>;

// All but the sector list.
constexpr const char* kDescription = R"([Flash Modle]
TS-8
[Reserved Sector]
0xFFFFFFFF
[Block Size]
words=8
[Sector Erase Cycle]
EraseCycles=2
Addr1=0x555
Data1=0xAA
Addr2=0
Data2=0x30
[Program Cycle]
ProgramCycles=1
Addr1=0x555
Data1=0xA0
[Write Buffer Cycle]
WriteBufferCycles=1
WriteBufferCount=15
Addr1=0x2AA
Data1=0x25
[Program Buffer Cycle]
ProgramBufferCycles=1
Addr1=0x2AB
Data1=0x29
)";

class A2ChipTest : public SimulatedUpdateTest {
 protected:
  // A chip with these sectors, and what its description says of them.
  void PlugChip(const Sectors& sectors, uint16_t erasedWord = 0xFFFF) {
    chip = &Plug({.a2 = {.sectors = sectors,
                         .erase = {{0x555, 0xAA}, {0, 0x30}},
                         .program = {{0x555, 0xA0}},
                         .writeBuffer = {{15, 3, 0xFF, 4, 0xFF}, {{0x2AA, 0x25}}},
                         .programBuffer = {{1, 0xFF}, {{0x2AB, 0x29}}},
                         .erasedWord = erasedWord}})
                .A2();
    list = "[Sector Address List]\n";
    for (const uint32_t address : sectors) list += std::to_string(address) + "\n";
  }

  [[nodiscard]] UpdateOutcome UpdateWith(const std::string& settings, const Bytes& image) {
    EXPECT_TRUE(Load("A2", kDescription + settings + list, image));
    return Update();
  }

  simulator::A2Flash* chip = nullptr;
  std::string list;
};

TEST_F(A2ChipTest, OnlyWhatStandsBehindTheFileOffsetIsWritten) {
  PlugChip({0x00, 0x10, 0x20, 0x30});  // of 32 bytes each
  ASSERT_EQ(UpdateWith("[File Offset]\nFileOffset=5\n", Counting(10 + 50)),
            UpdateOutcome::kSucceeded);
  EXPECT_EQ(Contents(chip->memory), Counting(50, 10) + Filled(14, 0xFF) + Filled(64, kOld));
  EXPECT_EQ(chip->memory.erased, (std::vector<Range>{{0, 32}, {32, 32}}));
}

TEST_F(A2ChipTest, AChipThatBeginsAt1400IsErasedByItsOwnCycles) {
  PlugChip({0x1400, 0x1410, 0x1420});
  ASSERT_EQ(UpdateWith("", Counting(40)), UpdateOutcome::kSucceeded);
  EXPECT_EQ(Contents(chip->memory), Counting(40) + Filled(24, 0xFF) + Filled(32, kOld));
}

TEST_F(A2ChipTest, TheOddByteOfAnImageIsNotWritten) {
  for (const char* mode : {"0", "1"}) {
    hidapi.Reset();
    PlugChip({0x00, 0x10, 0x20});
    ASSERT_EQ(UpdateWith(std::string("[Write Modle]\nmode=") + mode + "\n", Counting(37)),
              UpdateOutcome::kSucceeded);
    EXPECT_EQ(Contents(chip->memory), Counting(36) + Filled(28, 0xFF) + Filled(32, kOld));
  }
}

TEST_F(A2ChipTest, SectorsMayDifferInSize) {
  PlugChip({0x00, 0x08, 0x28, 0x2C, 0x40});  // 16, 64, 8, 40 and again 40 bytes
  ASSERT_EQ(UpdateWith("", Counting(130)), UpdateOutcome::kSucceeded);
  EXPECT_EQ(Contents(chip->memory), Counting(130) + Filled(38, 0xFF));
  EXPECT_EQ(chip->memory.erased,
            (std::vector<Range>{{0, 16}, {16, 64}, {80, 8}, {88, 40}, {128, 40}}));
}

TEST_F(A2ChipTest, AReservedSectorKeepsWhatItHeldWhateverTheMode) {
  for (const char* mode : {"0", "1"}) {
    hidapi.Reset();
    PlugChip({0x00, 0x10, 0x20, 0x30});
    ASSERT_EQ(UpdateWith(std::string("[Reserved Sector]\n0x10\n[Write Modle]\nmode=") + mode + "\n",
                         Counting(90)),
              UpdateOutcome::kSucceeded);
    EXPECT_EQ(Contents(chip->memory), Counting(32) + Filled(32, kOld) + Counting(26, 64) +
                                          Filled(6, 0xFF) + Filled(32, kOld));
    EXPECT_EQ(chip->memory.erased, (std::vector<Range>{{0, 32}, {64, 32}}));
  }
}

TEST_F(A2ChipTest, ReservedSectorsMayComeFirstAndLast) {
  PlugChip({0x00, 0x10, 0x20, 0x30});
  ASSERT_EQ(UpdateWith("[Reserved Sector]\n0x20\n0x00\n", Counting(96)), UpdateOutcome::kSucceeded);
  EXPECT_EQ(Contents(chip->memory), Filled(32, kOld) + Counting(32, 32) + Filled(64, kOld));
}

TEST_F(A2ChipTest, AnErasedChipMayReadAnotherWord) {
  PlugChip({0x00, 0x10, 0x20}, 0x1234);
  ASSERT_EQ(UpdateWith("[Data]\nErased=0x1234\n", Counting(28)), UpdateOutcome::kSucceeded);
  EXPECT_EQ(Contents(chip->memory), Counting(28) + Hex("34 12 34 12") + Filled(64, kOld));
}

TEST_F(A2ChipTest, AnotherErasedWordThanTheChipsFailsBeforeAnythingIsProgrammed) {
  PlugChip({0x00, 0x10, 0x20});
  EXPECT_EQ(UpdateWith("[Data]\nErased=0x1234\n", Counting(28)), UpdateOutcome::kFailed);
  EXPECT_TRUE(chip->memory.programmed.empty());
}

// One byte more than what the capacity allows does not load; the chip's last byte does.
TEST_F(A2ChipTest, AnImageMayFillTheChip) {
  PlugChip({0x00, 0x10, 0x20});
  ASSERT_EQ(UpdateWith("", Counting(96)), UpdateOutcome::kSucceeded);
  EXPECT_EQ(Contents(chip->memory), Counting(96));
  EXPECT_FALSE(Load("A2", kDescription + list, Counting(97)));
}

TEST_F(A2ChipTest, AListOutOfOrderLeavesTheChipAsItWas) {
  PlugChip({0x00, 0x10, 0x20});
  list = "[Sector Address List]\n0\n0x10\n0x10\n";
  EXPECT_EQ(UpdateWith("", Counting(20)), UpdateOutcome::kFailed);
  EXPECT_EQ(Contents(chip->memory), Filled(96, kOld));
}

}  // namespace
}  // namespace hollin
