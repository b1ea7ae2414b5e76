// SPDX-License-Identifier: MIT
// Loading, checking and planning an A1 update.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <limits>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tests/support/hex_bytes.h"
#include "tests/support/link_test.h"
#include "tests/support/recorded_log.h"
#include "tests/support/temp_folder.h"
#include "updaters/a1_update.h"

namespace hollin {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class A1LoadTest : public LinkTest {
 protected:
  void TearDown() override {
    EXPECT_THAT(hidapi.calls, IsEmpty());  // loading concerns no keyboard
    LinkTest::TearDown();
  }

  [[nodiscard]] std::string ConfigPath() const { return folder.Path("TEMP1.INI"); }
  [[nodiscard]] std::string ImagePath() const { return folder.Path("TEMP1.BIN"); }

  // An updater of a description with these lines, and of an image of `size` bytes.
  A1Update MakeUpdate(size_t size, uint32_t chipSize, std::string_view transmission = "") {
    folder.Write("TEMP1.INI", "[Chip Info]\nChip Size=" + std::to_string(chipSize) +
                                  "\n[Transmission Info]\n" + std::string(transmission));
    folder.Write("TEMP1.BIN", Counting(size));
    return {ConfigPath(), ImagePath()};
  }

  TempFolder folder;
  RecordedLog log;
};

TEST_F(A1LoadTest, TheConstructorSetsItsDefaults) {
  const A1Update update("a", "b");
  EXPECT_EQ(update.configPath, "a");
  EXPECT_EQ(update.imagePath, "b");
  EXPECT_EQ(update.mode, 2U);
  EXPECT_EQ(update.image, nullptr);
  EXPECT_EQ(update.imageLength, 0);
  EXPECT_EQ(update.checksum, 0);
  EXPECT_EQ(update.flash.chipName, std::nullopt);
  EXPECT_EQ(update.flash.chipSize, 0U);
  EXPECT_EQ(update.flash.startAddress, 0U);
  EXPECT_EQ(update.flash.dataLength, 0U);
  EXPECT_EQ(update.flash.timeOver, 0U);
}

TEST_F(A1LoadTest, DescriptionAndImageAreLoaded) {
  A1Update update = MakeUpdate(1000, 0x100000, "Data Length=128\nStart Address=0x1000\n");
  ASSERT_TRUE(update.LoadFiles());
  EXPECT_EQ(update.imageLength, 1000);
  EXPECT_EQ(Bytes(update.image.get(), update.image.get() + 1000), Counting(1000));
  EXPECT_EQ(update.flash.startAddress, 0x1000U);
  EXPECT_EQ(update.flash.dataLength, 128U);
  EXPECT_EQ(update.writeAddress, 0U);
  EXPECT_EQ(update.sentTotal, 0U);
}

TEST_F(A1LoadTest, TheDescriptionIsReadOnceAndKept) {
  A1Update update = MakeUpdate(64, 1000);
  const Bytes written = folder.Read("TEMP1.INI");
  ASSERT_TRUE(update.LoadFiles());
  folder.Write("TEMP1.INI", "something else");
  EXPECT_EQ(Bytes(update.description.View().begin(), update.description.View().end()), written);
}

TEST_F(A1LoadTest, ADescriptionWithoutDataLengthGets65536) {
  A1Update update = MakeUpdate(65537, 0x100000);
  ASSERT_TRUE(update.LoadFiles());
  EXPECT_EQ(update.flash.dataLength, 65536U);
  EXPECT_EQ(update.StepCount(), 4U);
}

TEST_F(A1LoadTest, ADataLengthMustBeAMultipleOf64) {
  const std::vector<std::pair<uint32_t, bool>> cases = {
      {0, true},    {1, false},  {63, false},    {64, true},    {65, false},
      {100, false}, {128, true}, {65535, false}, {65536, true}, {0xFFFFFFC0, true}};
  for (const auto& [dataLength, isGood] : cases) {
    A1Update update("", "");
    update.flash.chipSize = 1;
    update.flash.dataLength = dataLength;
    EXPECT_EQ(update.CheckConfig(), isGood) << dataLength;
    EXPECT_EQ(update.flash.dataLength, dataLength == 0 ? 65536 : dataLength);
  }
}

TEST_F(A1LoadTest, ADataLengthOf100FailsTheLoad) {
  A1Update update = MakeUpdate(1000, 0x100000, "Data Length=100\n");
  EXPECT_FALSE(update.LoadFiles());
  EXPECT_EQ(update.image, nullptr);
}

TEST_F(A1LoadTest, AChipSizeOfZeroFailsTheCheck) {
  A1Update update("", "");
  update.flash.dataLength = 64;
  EXPECT_FALSE(update.CheckConfig());
  update.flash.chipSize = 1;
  EXPECT_TRUE(update.CheckConfig());
}

TEST_F(A1LoadTest, AnImageOf1000BytesBecomesOneBlock) {
  A1Update update = MakeUpdate(1000, 0x100000, "Data Length=0x10000\n");
  ASSERT_TRUE(update.LoadFiles());
  EXPECT_EQ(update.flash.dataLength, 1000U);
  EXPECT_EQ(update.StepCount(), 3U);
}

TEST_F(A1LoadTest, StepsAreTheBlocksRoundedUpAndTwo) {
  const std::vector<std::pair<size_t, uint32_t>> cases = {{1, 3},   {63, 3},  {64, 3},  {65, 4},
                                                          {127, 4}, {128, 4}, {129, 5}, {1000, 18}};
  for (const auto& [size, steps] : cases) {
    A1Update update = MakeUpdate(size, 0x100000, "Data Length=64\n");
    ASSERT_TRUE(update.LoadFiles()) << size;
    EXPECT_EQ(update.StepCount(), steps) << size;
  }
}

TEST_F(A1LoadTest, AnImageShorterThanABlockShortensTheBlock) {
  for (const size_t size : {size_t{63}, size_t{64}, size_t{65}}) {
    A1Update update = MakeUpdate(size, 0x100000, "Data Length=64\n");
    ASSERT_TRUE(update.LoadFiles());
    EXPECT_EQ(update.flash.dataLength, size == 63 ? 63U : 64U);
  }
}

TEST_F(A1LoadTest, AnImageMustFitTheChipLessTwiceTheStartAddress) {
  const std::vector<std::pair<size_t, bool>> cases = {{999, true}, {1000, true}, {1001, false}};
  for (const auto& [size, fits] : cases) {
    EXPECT_EQ(MakeUpdate(size, 1000).LoadFiles(), fits) << size;
    EXPECT_EQ(MakeUpdate(size, 1200, "Start Address=100\n").LoadFiles(), fits) << size;
  }
}

TEST_F(A1LoadTest, AStartAddressBeyondHalfTheChipWrapsToALargeRoom) {
  EXPECT_TRUE(MakeUpdate(100, 1000, "Start Address=449\n").LoadFiles());
  EXPECT_FALSE(MakeUpdate(100, 1000, "Start Address=500\n").LoadFiles());
  EXPECT_TRUE(MakeUpdate(100, 1000, "Start Address=501\n").LoadFiles());
  EXPECT_TRUE(MakeUpdate(1000, 1000, "Start Address=0x80000000\n").LoadFiles());
}

TEST_F(A1LoadTest, TheBlocksOfAnImageBeyondTwoToThe31BytesAreAllCounted) {
  A1Update update("", "");
  update.flash.dataLength = 0x10000;
  for (const auto& [length, steps] :
       std::vector<std::pair<int64_t, uint32_t>>{{0x7FFF0000, 32769},
                                                 {0x7FFF0001, 32770},
                                                 {0x80000000, 32770},
                                                 {0x80000001, 32771},
                                                 {0xFFFF0000, 65537},
                                                 {0xFFFF0001, 65538},
                                                 {0xFFFFFFFF, 65538}}) {
    update.imageLength = length;
    EXPECT_TRUE(update.CountSteps()) << length;
    EXPECT_EQ(update.stepCount, steps) << length;
  }
}

TEST_F(A1LoadTest, PlanningComparesMoreThanThirtyTwoBitsOfTheLength) {
  A1Update update("", "");
  update.flash.chipSize = 0xFFFFFFFF;
  update.flash.dataLength = 64;
  for (const auto& [length, fits] : std::vector<std::pair<int64_t, bool>>{{0, false},
                                                                          {1, true},
                                                                          {0xFFFFFFFE, true},
                                                                          {0xFFFFFFFF, true},
                                                                          {0x100000000, false},
                                                                          {0x100000001, false}}) {
    update.imageLength = length;
    EXPECT_EQ(update.PlanSteps(), fits) << length;
  }
}

TEST_F(A1LoadTest, AChipTypeBecomesTheMode) {
  A1Update update = MakeUpdate(64, 1000, "[Chip Info]\nChip Type=5\n");
  ASSERT_TRUE(update.LoadFiles());
  EXPECT_EQ(update.mode, 5U);
}

TEST_F(A1LoadTest, WithoutAChipTypeTheModeIsTwo) {
  A1Update update = MakeUpdate(64, 1000);
  ASSERT_TRUE(update.LoadFiles());
  EXPECT_EQ(update.mode, 2U);
}

TEST_F(A1LoadTest, ADescriptionThatCannotBeOpenedGoesOnToTheCheck) {
  folder.Write("TEMP1.BIN", Counting(64));
  A1Update unset(ConfigPath(), ImagePath());
  EXPECT_FALSE(unset.LoadFiles());
  EXPECT_EQ(unset.image, nullptr);  // no chip size: the check fails
  A1Update preset(ConfigPath(), ImagePath());
  preset.flash.chipSize = 1000;
  EXPECT_TRUE(preset.LoadFiles());
  EXPECT_EQ(preset.StepCount(), 3U);
}

TEST_F(A1LoadTest, ADescriptionThatIsAFolderOrFifoCannotBeOpened) {
  folder.Write("TEMP1.BIN", Counting(64));
  ASSERT_EQ(mkfifo(folder.Path("fifo").c_str(), 0600), 0);
  for (const std::string& path : {folder.Path(), folder.Path("fifo")}) {
    A1Update update(path, ImagePath());
    update.flash.chipSize = 1000;
    EXPECT_TRUE(update.LoadFiles()) << path;
  }
}

TEST_F(A1LoadTest, AnEmptyDescriptionGoesOnToTheCheck) {
  folder.Write("TEMP1.INI", "");
  folder.Write("TEMP1.BIN", Counting(64));
  A1Update unset(ConfigPath(), ImagePath());
  EXPECT_FALSE(unset.LoadFiles());
  A1Update preset(ConfigPath(), ImagePath());
  preset.flash.chipSize = 1000;
  EXPECT_TRUE(preset.LoadFiles());
}

TEST_F(A1LoadTest, ADescriptionThatFailsFailsTheLoad) {
  folder.Write("TEMP1.BIN", Counting(64));
  for (const auto line : {"key=1\n", "[Chip Info\n", "[Chip Info]\nChip Size\n",
                          "[Chip Info]\nChip Size=x\n", "[Other]\nkey=1\n"}) {
    folder.Write("TEMP1.INI", "[Chip Info]\nChip Size=1000\n[]\n" + std::string(line));
    A1Update update(ConfigPath(), ImagePath());
    EXPECT_FALSE(update.LoadFiles()) << line;
    EXPECT_EQ(update.image, nullptr);
    EXPECT_EQ(update.StepCount(), 0U);
  }
  EXPECT_THAT(log.lines, IsEmpty());
}

TEST_F(A1LoadTest, UnknownKeysAreLoggedAndTheLoadSucceeds) {
  A1Update update = MakeUpdate(64, 1000, "Speed=fast\n");
  EXPECT_TRUE(update.LoadFiles());
  EXPECT_THAT(log.lines, ElementsAre("Unknown:Speed"));
}

TEST_F(A1LoadTest, AnImageThatIsMissingEmptyOrNoFileFailsTheLoad) {
  A1Update missing = MakeUpdate(64, 1000);
  std::filesystem::remove(ImagePath());
  EXPECT_FALSE(missing.LoadFiles());
  EXPECT_FALSE(MakeUpdate(0, 1000).LoadFiles());
  for (const std::string& path : {folder.Path(), std::string("/dev/zero"), std::string()}) {
    A1Update update(ConfigPath(), path);
    EXPECT_FALSE(update.LoadFiles()) << path;
    EXPECT_EQ(update.StepCount(), 0U);
  }
}

TEST_F(A1LoadTest, AnImageThatDoesNotFitLeavesNoSteps) {
  A1Update update = MakeUpdate(1001, 1000);
  EXPECT_FALSE(update.LoadFiles());
  EXPECT_EQ(update.StepCount(), 0U);
}

}  // namespace
}  // namespace hollin
