// SPDX-License-Identifier: MIT
// A C1 updater loads its description and its image, and checks and plans what it loaded.
#include <string>

#include "tests/support/temp_folder.h"
#include "tests/updaters/c1_test.h"

namespace hollin {
namespace {

constexpr const char* kDescription = R"([reserved sector]
0x20
[sector size]
bytes=32
)";

class C1UpdateLoadTest : public C1Test {
 protected:
  [[nodiscard]] bool Load(std::string_view text) {
    folder.Write("flash.ini", text);
    return loaded.LoadFiles();
  }

  TempFolder folder;
  C1Update loaded{folder.Path("flash.ini"), folder.Path("image.bin")};
};

TEST_F(C1UpdateLoadTest, LoadingReadsChecksAndPlans) {
  folder.Write("image.bin", Counting(70));
  ASSERT_TRUE(Load(kDescription));
  EXPECT_EQ(loaded.imageLength, 70);
  EXPECT_EQ(Bytes(loaded.image.get(), loaded.image.get() + 70), Counting(70));
  EXPECT_EQ(loaded.dataSectorCount, 3U);
  EXPECT_EQ(loaded.StepCount(), 5U);
  ASSERT_TRUE(loaded.EnterUpdateMode(5));
  EXPECT_EQ(keyboard.commands, (Messages{Hex("01 0A 4D 03"), Hex("0B 00 00 01 20 00 00")}));
}

TEST_F(C1UpdateLoadTest, WithoutADescriptionLoadingFails) {
  folder.Write("image.bin", Counting(70));
  EXPECT_FALSE(loaded.LoadFiles());
  EXPECT_EQ(loaded.StepCount(), 0U);
}

TEST_F(C1UpdateLoadTest, ADescriptionThatCannotBeReadKeepsTheImageUnread) {
  folder.Write("image.bin", Counting(70));
  EXPECT_FALSE(Load(std::string(kDescription) + "[line mode\n"));
  EXPECT_EQ(loaded.image, nullptr);
  EXPECT_EQ(loaded.flash.sectorSize, 32U);
}

TEST_F(C1UpdateLoadTest, AFlashWithoutAReservedSectorIsRefused) {
  folder.Write("image.bin", Counting(70));
  EXPECT_FALSE(Load("[sector size]\nbytes=32\n"));
  EXPECT_EQ(loaded.image, nullptr);
}

TEST_F(C1UpdateLoadTest, AReservedSectionWithoutALineIsRefused) {
  folder.Write("image.bin", Counting(70));
  EXPECT_FALSE(Load("[reserved sector]\n; none\n[sector size]\nbytes=32\n"));
}

TEST_F(C1UpdateLoadTest, AFileOfCommentsLoadsTheDefaultsAndIsRefused) {
  folder.Write("image.bin", Counting(70));
  EXPECT_FALSE(Load("; one\n\n// two\n"));
  EXPECT_EQ(loaded.flash.sectorSize, 65536U);
  EXPECT_EQ(loaded.image, nullptr);
}

TEST_F(C1UpdateLoadTest, OtherLineModesAreReadAndRefused) {
  folder.Write("image.bin", Counting(70));
  for (const std::string line : {"x=3", "mode=0"}) {
    C1Update other{folder.Path("flash.ini"), folder.Path("image.bin")};
    folder.Write("flash.ini", kDescription + ("[line mode]\n" + line));
    EXPECT_FALSE(other.LoadFiles());
    EXPECT_EQ(other.image, nullptr);
  }
  EXPECT_TRUE(Load(std::string(kDescription) + "[line mode]\nmode=4\n"));
}

TEST_F(C1UpdateLoadTest, WithoutAnImageLoadingFails) { EXPECT_FALSE(Load(kDescription)); }

TEST_F(C1UpdateLoadTest, AnEmptyImageFailsTheLoadBehindAGoodDescription) {
  folder.Write("image.bin", Bytes{});
  EXPECT_FALSE(Load(kDescription));
  EXPECT_EQ(loaded.flash.sectorSize, 32U);
}

TEST_F(C1UpdateLoadTest, ASectorSizeOf0FailsTheLoad) {
  folder.Write("image.bin", Counting(70));
  EXPECT_FALSE(Load(std::string(kDescription) + "bytes=0\n"));
}

TEST_F(C1UpdateLoadTest, AMillionLinesLoad) {
  constexpr uint32_t kReserved = 500000;
  constexpr uint32_t kUnknown = 500000;
  folder.Write("image.bin", Counting(70));
  std::string text = kDescription;
  text += "[reserved sector]\n";
  for (uint32_t i = 0; i < kReserved; i++) text += std::to_string(32 * (kReserved - i)) + "\n";
  text += "[Flash Modle]\n";
  for (uint32_t i = 0; i < kUnknown; i++) text += "x\n";
  ASSERT_TRUE(Load(text));
  EXPECT_EQ(loaded.flash.reservedSectors.size(), 1 + kReserved);
  EXPECT_EQ(log.lines, std::vector<std::string>(kUnknown, "Unknown:Flash Modle"));
  uint32_t sector = 99;
  EXPECT_TRUE(loaded.FindUnreservedSector(0, sector));
  EXPECT_EQ(sector, 0U);
  EXPECT_TRUE(loaded.FindUnreservedSector(1, sector));
  EXPECT_EQ(sector, kReserved + 1);
}

}  // namespace
}  // namespace hollin
