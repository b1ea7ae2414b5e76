// SPDX-License-Identifier: MIT
// The fourteen sections of an A2 description, and the lines in them.
#include "updaters/a2_description.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/recorded_log.h"

namespace hollin {
namespace {

using Numbers32 = std::vector<uint32_t>;
using Lines = std::vector<std::string>;

class A2DescriptionTest : public testing::Test {
 protected:
  [[nodiscard]] bool Read(std::string_view text) { return flash.Read(text, LogUnknown); }

  RecordedLog log;
  A2Description flash;
};

TEST_F(A2DescriptionTest, WhatIsNotMentionedKeepsItsDefault) {
  ASSERT_TRUE(Read("; nothing\n"));
  EXPECT_EQ(flash.mode, 1U);
  EXPECT_EQ(flash.flashModel, "");
  EXPECT_FALSE(flash.writeBufferMode);
  EXPECT_EQ(flash.blockSize, 4096U);
  EXPECT_EQ(flash.fileOffset, 0U);
  EXPECT_EQ(flash.maxWriteBack, 1000U);
  EXPECT_EQ(flash.maxSectorEraseTime, 2000U);
  EXPECT_EQ(flash.erasedValue, 0xFFFFU);
  EXPECT_EQ(flash.resetAddr, 0x3000U);
  EXPECT_EQ(flash.resetData, 0xF0U);
  EXPECT_EQ(flash.eraseCycleCount, 6U);
  EXPECT_EQ(flash.programCycleCount, 3U);
  EXPECT_EQ(flash.writeBufferCycleCount, 4U);
  EXPECT_EQ(flash.writeBufferCount, 0U);
  EXPECT_EQ(flash.writeBufferPA1, 3U);
  EXPECT_EQ(flash.writeBufferPA2, 0xFFU);
  EXPECT_EQ(flash.writeBufferSA1, 4U);
  EXPECT_EQ(flash.writeBufferSA2, 0xFFU);
  EXPECT_EQ(flash.programBufferCycleCount, 1U);
  EXPECT_EQ(flash.programBufferSA1, 1U);
  EXPECT_EQ(flash.programBufferSA2, 0xFFU);
  for (const Numbers32* list :
       {&flash.reservedSectors, &flash.eraseAddrs, &flash.eraseData, &flash.programAddrs,
        &flash.programData, &flash.writeBufferAddrs, &flash.writeBufferData,
        &flash.programBufferAddrs, &flash.programBufferData, &flash.sectorAddrs}) {
    EXPECT_TRUE(list->empty());
  }
  EXPECT_TRUE(log.lines.empty());
}

TEST_F(A2DescriptionTest, SectionsOfOneSettingTakeAnyKey) {
  ASSERT_TRUE(
      Read("[Chip Type]\nwhatever=0x41\n[Write Modle]\n=1\n[Block Size]\nx=2K\n"
           "[Data]\nErased=5A5AH\n"));
  EXPECT_EQ(flash.mode, 0x41U);
  EXPECT_TRUE(flash.writeBufferMode);
  EXPECT_EQ(flash.blockSize, 2048U);
  EXPECT_EQ(flash.erasedValue, 0x5A5AU);
}

TEST_F(A2DescriptionTest, TheWriteModleIsTrueForAnyNumberButZero) {
  ASSERT_TRUE(Read("[Write Modle]\nMode=256\n"));
  EXPECT_TRUE(flash.writeBufferMode);
  ASSERT_TRUE(Read("[Write Modle]\nMode=0\n"));
  EXPECT_FALSE(flash.writeBufferMode);
}

TEST_F(A2DescriptionTest, TheFlashModleIsTheWholeLineAndTheLastOneWins) {
  ASSERT_TRUE(Read("[Flash Modle]\nfirst\n  Modle = TS 8 ; beta  \n"));
  EXPECT_EQ(flash.flashModel, "Modle = TS 8 ; beta");
}

TEST_F(A2DescriptionTest, ListSectionsHoldOneNumberALineInTheOrderOfTheFile) {
  ASSERT_TRUE(Read("[Reserved Sector]\n0x20\n8\n8\n[Sector Address List]\n0\n8000H\n64K\n"));
  EXPECT_EQ(flash.reservedSectors, (Numbers32{0x20, 8, 8}));
  EXPECT_EQ(flash.sectorAddrs, (Numbers32{0, 0x8000, 0x10000}));
}

TEST_F(A2DescriptionTest, NamedKeysFillTheirFields) {
  ASSERT_TRUE(
      Read("[File Offset]\nFileOffset=16\n[Time]\nMaxWriteBack=1\nMaxSectorEraseTime=2\n"
           "[Flash Reset]\nResetAddr=3\nResetData=4\n"));
  EXPECT_EQ(flash.fileOffset, 16U);
  EXPECT_EQ(flash.maxWriteBack, 1U);
  EXPECT_EQ(flash.maxSectorEraseTime, 2U);
  EXPECT_EQ(flash.resetAddr, 3U);
  EXPECT_EQ(flash.resetData, 4U);
}

TEST_F(A2DescriptionTest, CycleSectionsFillTheirFieldsAndLists) {
  ASSERT_TRUE(
      Read("[Sector Erase Cycle]\nEraseCycles=10\nAddr1=11\nData1=12\n"
           "[Program Cycle]\nProgramCycles=20\nAddr1=21\nData1=22\n"
           "[Write Buffer Cycle]\nWriteBufferCycles=30\nWriteBufferCount=31\n"
           "WriteBufferPA1=32\nWriteBufferPA2=33\nWriteBufferSA1=34\nWriteBufferSA2=35\n"
           "Addr1=36\nData1=37\n"
           "[Program Buffer Cycle]\nProgramBufferCycles=40\nProgramBufferSA1=41\n"
           "ProgramBufferSA2=42\nAddr1=43\nData1=44\n"));
  EXPECT_EQ(flash.eraseCycleCount, 10U);
  EXPECT_EQ(flash.eraseAddrs, Numbers32{11});
  EXPECT_EQ(flash.eraseData, Numbers32{12});
  EXPECT_EQ(flash.programCycleCount, 20U);
  EXPECT_EQ(flash.programAddrs, Numbers32{21});
  EXPECT_EQ(flash.programData, Numbers32{22});
  EXPECT_EQ(flash.writeBufferCycleCount, 30U);
  EXPECT_EQ(flash.writeBufferCount, 31U);
  EXPECT_EQ(flash.writeBufferPA1, 32U);
  EXPECT_EQ(flash.writeBufferPA2, 33U);
  EXPECT_EQ(flash.writeBufferSA1, 34U);
  EXPECT_EQ(flash.writeBufferSA2, 35U);
  EXPECT_EQ(flash.writeBufferAddrs, Numbers32{36});
  EXPECT_EQ(flash.writeBufferData, Numbers32{37});
  EXPECT_EQ(flash.programBufferCycleCount, 40U);
  EXPECT_EQ(flash.programBufferSA1, 41U);
  EXPECT_EQ(flash.programBufferSA2, 42U);
  EXPECT_EQ(flash.programBufferAddrs, Numbers32{43});
  EXPECT_EQ(flash.programBufferData, Numbers32{44});
}

TEST_F(A2DescriptionTest, NamesOfSectionsAndKeysMatchInAnyCase) {
  ASSERT_TRUE(
      Read("[TIME]\nmaxwriteback=5\n[ chip type ]\nt=6\n[sector erase CYCLE]\n"
           "ERASECYCLES=7\n[FLASH MODLE]\nm\n"));
  EXPECT_EQ(flash.maxWriteBack, 5U);
  EXPECT_EQ(flash.mode, 6U);
  EXPECT_EQ(flash.eraseCycleCount, 7U);
  EXPECT_EQ(flash.flashModel, "m");
  EXPECT_TRUE(log.lines.empty());
}

TEST_F(A2DescriptionTest, HeadersThatSayModelAreUnknown) {
  ASSERT_TRUE(Read("[Flash Model]\nTS-8\n[Write Model]\nMode=1\n"));
  EXPECT_EQ(flash.flashModel, "");
  EXPECT_FALSE(flash.writeBufferMode);
  EXPECT_EQ(log.lines, (Lines{"Unknown:Flash Model", "Unknown:Write Model"}));
}

TEST_F(A2DescriptionTest, AKeyThatHoldsAddrIsAnAddressWhateverElseItHolds) {
  const Lines sections{"Sector Erase Cycle", "Program Cycle", "Write Buffer Cycle",
                       "Program Buffer Cycle"};
  for (const std::string& section : sections) {
    ASSERT_TRUE(Read("[" + section + "]\nDataADDR1=1\naddrData=2\nMyData=3\nDATA=4\nxAddr=5\n"));
  }
  for (const Numbers32* list : {&flash.eraseAddrs, &flash.programAddrs, &flash.writeBufferAddrs,
                                &flash.programBufferAddrs}) {
    EXPECT_EQ(*list, (Numbers32{1, 2, 5}));
  }
  for (const Numbers32* list :
       {&flash.eraseData, &flash.programData, &flash.writeBufferData, &flash.programBufferData}) {
    EXPECT_EQ(*list, (Numbers32{3, 4}));
  }
}

TEST_F(A2DescriptionTest, TheOrderOfTheLinesCountsAndNotTheNumbersInTheKeys) {
  ASSERT_TRUE(Read("[Program Cycle]\nAddr3=33\nAddr1=11\nAddr2=22\n"));
  EXPECT_EQ(flash.programAddrs, (Numbers32{33, 11, 22}));
}

TEST_F(A2DescriptionTest, UnknownKeysAreLoggedAndSkipped) {
  ASSERT_TRUE(
      Read("[Time]\nOther=x\n[File Offset]\nOffset=1\n[Flash Reset]\nReset=1\n"
           "[Sector Erase Cycle]\nProgramCycles=1\n[Program Cycle]\nCount = 1\n"));
  EXPECT_EQ(log.lines, (Lines{"Unknown:Other", "Unknown:Offset", "Unknown:Reset",
                              "Unknown:ProgramCycles", "Unknown:Count"}));
  EXPECT_EQ(flash.programCycleCount, 3U);
}

TEST_F(A2DescriptionTest, EachLineOfAnUnknownSectionIsLogged) {
  ASSERT_TRUE(Read("stray\n[Extra]\none\ntwo=x\n; three\n\n[Empty]\n"));
  EXPECT_EQ(log.lines, (Lines{"Unknown:", "Unknown:Extra", "Unknown:Extra"}));
}

TEST_F(A2DescriptionTest, CommentsStandAtTheStartOfTheTrimmedLineOnly) {
  ASSERT_TRUE(Read("[Reserved Sector]\n  ; 1\n\t// 2\n//\n;\n3\n"));
  EXPECT_EQ(flash.reservedSectors, Numbers32{3});
  ASSERT_TRUE(Read("[Flash Modle]\n/ one slash\n"));
  EXPECT_EQ(flash.flashModel, "/ one slash");
}

// "4" and what follows are digits, whatever they are: (((4 x 10 - 16) x 10 + 11) x 10 + 72).
TEST_F(A2DescriptionTest, ASemicolonBehindAValueBelongsToTheValue) {
  ASSERT_TRUE(Read("[Block Size]\nn=4 ;x\n"));
  EXPECT_EQ(flash.blockSize, 2582U);
  EXPECT_FALSE(Read("[Block Size]\nn=0x4 ; four\n"));
}

TEST_F(A2DescriptionTest, SomeLinesFailTheWholeLoad) {
  const Lines texts{"[Time\nMaxWriteBack=1\n",
                    "[",
                    "[Chip Type]\n5\n",
                    "[Write Modle]\n1\n",
                    "[Block Size]\n1\n",
                    "[File Offset]\nFileOffset\n",
                    "[Time]\nMaxWriteBack 5\n",
                    "[Data]\n0xFFFF\n",
                    "[Flash Reset]\nResetAddr\n",
                    "[Sector Erase Cycle]\nunknown\n",
                    "[Program Cycle]\nAddr1\n",
                    "[Write Buffer Cycle]\nData1\n",
                    "[Program Buffer Cycle]\n1\n",
                    "[Chip Type]\nt=x\n",
                    "[Write Modle]\nt=\n",
                    "[Time]\nMaxWriteBack=0x1G\n",
                    "[Program Cycle]\nAddr1=0x\n",
                    "[Program Cycle]\nData1=h\n",
                    "[Program Cycle]\nProgramCycles=\n",
                    "[Reserved Sector]\n0x1G\n",
                    "[Sector Address List]\nx\n"};
  for (const std::string& text : texts) EXPECT_FALSE(Read(text)) << text;
}

TEST_F(A2DescriptionTest, WhatFollowsAFailingLineIsNotRead) {
  EXPECT_FALSE(Read("[Reserved Sector]\n1\n[oops\n[Reserved Sector]\n2\n"));
  EXPECT_EQ(flash.reservedSectors, Numbers32{1});
}

TEST_F(A2DescriptionTest, AHeaderEndsAtItsFirstBracketAndTheRestIsIgnored) {
  ASSERT_TRUE(Read("[Time] MaxWriteBack=9 ]\nMaxWriteBack=5\n[Reserved Sector]]\n1\n"));
  EXPECT_EQ(flash.maxWriteBack, 5U);
  EXPECT_EQ(flash.reservedSectors, Numbers32{1});
}

TEST_F(A2DescriptionTest, AValueBeginsBehindTheFirstEqualsSign) {
  ASSERT_TRUE(Read("[Time]\n MaxWriteBack = 12 \n"));
  EXPECT_EQ(flash.maxWriteBack, 12U);
  EXPECT_FALSE(Read("[Time]\nMaxWriteBack=0x=1\n"));
}

TEST_F(A2DescriptionTest, ALineOf150CharactersIsReadAsTwo) {
  ASSERT_TRUE(
      Read("[Reserved Sector]\n" + std::string(98, '0') + "7" + std::string(49, '0') + "11\n5\n"));
  EXPECT_EQ(flash.reservedSectors, (Numbers32{7, 11, 5}));
}

TEST_F(A2DescriptionTest, ALineOf99CharactersIsOneLine) {
  for (const size_t length : {98U, 99U, 100U}) {
    flash = {};
    ASSERT_TRUE(Read("[Reserved Sector]\n" + std::string(length - 1, '0') + "7\n5\n"));
    const Numbers32 expected = length == 100 ? Numbers32{0, 7, 5} : Numbers32{7, 5};
    EXPECT_EQ(flash.reservedSectors, expected) << length;
  }
}

TEST_F(A2DescriptionTest, ALineThatIsNotUtf8CountsAsEmpty) {
  ASSERT_TRUE(Read("[Reserved Sector]\n\xFF\n1\n\xC3(\n[Time\xFF\n2\n"));
  EXPECT_EQ(flash.reservedSectors, (Numbers32{1, 2}));
}

// The 99th byte is the first half of a character: neither piece is text.
TEST_F(A2DescriptionTest, ALineCutInsideACharacterCountsAsEmpty) {
  ASSERT_TRUE(Read("[Flash Modle]\nkept\n" + std::string(98, 'a') + "\xC3\xA9 tail\n"));
  EXPECT_EQ(flash.flashModel, "kept");
}

TEST_F(A2DescriptionTest, ANulEndsItsLine) {
  using std::string_literals::operator""s;
  ASSERT_TRUE(Read("[Reserved Sector]\n12\0 34\n\0 9\n5\n"s));
  EXPECT_EQ(flash.reservedSectors, (Numbers32{12, 5}));
}

TEST_F(A2DescriptionTest, CarriageReturnsAndAMissingLastLineEndDoNotMatter) {
  ASSERT_TRUE(Read("[Reserved Sector]\r\n12\r\n34"));
  EXPECT_EQ(flash.reservedSectors, (Numbers32{12, 34}));
}

}  // namespace
}  // namespace hollin
