// SPDX-License-Identifier: MIT
// The two sections of an A1 description and their keys. The line grammar has tests of its own.
#include "updaters/a1_description.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "tests/support/recorded_log.h"

namespace hollin {
namespace {

using namespace std::string_view_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class A1DescriptionTest : public ::testing::Test {
 protected:
  // Reads into a fresh description.
  bool Read(std::string_view text) {
    flash = {};
    log.lines.clear();
    return flash.Read(text, LogUnknown);
  }
  bool ReadChip(std::string_view lines) { return Read("[Chip Info]\n" + std::string(lines)); }
  bool ReadTransmission(std::string_view lines) {
    return Read("[Transmission Info]\n" + std::string(lines));
  }

  A1Description flash;
  RecordedLog log;
};

TEST_F(A1DescriptionTest, DefaultsStandWhereNothingIsSaid) {
  EXPECT_TRUE(Read(""));
  EXPECT_EQ(flash.mode, 2U);
  EXPECT_EQ(flash.chipName, std::nullopt);
  EXPECT_EQ(flash.chipSize, 0U);
  EXPECT_EQ(flash.startAddress, 0U);
  EXPECT_EQ(flash.dataLength, 0U);
  EXPECT_EQ(flash.timeOver, 0U);
}

TEST_F(A1DescriptionTest, SectionsCarryTheirNames) {
  EXPECT_EQ(A1Description::chipSection, "Chip Info");
  EXPECT_EQ(A1Description::transmissionSection, "Transmission Info");
}

TEST_F(A1DescriptionTest, EveryKeyFillsItsField) {
  EXPECT_TRUE(
      Read("[Chip Info]\r\nChip Name = MX 29\r\nChip Type = 5\r\nChip Size = 0x100000\r\n"
           "[Transmission Info]\r\nStart Address = 4000H\r\nData Length = 64K\r\n"
           "Time Over = 1M\r\n"));
  EXPECT_EQ(flash.chipName, "MX 29");
  EXPECT_EQ(flash.mode, 5U);
  EXPECT_EQ(flash.chipSize, 0x100000U);
  EXPECT_EQ(flash.startAddress, 0x4000U);
  EXPECT_EQ(flash.dataLength, 65536U);
  EXPECT_EQ(flash.timeOver, 1024U);
  EXPECT_THAT(log.lines, IsEmpty());
}

TEST_F(A1DescriptionTest, SectionsAndKeysCompareWithoutRegardToCase) {
  EXPECT_TRUE(
      Read("[cHIP iNFO]\nCHIP NAME=a\nchip type=3\nChip size=4\n"
           "[TRANSMISSION INFO]\nSTART ADDRESS=15\ndata length=16\ntIME oVER=17\n"));
  EXPECT_EQ(flash.chipName, "a");
  EXPECT_EQ(flash.mode, 3U);
  EXPECT_EQ(flash.chipSize, 4U);
  EXPECT_EQ(flash.startAddress, 15U);
  EXPECT_EQ(flash.dataLength, 16U);
  EXPECT_EQ(flash.timeOver, 17U);
}

TEST_F(A1DescriptionTest, OtherLettersDoNotPassForThoseOfAName) {
  EXPECT_FALSE(Read("[Tran\u017Fmi\u017F\u017Fion Info]\nTime Over=1\n"));
  EXPECT_TRUE(ReadChip("Chip \u017Fize=5\n"));
  EXPECT_EQ(flash.chipSize, 0U);
  EXPECT_THAT(log.lines, ElementsAre("Unknown:Chip \u017Fize"));
}

TEST_F(A1DescriptionTest, SectionsMayComeInAnyOrderAndAgain) {
  EXPECT_TRUE(
      Read("[Transmission Info]\nTime Over=1\n[Chip Info]\nChip Size=12\n"
           "[Transmission Info]\nTime Over=13\n"));
  EXPECT_EQ(flash.chipSize, 12U);
  EXPECT_EQ(flash.timeOver, 13U);
}

TEST_F(A1DescriptionTest, TheLastOfSeveralLinesWins) {
  EXPECT_TRUE(ReadChip("Chip Size=1\nChip Size=2\nChip Name=a\nChip Name=b\n"));
  EXPECT_EQ(flash.chipSize, 2U);
  EXPECT_EQ(flash.chipName, "b");
}

TEST_F(A1DescriptionTest, KeyAndValueAreTrimmedAroundTheFirstEqualsSign) {
  EXPECT_TRUE(ReadChip("  Chip Name\u00A0=\u3000a = b ; c  \nChip Size\t=\t15\n"));
  EXPECT_EQ(flash.chipName, "a = b ; c");
  EXPECT_EQ(flash.chipSize, 15U);
}

TEST_F(A1DescriptionTest, AChipNameMayBeEmpty) {
  EXPECT_TRUE(ReadChip("Chip Name =\n"));
  EXPECT_EQ(flash.chipName, "");
}

TEST_F(A1DescriptionTest, UnknownKeysAreLoggedAndIgnored) {
  EXPECT_TRUE(ReadChip("Chip Colour = none at all\nChip Size=5\n=7\nChipSize=6\n"));
  EXPECT_EQ(flash.chipSize, 5U);
  EXPECT_THAT(log.lines, ElementsAre("Unknown:Chip Colour", "Unknown:", "Unknown:ChipSize"));
}

TEST_F(A1DescriptionTest, KeysOfTheOtherSectionAreUnknown) {
  EXPECT_TRUE(
      Read("[Chip Info]\nStart Address=1\nData Length=x\nTime Over=3\n"
           "[Transmission Info]\nChip Name=a\nChip Type=5\nChip Size=6\n"));
  EXPECT_EQ(flash.mode, 2U);
  EXPECT_EQ(flash.startAddress, 0U);
  EXPECT_THAT(log.lines,
              ElementsAre("Unknown:Start Address", "Unknown:Data Length", "Unknown:Time Over",
                          "Unknown:Chip Name", "Unknown:Chip Type", "Unknown:Chip Size"));
}

TEST_F(A1DescriptionTest, AnUnknownKeyIsOneLogLineWithoutControlCharacters) {
  EXPECT_TRUE(ReadChip("a\x1B[2J\u2028%n=1\n"));
  EXPECT_THAT(log.lines, ElementsAre("Unknown:a\\x1B[2J\\x2028%n"));
}

TEST_F(A1DescriptionTest, AKeyLineBeforeAnySectionFails) {
  EXPECT_FALSE(Read("Chip Size=5\n[Chip Info]\n"));
  EXPECT_FALSE(Read("\uFEFF[Chip Info]\nChip Size=5\n"));
  EXPECT_THAT(log.lines, IsEmpty());
}

TEST_F(A1DescriptionTest, AKeyLineInASectionNamedOtherwiseFails) {
  EXPECT_FALSE(Read("[Chip]\nChip Size=5\n"));
  EXPECT_FALSE(Read("[Chip Info]\nChip Size=5\n[Other]\nkey=1\n"));
  EXPECT_FALSE(Read("[]\nkey=1\n"));
  EXPECT_THAT(log.lines, IsEmpty());
}

TEST_F(A1DescriptionTest, ASectionNamedOtherwiseMayStandEmpty) {
  EXPECT_TRUE(Read("[Other]\n; nothing\n-- nothing\n\n[Chip Info]\nChip Size=5\n[Last]"));
  EXPECT_EQ(flash.chipSize, 5U);
}

TEST_F(A1DescriptionTest, ALineThatBeginsWithASemicolonOrTwoDashesIsIgnoredAnywhere) {
  EXPECT_TRUE(
      Read("; a\n-- b\n[Chip Info]\n;Chip Size=1\n  --Chip Size=2\nChip Size=3\n"
           "[Other]\n;c\n--d\n[Transmission Info]\n; e\n--[f\n"));
  EXPECT_EQ(flash.chipSize, 3U);
  EXPECT_THAT(log.lines, IsEmpty());
}

TEST_F(A1DescriptionTest, TwoSlashesAreNoComment) {
  EXPECT_FALSE(ReadChip("// a comment elsewhere\n"));
  EXPECT_TRUE(ReadChip("//Chip Size=1\n"));
  EXPECT_THAT(log.lines, ElementsAre("Unknown://Chip Size"));
}

TEST_F(A1DescriptionTest, AKeyLineWithoutAnEqualsSignFails) {
  EXPECT_FALSE(ReadChip("Chip Size 5\n"));
  EXPECT_FALSE(ReadTransmission("Time Over\n"));
  EXPECT_FALSE(ReadChip("-\n"));
}

TEST_F(A1DescriptionTest, ASectionHeaderWithoutItsBracketFails) {
  EXPECT_FALSE(Read("[Chip Info\nChip Size=5\n"));
  EXPECT_FALSE(Read("[Chip Info]\nChip Size=5\n[\n"));
}

TEST_F(A1DescriptionTest, AValueThatIsNoNumberFails) {
  for (const auto key : {"Chip Type", "Chip Size"}) {
    for (const auto value : {"", "x", "0x", "0x1G", "G1H"}) {
      EXPECT_FALSE(ReadChip(std::string(key) + "=" + value + "\n")) << key << "=" << value;
    }
  }
  for (const auto key : {"Start Address", "Data Length", "Time Over"}) {
    for (const auto value : {"", "x", "0x", "0x1G", "G1H"}) {
      EXPECT_FALSE(ReadTransmission(std::string(key) + "=" + value + "\n")) << key << "=" << value;
    }
  }
}

TEST_F(A1DescriptionTest, FieldsReadBeforeAFailureKeepTheirValues) {
  EXPECT_FALSE(ReadChip("Chip Type=7\nChip Size=x\nChip Name=a\n"));
  EXPECT_EQ(flash.mode, 7U);
  EXPECT_EQ(flash.chipName, std::nullopt);
}

TEST_F(A1DescriptionTest, LongLinesAreCutIntoPiecesOf99Bytes) {
  const auto padded = [](size_t length) { return ";" + std::string(length - 1, 'x'); };
  EXPECT_TRUE(ReadChip(padded(98) + "Chip Size=7\n"));
  EXPECT_THAT(log.lines, ElementsAre("Unknown:hip Size"));
  EXPECT_TRUE(ReadChip(padded(99) + "Chip Size=7\n"));
  EXPECT_EQ(flash.chipSize, 7U);
  EXPECT_TRUE(ReadChip(padded(100) + "Chip Size=7\n"));
  EXPECT_THAT(log.lines, ElementsAre("Unknown:xChip Size"));
}

TEST_F(A1DescriptionTest, ANulEndsAValue) {
  EXPECT_TRUE(Read("[Chip Info]\nChip Name=ab\0cd\nChip Size=12\0\0=\n\0Chip Type=9\n"sv));
  EXPECT_EQ(flash.chipName, "ab");
  EXPECT_EQ(flash.chipSize, 12U);
  EXPECT_EQ(flash.mode, 2U);
}

TEST_F(A1DescriptionTest, ALineThatIsNotUtf8CountsAsEmpty) {
  EXPECT_TRUE(ReadChip("Chip Name=\xFF\nChip Size=5\xC3\nChip Type=4\n"));
  EXPECT_EQ(flash.chipName, std::nullopt);
  EXPECT_EQ(flash.chipSize, 0U);
  EXPECT_EQ(flash.mode, 4U);
}

TEST_F(A1DescriptionTest, ANameIsKeptAsUtf8) {
  EXPECT_TRUE(ReadChip("Chip Name=\u00E9\U0001F3B9\n"));
  EXPECT_EQ(flash.chipName, "\u00E9\U0001F3B9");
}

}  // namespace
}  // namespace hollin
