// SPDX-License-Identifier: MIT
// When a finding is made and when it is not, at the boundaries. That each is made at all, and its
// words, is held by the golden files.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <list>
#include <string>
#include <vector>

#include "package/package_inspection.h"
#include "package/package_writer.h"
#include "tests/support/hex_bytes.h"

namespace hollin {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

struct Pack {
  std::string type;
  std::string description;
  size_t imageSize = 100;
};

std::vector<Finding> FindingsOf(FindingCode code, const std::vector<Pack>& packs) {
  std::list<Bytes> images;  // which stay where they are
  PackageContents contents{
      .productModel = "TS30", .firmwareVersion = "2.0.1", .keys = {"Shift"}, .packs = {}};
  for (const Pack& pack : packs) {
    images.push_back(Counting(pack.imageSize));
    contents.packs.push_back({pack.type, ViewOf(pack.description), images.back()});
  }
  Bytes file;
  EXPECT_EQ(WritePackage(contents, file), PackRefusal::kNone);
  const PackageInspection inspection = InspectPackage(file);
  EXPECT_TRUE(inspection.isValid) << packs.front().description;
  std::vector<Finding> found;
  for (const Finding& finding : inspection.findings.All()) {
    if (finding.code == code) found.push_back(finding);
  }
  return found;
}

std::vector<Finding> FindingsOf(FindingCode code, const std::string& type,
                                const std::string& description, size_t imageSize) {
  return FindingsOf(code, {{type, description, imageSize}});
}

std::string A1(const std::string& dataLength) {
  return "[Chip Info]\nChip Size=0x100000\n[Transmission Info]\nData Length=" + dataLength + "\n";
}

std::vector<uint64_t> AnnouncedLengths(const std::string& dataLength, size_t imageSize) {
  std::vector<uint64_t> numbers;
  for (const Finding& finding :
       FindingsOf(FindingCode::kA1DataLengthAbove65536, "A1", A1(dataLength), imageSize)) {
    numbers.push_back(finding.number);
    numbers.push_back(finding.other);
  }
  return numbers;
}

TEST(A1BlockLengthTest, IsThatOfTheBlockAndNotOfTheDescription) {
  EXPECT_THAT(AnnouncedLengths("131072", 70000), ElementsAre(70000, 4464));
  EXPECT_THAT(AnnouncedLengths("131072", 200000), ElementsAre(131072, 0));
}

TEST(A1BlockLengthTest, IsFoundFrom65537BytesOn) {
  EXPECT_THAT(AnnouncedLengths("131072", 65535), IsEmpty());
  EXPECT_THAT(AnnouncedLengths("131072", 65536), IsEmpty());
  EXPECT_THAT(AnnouncedLengths("131072", 65537), ElementsAre(65537, 1));
  EXPECT_THAT(AnnouncedLengths("65536", 65537), IsEmpty());
}

// Sectors of 65536 words, one of them reserved, in blocks of as many.
std::string A2(const std::string& reserved) {
  return "[Flash Modle]\nx\n[Reserved Sector]\n" + reserved +
         "\n[Block Size]\nSize=65536\n[Sector Erase Cycle]\nEraseCycles=0\n"
         "[Program Cycle]\nProgramCycles=0\n[Write Buffer Cycle]\nWriteBufferCycles=0\n"
         "[Program Buffer Cycle]\nProgramBufferCycles=0\n"
         "[Sector Address List]\n0\n0x10000\n0x20000\n0x30000\n";
}

size_t LongBlocks(const std::string& reserved, size_t imageSize) {
  return FindingsOf(FindingCode::kA2BlockAnnouncedAsZero, "A2", A2(reserved), imageSize).size();
}

TEST(A2BlockAnnouncedAsZeroTest, CountsTheWordsThatTheImageHasForASector) {
  EXPECT_EQ(LongBlocks("0x30000", 131071), 0U);
  EXPECT_EQ(LongBlocks("0x30000", 131072), 1U);
  EXPECT_EQ(LongBlocks("0x30000", 131073), 1U);
}

TEST(A2BlockAnnouncedAsZeroTest, DoesNotCountReservedSectors) {
  EXPECT_EQ(LongBlocks("0", 131072), 0U);
  EXPECT_EQ(LongBlocks("0", 131072 + 131070), 0U);
  EXPECT_EQ(LongBlocks("0", 131072 + 131072), 1U);
}

size_t Tails(const std::string& type, const std::string& tail) {
  const std::string description = type == "A1" ? "[Chip Info]" + tail + "\nChip Size=64K\n"
                                               : "[Reserved Sector]" + tail + "\n0x10000\n";
  return FindingsOf(FindingCode::kHeaderTail, type, description, 100).size();
}

TEST(HeaderTailTest, ACommentOfThatKindMayFollowAHeader) {
  EXPECT_EQ(Tails("A1", " -- the chip"), 0U);
  EXPECT_EQ(Tails("A1", "; the chip"), 0U);
  EXPECT_EQ(Tails("C1", " // the boot sector"), 0U);
  EXPECT_EQ(Tails("C1", " ; the boot sector"), 0U);
}

TEST(HeaderTailTest, WhatIsNoCommentOfThatKindIsFound) {
  EXPECT_EQ(Tails("A1", " // the chip"), 1U);
  EXPECT_EQ(Tails("C1", " -- the boot sector"), 1U);
  EXPECT_EQ(Tails("C1", " 0x20000"), 1U);
}

size_t Starts(const std::string& start) {
  return FindingsOf(FindingCode::kA1StartAddress, "A1", A1("64K") + "Start Address=" + start + "\n",
                    100)
      .size();
}

TEST(A1StartAddressTest, IsFoundUnlessItIsZero) {
  EXPECT_EQ(Starts("0"), 0U);
  EXPECT_EQ(Starts("1"), 1U);
}

size_t AssumedSizes(const std::string& reserved, size_t imageSize) {
  return FindingsOf(FindingCode::kA2LastSectorSize, "A2", A2(reserved), imageSize).size();
}

TEST(A2LastSectorSizeTest, IsFoundWhereTheImageReachesTheLastSector) {
  EXPECT_EQ(AssumedSizes("0", size_t{3} * 131072 - 1), 0U);
  EXPECT_EQ(AssumedSizes("0", size_t{3} * 131072), 0U);
  EXPECT_EQ(AssumedSizes("0", size_t{3} * 131072 + 2), 1U);
}

TEST(A2LastSectorSizeTest, DoesNotMatterWhereThatSectorIsReserved) {
  EXPECT_EQ(AssumedSizes("0x30000", 3 * 131072 + 2), 0U);
}

size_t ForeignKeys(const std::string& lines) {
  return FindingsOf(FindingCode::kKeyOfOtherSection, "C1", "[Reserved Sector]\n0x10000\n" + lines,
                    100)
      .size();
}

TEST(KeyOfOtherSectionTest, IsOneThatNamesTheSettingOfAnotherSection) {
  EXPECT_EQ(ForeignKeys("[Line Mode]\nSPI Number=1\n"), 1U);
  EXPECT_EQ(ForeignKeys("[line mode]\nspinumber = 1\n"), 1U);
  EXPECT_EQ(ForeignKeys("[Line Mode]\nLine Mode=1\n"), 0U);
  EXPECT_EQ(ForeignKeys("[Line Mode]\nLines=1\n"), 0U);
}

size_t Unused(const std::string& lines) {
  return FindingsOf(FindingCode::kSettingWithoutEffect, "A2", lines + A2("0x30000"), 100).size();
}

TEST(SettingWithoutEffectTest, IsOneThatIsNotAsItIsWhenItIsNotGiven) {
  EXPECT_EQ(Unused("[Time]\nMaxWriteBack=999\n"), 1U);
  EXPECT_EQ(Unused("[Time]\nMaxWriteBack=1000\nMaxSectorEraseTime=3000\n"), 0U);
  EXPECT_EQ(Unused("[Flash Reset]\nResetAddr=0x3000\nResetData=0xF0\n"), 0U);
  EXPECT_EQ(Unused("[Flash Reset]\nResetAddr=0x3001\nResetData=0xF1\n"), 2U);
}

// Which of an A2's lists of cycles are missing.
std::vector<std::string> EmptyCycles(const std::string& lines) {
  std::vector<std::string> sections;
  for (const Finding& finding :
       FindingsOf(FindingCode::kA2CyclesEmpty, "A2", A2("0x30000") + lines, 100)) {
    sections.push_back(finding.text);
  }
  return sections;
}

TEST(A2CyclesEmptyTest, AreThoseThatTheWayOfWritingNeeds) {
  EXPECT_THAT(EmptyCycles(""), ElementsAre("Sector Erase Cycle", "Program Cycle"));
  EXPECT_THAT(EmptyCycles("[Write Modle]\nmode=1\n"),
              ElementsAre("Sector Erase Cycle", "Write Buffer Cycle", "Program Buffer Cycle"));
  EXPECT_THAT(EmptyCycles("[Program Cycle]\nProgramCycles=1\naddr=0\ndata=0\n"),
              ElementsAre("Sector Erase Cycle"));
}

bool IsSameFlash(const Pack& first, const Pack& second) {
  return !FindingsOf(FindingCode::kPacksSameFlash, {first, second}).empty();
}

TEST(PacksSameFlashTest, A1sHaveTheSameChip) {
  const auto chip = [](const std::string& type) {
    return Pack{.type = "A1",
                .description = "[Chip Info]\nChip Size=64K\nChip Type=" + type + "\n"};
  };
  EXPECT_TRUE(IsSameFlash(chip("5"), chip("5")));
  EXPECT_TRUE(IsSameFlash(chip("5"), chip("0x105")));  // the keyboard is told the low byte
  EXPECT_FALSE(IsSameFlash(chip("5"), chip("6")));
}

TEST(PacksSameFlashTest, A2sHaveTheSameChipAndSectorsInCommon) {
  const auto chip = [](const std::string& type, const std::string& sectors, size_t imageSize) {
    return Pack{.type = "A2",
                .description = "[Chip Type]\ntype=" + type + "\n" + A2("0xFF0000") + sectors,
                .imageSize = imageSize};
  };
  const std::string behind = "[Sector Address List]\n0x40000\n0x50000\n";
  const Pack low = chip("5", "", 100);
  const Pack whole = chip("5", behind, 131072 * 2);  // the sectors 0 and 0x10000
  EXPECT_TRUE(IsSameFlash(low, low));
  EXPECT_TRUE(IsSameFlash(low, chip("0x105", "", 100)));
  EXPECT_TRUE(IsSameFlash(low, whole));
  EXPECT_FALSE(IsSameFlash(low, chip("6", "", 100)));
}

TEST(PacksSameFlashTest, A2sOfOneChipMayFollowEachOther) {
  const auto from = [](const std::string& first, const std::string& next, size_t imageSize) {
    return Pack{.type = "A2",
                .description =
                    "[Flash Modle]\nx\n[Reserved Sector]\n0xFF0000\n"
                    "[Sector Erase Cycle]\nEraseCycles=0\n"
                    "[Program Cycle]\nProgramCycles=0\n"
                    "[Write Buffer Cycle]\nWriteBufferCycles=0\n"
                    "[Program Buffer Cycle]\nProgramBufferCycles=0\n"
                    "[Sector Address List]\n" +
                    first + "\n" + next + "\n0x70000\n",
                .imageSize = imageSize};
  };
  const Pack upper = from("0x10000", "0x20000", 100);
  EXPECT_FALSE(IsSameFlash(from("0", "0x10000", 131072), upper));
  EXPECT_TRUE(IsSameFlash(from("0", "0x10000", 131073), upper));
  EXPECT_FALSE(IsSameFlash(upper, from("0", "0x10000", 131072)));
  EXPECT_TRUE(IsSameFlash(upper, from("0", "0x10000", 131073)));
}

TEST(PacksSameFlashTest, C1sHaveTheSamePlace) {
  const auto chip = [](const std::string& number, const std::string& select) {
    return Pack{.type = "C1",
                .description = "[reserved sector]\n0xFF0000\n[spi number]\nn=" + number +
                               "\n[chip select number]\nn=" + select + "\n"};
  };
  EXPECT_TRUE(IsSameFlash(chip("1", "0"), chip("1", "0")));
  EXPECT_FALSE(IsSameFlash(chip("1", "0"), chip("0", "0")));
  EXPECT_FALSE(IsSameFlash(chip("1", "0"), chip("1", "1")));
}

TEST(PacksSameFlashTest, OtherKindsAreOtherFlashes) {
  const Pack a1{.type = "A1", .description = "[Chip Info]\nChip Size=64K\nChip Type=5\n"};
  const Pack a2{.type = "A2", .description = "[Chip Type]\ntype=5\n" + A2("0xFF0000")};
  const Pack c1{.type = "C1", .description = "[reserved sector]\n0xFF0000\n"};
  EXPECT_FALSE(IsSameFlash(a1, a2));
  EXPECT_FALSE(IsSameFlash(a2, c1));
  EXPECT_FALSE(IsSameFlash(c1, a1));
}

}  // namespace
}  // namespace hollin
