// SPDX-License-Identifier: MIT
// An A2 updater loads its description and its image, and checks and plans what it loaded.
#include <string>

#include "tests/support/temp_folder.h"
#include "tests/updaters/a2_test.h"

namespace hollin {
namespace {

constexpr const char* kDescription = R"(; a flash of four small sectors
[Chip Type]
Type=7
[Flash Modle]
TS-8
[Reserved Sector]
0x108
[Block Size]
Words=4
[File Offset]
FileOffset=0
[Sector Erase Cycle]
EraseCycles=1
Addr1=0
Data1=0x30
[Program Cycle]
ProgramCycles=1
Addr1=0x555
Data1=0xA0
[Write Buffer Cycle]
WriteBufferCycles=0
[Program Buffer Cycle]
ProgramBufferCycles=0
[Sector Address List]
0x100
0x108
0x110
0x118
)";

class A2UpdateLoadTest : public A2Test {
 protected:
  [[nodiscard]] bool Load(std::string_view text) {
    folder.Write("flash.ini", text);
    return loaded.LoadFiles();
  }

  TempFolder folder;
  A2Update loaded{folder.Path("flash.ini"), folder.Path("image.bin")};
};

TEST_F(A2UpdateLoadTest, LoadingReadsChecksAndPlans) {
  folder.Write("image.bin", Counting(40));
  ASSERT_TRUE(Load(kDescription));
  EXPECT_EQ(loaded.imageLength, 40);
  EXPECT_EQ(Bytes(loaded.image.get(), loaded.image.get() + 40), Counting(40));
  EXPECT_EQ(loaded.checksum, 0x917C);
  EXPECT_EQ(loaded.plannedSectors, 3U);
  EXPECT_EQ(loaded.StepCount(), 5U);
  ASSERT_TRUE(loaded.RunStep(0));
  EXPECT_EQ(keyboard.commands[0], Hex("02 00 01 00 00 30 00"));
}

TEST_F(A2UpdateLoadTest, TheChipTypeGoesIntoTheModeCommand) {
  folder.Write("image.bin", Counting(40));
  ASSERT_TRUE(Load(kDescription));
  ASSERT_TRUE(loaded.EnterUpdateMode(5));
  EXPECT_EQ(keyboard.commands, Messages{Hex("01 0A 4D 07")});
}

TEST_F(A2UpdateLoadTest, WithoutADescriptionLoadingFails) {
  folder.Write("image.bin", Counting(40));
  EXPECT_FALSE(loaded.LoadFiles());
  EXPECT_EQ(loaded.StepCount(), 0U);
}

TEST_F(A2UpdateLoadTest, ADescriptionThatCannotBeReadKeepsTheImageUnread) {
  folder.Write("image.bin", Counting(40));
  EXPECT_FALSE(Load(std::string(kDescription) + "[Time\n"));
  EXPECT_EQ(loaded.image, nullptr);
}

TEST_F(A2UpdateLoadTest, ADescriptionThatIsRefusedKeepsTheImageUnread) {
  folder.Write("image.bin", Counting(40));
  EXPECT_FALSE(Load(std::string(kDescription) + "[Block Size]\nWords=4097\n"));
  EXPECT_EQ(loaded.image, nullptr);
}

TEST_F(A2UpdateLoadTest, AFileWithoutSectorAddressesIsReadButRefused) {
  folder.Write("image.bin", Counting(40));
  const std::string text = kDescription;
  EXPECT_FALSE(Load(text.substr(0, text.find("[Sector Address List]"))));
  EXPECT_EQ(loaded.flash.flashModel, "TS-8");
  EXPECT_EQ(loaded.image, nullptr);
}

TEST_F(A2UpdateLoadTest, WithoutAnImageLoadingFails) { EXPECT_FALSE(Load(kDescription)); }

TEST_F(A2UpdateLoadTest, AnEmptyImageFailsTheLoad) {
  folder.Write("image.bin", Bytes{});
  EXPECT_FALSE(Load(kDescription));
}

TEST_F(A2UpdateLoadTest, APlanThatFailsFailsTheLoad) {
  folder.Write("image.bin", Counting(65));
  EXPECT_FALSE(Load(kDescription));
  EXPECT_EQ(loaded.imageLength, 65);
}

TEST_F(A2UpdateLoadTest, AMillionLinesLoad) {
  constexpr uint32_t kSectors = 400000;
  constexpr uint32_t kReserved = 300000;
  constexpr uint32_t kUnknown = 300000;
  folder.Write("image.bin", Counting(40));
  std::string text = kDescription;
  for (uint32_t i = 1; i <= kSectors; i++) text += std::to_string(0x118 + 8 * i) + "\n";
  text += "[Reserved Sector]\n";
  for (uint32_t i = 0; i < kReserved; i++) text += std::to_string(0x110 + 8 * i) + "\n";
  text += "[Flash Model]\n";
  for (uint32_t i = 0; i < kUnknown; i++) text += "x\n";
  ASSERT_TRUE(Load(text));
  EXPECT_EQ(loaded.flash.sectorAddrs.size(), 4 + kSectors);
  EXPECT_EQ(loaded.flash.reservedSectors.size(), 1 + kReserved);
  EXPECT_EQ(log.lines, std::vector<std::string>(kUnknown, "Unknown:Flash Model"));
  EXPECT_EQ(loaded.StepCount(), 5U);
}

}  // namespace
}  // namespace hollin
