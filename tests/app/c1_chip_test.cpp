// SPDX-License-Identifier: MIT
// Updates of C1 flashes in every place of the keyboard leave every byte of all chips as it must be.
#include <tuple>

#include "tests/app/simulated_update_test.h"

namespace hollin {
namespace {

constexpr size_t kSector = 4096;

// Four chips of 32 KiB each, one behind the other in the simulator's memory.
class C1ChipTest : public SimulatedUpdateTest {
 protected:
  C1ChipTest() : chip(Plug({.c1 = {.capacities = {{{0x8000, 0x8000}, {0x8000, 0x8000}}}}}).C1()) {}

  static std::string Description(uint32_t controller, uint32_t select, uint32_t lines) {
    return "[sector size]\nbytes=4K\n[reserved sector]\n0x1000\n[spi number]\nn=" +
           std::to_string(controller) + "\n[chip select number]\nn=" + std::to_string(select) +
           "\n[line mode]\nn=" + std::to_string(lines) + "\n";
  }

  simulator::C1Flash& chip;
};

class C1PlaceTest : public C1ChipTest,
                    public testing::WithParamInterface<std::tuple<uint32_t, uint32_t, uint32_t>> {};

// Two and a half sectors of an image around the second sector, which is reserved.
TEST_P(C1PlaceTest, ThatChipAloneIsWritten) {
  const auto& [controller, select, lines] = GetParam();
  const Bytes image = Counting(kSector, 1) + Counting(kSector, 2) + Counting(1001, 3);
  ASSERT_TRUE(Load("C1", Description(controller, select, lines), image));
  ASSERT_EQ(Update(), UpdateOutcome::kSucceeded);
  EXPECT_EQ(chip.Configured().lineMode, lines);
  const Bytes written = Counting(kSector, 1) + Filled(kSector, kOld) + Counting(kSector, 2) +
                        Counting(1001, 3) + Filled(kSector - 1001, 0xFF) +
                        Filled(4 * kSector, kOld);
  Bytes expected;
  for (uint32_t place = 0; place < 4; place++) {
    expected = expected + (place == controller * 2 + select ? written : Filled(0x8000, kOld));
  }
  EXPECT_TRUE(Contents(chip.memory) == expected);
}

INSTANTIATE_TEST_SUITE_P(Places, C1PlaceTest,
                         testing::Combine(testing::Values(0U, 1U), testing::Values(0U, 1U),
                                          testing::Values(1U, 2U, 4U)));

TEST_F(C1ChipTest, AnImageMayFillTheChipAndNoMore) {
  ASSERT_TRUE(Load("C1", Description(0, 0, 1), Filled(7 * kSector, 1)));
  ASSERT_EQ(Update(), UpdateOutcome::kSucceeded);
  EXPECT_TRUE(Contents(chip.memory) == Filled(kSector, 1) + Filled(kSector, kOld) +
                                           Filled(6 * kSector, 1) + Filled(0x18000, kOld));
  ASSERT_TRUE(Load("C1", Description(0, 1, 1), Filled(7 * kSector + 1, 1)));
  EXPECT_EQ(Update(), UpdateOutcome::kFailed);
  EXPECT_EQ(chip.memory.erased.size(), 7U);
}

TEST_F(C1ChipTest, APlaceWithoutAChipFailsTheUpdate) {
  hidapi.Reset();
  Plug({.c1 = {.capacities = {{{0x8000, 0}, {0x8000, 0x8000}}}}});
  ASSERT_TRUE(Load("C1", Description(0, 1, 1), Counting(10)));
  EXPECT_EQ(Update(), UpdateOutcome::kFailed);
}

}  // namespace
}  // namespace hollin
