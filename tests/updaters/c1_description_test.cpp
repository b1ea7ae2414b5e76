// SPDX-License-Identifier: MIT
// The five sections of a C1 description, and the lines in them.
#include "updaters/c1_description.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/recorded_log.h"

namespace hollin {
namespace {

using Numbers32 = std::vector<uint32_t>;
using Lines = std::vector<std::string>;

class C1DescriptionTest : public testing::Test {
 protected:
  [[nodiscard]] bool Read(std::string_view text) { return flash.Read(text, LogUnknown); }

  RecordedLog log;
  C1Description flash;
};

TEST_F(C1DescriptionTest, WhatIsNotMentionedKeepsItsDefault) {
  ASSERT_TRUE(Read("; nothing\n\n// at all\n"));
  EXPECT_TRUE(flash.reservedSectors.empty());
  EXPECT_EQ(flash.lineMode, 1U);
  EXPECT_EQ(flash.spiNumber, 0U);
  EXPECT_EQ(flash.chipSelectNumber, 0U);
  EXPECT_EQ(flash.sectorSize, 65536U);
  EXPECT_TRUE(log.lines.empty());
}

TEST_F(C1DescriptionTest, EachSectionFillsItsSettingWhateverTheKey) {
  ASSERT_TRUE(
      Read("[line mode]\nx=4\n[spi number]\n=1\n[chip select number]\na b = 2\n"
           "[sector size]\nsize=4K\n[reserved sector]\n0x0\n"));
  EXPECT_EQ(flash.lineMode, 4U);
  EXPECT_EQ(flash.spiNumber, 1U);
  EXPECT_EQ(flash.chipSelectNumber, 2U);
  EXPECT_EQ(flash.sectorSize, 4096U);
  EXPECT_EQ(flash.reservedSectors, Numbers32{0});
}

TEST_F(C1DescriptionTest, SectionNamesMatchInAnyCase) {
  for (const std::string name : {"line mode", "Line Mode", "LINE MODE", "  lInE mOdE "}) {
    flash = {};
    ASSERT_TRUE(Read("[" + name + "]\nmode=2\n"));
    EXPECT_EQ(flash.lineMode, 2U) << name;
  }
}

TEST_F(C1DescriptionTest, ReservedSectorsKeepTheirOrderAndDuplicates) {
  ASSERT_TRUE(
      Read("[reserved sector]\n0x20000\n64K\n0x20000\n[line mode]\n[reserved sector]\n5\n"));
  EXPECT_EQ(flash.reservedSectors, (Numbers32{0x20000, 0x10000, 0x20000, 5}));
}

TEST_F(C1DescriptionTest, OfSeveralLinesTheLastWins) {
  ASSERT_TRUE(Read("[line mode]\na=1\nb=2\n[spi number]\n[line mode]\nc=4\n"));
  EXPECT_EQ(flash.lineMode, 4U);
}

TEST_F(C1DescriptionTest, LinesOfUnknownSectionsLeaveOneLogLineEach) {
  ASSERT_TRUE(Read("stray\n[Flash Modle]\nTS-8\nx=y\n; comment\n[line modes]\nx=2\n"));
  EXPECT_EQ(log.lines, (Lines{"Unknown:", "Unknown:Flash Modle", "Unknown:Flash Modle",
                              "Unknown:line modes"}));
  EXPECT_EQ(flash.lineMode, 1U);
}

TEST_F(C1DescriptionTest, SomeLinesFailTheWholeLoad) {
  const Lines texts{"[line mode\nx=1\n",
                    "[",
                    "[line mode]\n1\n",
                    "[spi number]\n1\n",
                    "[chip select number]\n1\n",
                    "[sector size]\n65536\n",
                    "[line mode]\nx=\n",
                    "[spi number]\nx=y\n",
                    "[chip select number]\nx=0x\n",
                    "[sector size]\nx=0x1G\n",
                    "[sector size]\nx=0x1=2\n",
                    "[reserved sector]\nx\n",
                    "[reserved sector]\n0x2Z\n"};
  for (const std::string& text : texts) EXPECT_FALSE(Read(text)) << text;
}

TEST_F(C1DescriptionTest, ValuesReadBeforeAFailureStay) {
  EXPECT_FALSE(Read("[line mode]\nx=4\n[oops\n[spi number]\nx=1\n"));
  EXPECT_EQ(flash.lineMode, 4U);
  EXPECT_EQ(flash.spiNumber, 0U);
}

// "addr=0x0" begins with no "0x": every character is a digit, whatever it is.
TEST_F(C1DescriptionTest, AReservedLineGoesWholeToTheNumberParser) {
  ASSERT_TRUE(Read("[reserved sector]\na=0x0\n"));
  // ((((49 x 10 + 13) x 10 + 0) x 10 + 72) x 10 + 0)
  EXPECT_EQ(flash.reservedSectors, Numbers32{503720});
  ASSERT_TRUE(Read("[reserved sector]\naddr=0x0\n"));
  EXPECT_EQ(flash.reservedSectors.size(), 2U);
}

// (((4 x 10 - 16) x 10 + 11) x 10 + 72)
TEST_F(C1DescriptionTest, ASemicolonBehindAValueBelongsToTheValue) {
  ASSERT_TRUE(Read("[line mode]\nn=4 ;x\n"));
  EXPECT_EQ(flash.lineMode, 2582U);
  EXPECT_FALSE(Read("[line mode]\nn=0x4 ; four lines\n"));
}

TEST_F(C1DescriptionTest, WhatFollowsAHeadersBracketIsIgnored) {
  ASSERT_TRUE(Read("[line mode] x=4 ]\nx=2\n"));
  EXPECT_EQ(flash.lineMode, 2U);
}

TEST_F(C1DescriptionTest, CommentsStandAtTheStartOfTheTrimmedLine) {
  ASSERT_TRUE(Read("[line mode]\n \t; x\n  // y\nx=2 // two\n"));
  EXPECT_NE(flash.lineMode, 1U);  // a number, whatever it says
  EXPECT_FALSE(Read("[line mode]\n-- x\n"));
}

TEST_F(C1DescriptionTest, ALineOf150CharactersIs99AndThen51) {
  ASSERT_TRUE(
      Read("[reserved sector]\n" + std::string(98, '0') + "7" + std::string(49, '0') + "11\n5\n"));
  EXPECT_EQ(flash.reservedSectors, (Numbers32{7, 11, 5}));
}

TEST_F(C1DescriptionTest, ALineThatIsNotUtf8CountsAsEmpty) {
  ASSERT_TRUE(Read("[reserved sector]\n\xFF\n1\n"));
  EXPECT_EQ(flash.reservedSectors, Numbers32{1});
}

}  // namespace
}  // namespace hollin
