// SPDX-License-Identifier: MIT
// Every kind of flash and every pair of kinds, as the sample packages have them: afterwards every
// byte of every chip is what it must be, reserved sectors and the rest of the chips included.
#include <algorithm>
#include <map>
#include <string>
#include <tuple>

#include "tests/cli/whole_program_test.h"

namespace hollin {
namespace {

constexpr size_t kChipSize = 0x100000;  // of all three chips
constexpr size_t kSectorSize = 0x10000;

using Chips = std::map<std::string, Bytes>;  // by the kind's name

// With an older firmware, settings included: neither an erase too many nor one too few goes unseen.
Chips ChipsInUse() {
  return {{"a1", Filled(kChipSize, 0x5A)},
          {"a2", Filled(kChipSize, 0x5A)},
          {"c1", Filled(kChipSize, 0x5A)}};
}

// Erases the sectors that an image reaches and puts its parts there. `sectors` says where each
// part goes; a part that has nowhere to go is dropped.
void WriteSectors(Bytes& chip, const Bytes& image, const std::vector<int>& sectors) {
  for (size_t part = 0; part * kSectorSize < image.size(); part++) {
    if (sectors.at(part) < 0) continue;
    const auto sector = chip.begin() + sectors[part] * static_cast<ptrdiff_t>(kSectorSize);
    std::fill_n(sector, kSectorSize, uint8_t{0xFF});
    const auto begin = image.begin() + static_cast<ptrdiff_t>(part * kSectorSize);
    std::copy_n(begin, std::min(kSectorSize, image.size() - part * kSectorSize), sector);
  }
}

void Write(Chips& chips, const std::string& sample, const Bytes& image) {
  if (sample == "a1") std::copy(image.begin(), image.end(), chips["a1"].begin());
  if (sample == "a2-word") WriteSectors(chips["a2"], image, {0, 1, 2});
  if (sample == "a2-buffer") WriteSectors(chips["a2"], image, {0, -1, 2});
  if (sample == "c1") WriteSectors(chips["c1"], image, {1, 3, 4});
}

class CombinationsTest : public WholeProgramTest {
 protected:
  // The options of a keyboard whose chips are in use.
  [[nodiscard]] std::vector<std::string> FlashFiles() const {
    std::vector<std::string> arguments;
    for (const auto& [chip, bytes] : ChipsInUse()) {
      arguments.emplace_back("--option");
      arguments.emplace_back(chip + ".file=" + folder.Write(chip, bytes));
    }
    return arguments;
  }

  [[nodiscard]] Bytes Image(const std::string& name) const {
    return folder.Read("samples/" + name + ".bin");
  }

  void ExpectChips(const Chips& expected) const {
    for (const auto& [name, bytes] : expected) {
      EXPECT_TRUE(folder.Read(name) == bytes) << "the chip of " << name;
    }
  }
};

class OnePackTest : public CombinationsTest, public ::testing::WithParamInterface<std::string> {};

TEST_P(OnePackTest, LeavesEveryByteAsItMustBe) {
  const SimulatorProcess keyboard(bus, FlashFiles());
  const std::string& sample = GetParam();
  MakeSamples({sample});
  const Ended ended = UpdateWithSample(sample);
  EXPECT_EQ(ended.exitCode, 0) << ended.err;
  Chips expected = ChipsInUse();
  Write(expected, sample, Image(sample + ".first"));
  ExpectChips(expected);
}

INSTANTIATE_TEST_SUITE_P(Kinds, OnePackTest, ::testing::Values("a1", "a2-word", "a2-buffer", "c1"));

class TwoPacksTest : public CombinationsTest,
                     public ::testing::WithParamInterface<std::tuple<std::string, std::string>> {};

TEST_P(TwoPacksTest, LeaveEveryByteAsItMustBe) {
  const SimulatorProcess keyboard(bus, FlashFiles());
  const auto& [first, second] = GetParam();
  const std::string sample = first + "-" + second;
  MakeSamples({sample});
  const Ended ended = UpdateWithSample(sample);
  EXPECT_EQ(ended.exitCode, 0) << ended.err;
  Chips expected = ChipsInUse();
  Write(expected, first, Image(first + ".first"));
  Write(expected, second, Image(second + ".second"));
  ExpectChips(expected);
}

INSTANTIATE_TEST_SUITE_P(Kinds, TwoPacksTest,
                         ::testing::Combine(::testing::Values("a1", "a2-word", "a2-buffer", "c1"),
                                            ::testing::Values("a1", "a2-word", "a2-buffer", "c1")));

}  // namespace
}  // namespace hollin
