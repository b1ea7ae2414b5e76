// SPDX-License-Identifier: MIT
// The line grammar of flash descriptions: pieces of 99 bytes, trimming, comments, headers.
#include "updaters/description_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "tests/support/recorded_log.h"

namespace hollin {
namespace {

using namespace std::string_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr DescriptionRemark kUnknownSection = DescriptionRemark::kUnknownSection;
constexpr DescriptionRemark kUnknownKey = DescriptionRemark::kUnknownKey;
constexpr DescriptionRemark kUnclosedHeader = DescriptionRemark::kUnclosedHeader;
constexpr DescriptionRemark kOutsideSections = DescriptionRemark::kOutsideSections;
constexpr DescriptionRemark kNoEqualsSign = DescriptionRemark::kNoEqualsSign;
constexpr DescriptionRemark kBadNumber = DescriptionRemark::kBadNumber;

class DescriptionFileTest : public ::testing::Test {
 protected:
  // Reads with a section "Lines" that keeps every line it is given.
  bool Read(std::string_view text) { return ReadWith(text, {{"Lines", WholeLine{last}}}); }

  bool ReadWith(std::string_view text, const std::vector<DescriptionSection>& sections) {
    return ReadDescription(text, grammar, sections, [this](const DescriptionNote& note) {
      if (note.remark == DescriptionRemark::kText) lines.emplace_back(note.text);
      if (!IsUnknown(note.remark) && !IsFatal(note.remark)) return;
      notes.push_back({note.remark, note.line, std::string(note.text)});
    });
  }

  // What description_notes_test.cpp does not look at.
  static bool IsUnknown(DescriptionRemark remark) {
    return remark == kUnknownSection || remark == kUnknownKey;
  }

  struct Note {
    DescriptionRemark remark;
    size_t line;
    std::string text;
    bool operator==(const Note& other) const {
      return remark == other.remark && line == other.line && text == other.text;
    }
  };

  DescriptionGrammar grammar{.comment = "--", .unknownSectionFails = true};
  std::string last;
  std::vector<std::string> lines;
  std::vector<Note> notes;
};

TEST_F(DescriptionFileTest, AnEmptyTextIsRead) {
  EXPECT_TRUE(Read(""));
  EXPECT_TRUE(Read("\n\r\n  \n"));
  EXPECT_THAT(lines, IsEmpty());
}

TEST_F(DescriptionFileTest, LinesAreTrimmed) {
  EXPECT_TRUE(Read("\t[Lines]\r\n  a b \t\r\n\u00A0c\u3000\u0085\n\u2028d\u2029\n"));
  EXPECT_THAT(lines, ElementsAre("a b", "c", "d"));
}

TEST_F(DescriptionFileTest, TheLastLineNeedsNoEnd) {
  EXPECT_TRUE(Read("[Lines]\na"));
  EXPECT_THAT(lines, ElementsAre("a"));
}

TEST_F(DescriptionFileTest, ACarriageReturnAloneEndsNoLine) {
  EXPECT_TRUE(Read("[Lines]\na\rb\n"));
  EXPECT_THAT(lines, ElementsAre("a\rb"));
}

TEST_F(DescriptionFileTest, CommentsBeginALineAnywhere) {
  EXPECT_TRUE(Read("; a\n -- b\n;[Other\n[Lines]\n;c\n\t--d\n--\n;\nend\n"));
  EXPECT_THAT(lines, ElementsAre("end"));
}

TEST_F(DescriptionFileTest, ACommentMarkLaterInALineIsPartOfIt) {
  EXPECT_TRUE(Read("[Lines]\na ; b\nc -- d\n- e\n-\n"));
  EXPECT_THAT(lines, ElementsAre("a ; b", "c -- d", "- e", "-"));
}

TEST_F(DescriptionFileTest, TheCommentMarkIsTheGrammars) {
  EXPECT_TRUE(Read("[Lines]\n// a\n"));
  grammar.comment = "//";
  EXPECT_TRUE(Read("[Lines]\n// b\n-- c\n/\n;d\n"));
  EXPECT_THAT(lines, ElementsAre("// a", "-- c", "/"));
}

TEST_F(DescriptionFileTest, SectionNamesAreTrimmedAndComparedWithoutCase) {
  EXPECT_TRUE(Read("[lINES]\na\n[ \t Lines\u00A0]\nb\n"));
  EXPECT_THAT(lines, ElementsAre("a", "b"));
}

TEST_F(DescriptionFileTest, WhatFollowsTheFirstBracketIsIgnored) {
  EXPECT_TRUE(Read("[Lines] ; c\na\n[Lines]]\nb\n[Lines] x=1 [Other]\nc\n"));
  EXPECT_THAT(lines, ElementsAre("a", "b", "c"));
}

TEST_F(DescriptionFileTest, AHeaderWithoutItsBracketFails) {
  EXPECT_FALSE(Read("[Lines]\na\n[Lines\nb\n"));
  EXPECT_THAT(lines, ElementsAre("a"));
  EXPECT_THAT(notes, ElementsAre(Note{kUnclosedHeader, 3, "[Lines"}));
  EXPECT_FALSE(Read("["));
  EXPECT_FALSE(Read("x\n[Lines]"));
}

TEST_F(DescriptionFileTest, ALineOutsideTheKnownSectionsFailsWhereTheGrammarSaysSo) {
  EXPECT_FALSE(Read("a\n[Lines]\nb\n"));
  EXPECT_FALSE(Read("[Other]\nc\n"));
  EXPECT_FALSE(Read("[]\nd\n"));
  EXPECT_THAT(lines, IsEmpty());
  EXPECT_THAT(notes, ElementsAre(Note{kOutsideSections, 1, ""}, Note{kOutsideSections, 2, "Other"},
                                 Note{kOutsideSections, 2, ""}));
}

TEST_F(DescriptionFileTest, ALineOutsideTheKnownSectionsIsNotedElsewhere) {
  grammar.unknownSectionFails = false;
  EXPECT_TRUE(Read("a\n[ Other ]\nb\nc\n[Lines]\nd\n"));
  EXPECT_THAT(lines, ElementsAre("d"));
  EXPECT_THAT(notes, ElementsAre(Note{kUnknownSection, 1, ""}, Note{kUnknownSection, 3, "Other"},
                                 Note{kUnknownSection, 4, "Other"}));
}

TEST_F(DescriptionFileTest, AnUnknownSectionWithoutLinesIsNothing) {
  EXPECT_TRUE(Read("[Other]\n;c\n\n[Lines]\na\n[Last]\n"));
  EXPECT_THAT(lines, ElementsAre("a"));
  EXPECT_THAT(notes, IsEmpty());
}

TEST_F(DescriptionFileTest, ALineOfNinetyNineBytesIsOnePiece) {
  for (const size_t length : {size_t{97}, size_t{98}, size_t{99}}) {
    lines.clear();
    EXPECT_TRUE(Read("[Lines]\n" + std::string(length, 'a') + "\nb\n"));
    EXPECT_THAT(lines, ElementsAre(std::string(length, 'a'), "b")) << length;
  }
}

TEST_F(DescriptionFileTest, ALineOfAHundredBytesIsTwoPieces) {
  EXPECT_TRUE(Read("[Lines]\n" + std::string(100, 'a') + "\nb\n"));
  EXPECT_THAT(lines, ElementsAre(std::string(99, 'a'), "a", "b"));
}

TEST_F(DescriptionFileTest, ALineOf150CharactersIsTwoPieces) {
  EXPECT_TRUE(Read("[Lines]\n" + std::string(99, 'a') + std::string(51, 'b') + "\n"));
  EXPECT_THAT(lines, ElementsAre(std::string(99, 'a'), std::string(51, 'b')));
}

TEST_F(DescriptionFileTest, AVeryLongLineIsManyPieces) {
  EXPECT_TRUE(Read("[Lines]\n" + std::string(99 * 1000 + 1, 'a')));
  EXPECT_EQ(lines.size(), 1001U);
}

// The rest of a long comment is a line of its own, whatever it says.
TEST_F(DescriptionFileTest, TheRestOfALongCommentIsNoComment) {
  EXPECT_TRUE(Read("[Lines]\n;" + std::string(98, 'x') + "rest\n"));
  EXPECT_THAT(lines, ElementsAre("rest"));
  EXPECT_TRUE(Read(";" + std::string(98, 'x') + "[Lines]\nb\n"));
  EXPECT_THAT(lines, ElementsAre("rest", "b"));
}

TEST_F(DescriptionFileTest, BlanksCountForThePiece) {
  EXPECT_TRUE(Read("[Lines]\n" + std::string(98, ' ') + "ab\n"));
  EXPECT_THAT(lines, ElementsAre("a", "b"));
}

TEST_F(DescriptionFileTest, ANulEndsItsPiece) {
  EXPECT_TRUE(Read("[Lines]\nab\0cd\ne\0\n\0f\ng\n"s));
  EXPECT_THAT(lines, ElementsAre("ab", "e", "g"));
}

TEST_F(DescriptionFileTest, BytesBehindANulStillFillThePiece) {
  EXPECT_TRUE(Read("[Lines]\na\0"s + std::string(97, 'x') + "rest\n"));
  EXPECT_THAT(lines, ElementsAre("a", "rest"));
}

TEST_F(DescriptionFileTest, BytesBehindANulNeedNotBeUtf8) {
  EXPECT_TRUE(Read("[Lines]\na\0\xFF\xFE\n"s));
  EXPECT_THAT(lines, ElementsAre("a"));
}

TEST_F(DescriptionFileTest, APieceThatIsNotUtf8CountsAsEmpty) {
  EXPECT_TRUE(Read("[Lines]\na\xFF\n\xC3\nb\n\xED\xA0\x80\n"));
  EXPECT_THAT(lines, ElementsAre("b"));
  EXPECT_THAT(notes, IsEmpty());
}

TEST_F(DescriptionFileTest, AHeaderThatIsNotUtf8StartsNoSection) {
  EXPECT_FALSE(Read("[Lines]\xFF\na\n"));
  EXPECT_TRUE(Read("[Lines]\nb\n[Other\xFF\nc\n"));
  EXPECT_THAT(lines, ElementsAre("b", "c"));
}

TEST_F(DescriptionFileTest, ACharacterCutByThePieceEmptiesBothSides) {
  const std::string e = "\u00E9";
  EXPECT_TRUE(Read("[Lines]\n" + std::string(97, 'a') + e + "b\n"));
  EXPECT_THAT(lines, ElementsAre(std::string(97, 'a') + e, "b"));
  lines.clear();
  EXPECT_TRUE(Read("[Lines]\n" + std::string(98, 'a') + e + "b\nc\n"));
  EXPECT_THAT(lines, ElementsAre("c"));
  lines.clear();
  EXPECT_TRUE(Read("[Lines]\n" + std::string(99, 'a') + e + "b\n"));
  EXPECT_THAT(lines, ElementsAre(std::string(99, 'a'), e + "b"));
}

TEST_F(DescriptionFileTest, AByteOrderMarkIsAnOrdinaryCharacter) {
  EXPECT_FALSE(Read("\uFEFF[Lines]\na\n"));
  EXPECT_THAT(notes, ElementsAre(Note{kOutsideSections, 1, ""}));
  EXPECT_TRUE(Read("[Lines]\n\uFEFF;a\n"));
  EXPECT_THAT(lines, ElementsAre("\uFEFF;a"));
}

TEST_F(DescriptionFileTest, NotesNameThePhysicalLine) {
  grammar.unknownSectionFails = false;
  EXPECT_TRUE(Read("\n" + std::string(150, 'a') + "\n;c\nb"));
  EXPECT_THAT(notes, ElementsAre(Note{kUnknownSection, 2, ""}, Note{kUnknownSection, 2, ""},
                                 Note{kUnknownSection, 4, ""}));
}

TEST_F(DescriptionFileTest, WithoutAListenerTheVerdictIsTheSame) {
  EXPECT_FALSE(ReadDescription("a", grammar, {}, {}));
  grammar.unknownSectionFails = false;
  EXPECT_TRUE(ReadDescription("a", grammar, {}, {}));
}

TEST_F(DescriptionFileTest, OfSeveralSectionsTheFirstThatMatchesReads) {
  uint32_t first = 0;
  uint32_t second = 0;
  EXPECT_TRUE(ReadWith("[S]\nx=5\n", {{"s", AnyKey{first}}, {"S", AnyKey{second}}}));
  EXPECT_EQ(first, 5U);
  EXPECT_EQ(second, 0U);
}

TEST_F(DescriptionFileTest, AnyKeyWantsAnEqualsSignAndANumber) {
  uint32_t field = 1;
  const std::vector<DescriptionSection> sections = {{"S", AnyKey{field}}};
  EXPECT_TRUE(ReadWith("[S]\nwhat ever = 64K\n= 12\n", sections));
  EXPECT_EQ(field, 12U);
  EXPECT_FALSE(ReadWith("[S]\n12\n", sections));
  EXPECT_FALSE(ReadWith("[S]\nkey=\n", sections));
  EXPECT_FALSE(ReadWith("[S]\nkey=0xZ\n", sections));
  EXPECT_THAT(notes, ElementsAre(Note{kNoEqualsSign, 2, ""}, Note{kBadNumber, 2, ""},
                                 Note{kBadNumber, 2, "0xZ"}));
}

TEST_F(DescriptionFileTest, WholeLineKeepsTheLastLine) {
  std::string field;
  EXPECT_TRUE(ReadWith("[S]\nfirst\nModel = X ;\n", {{"S", WholeLine{field}}}));
  EXPECT_EQ(field, "Model = X ;");
}

TEST_F(DescriptionFileTest, NumbersAreAppendedInTheOrderOfTheLines) {
  std::vector<uint32_t> list;
  EXPECT_TRUE(ReadWith("[S]\n0x20\n 10H \n5\n", {{"S", Numbers{list}}}));
  EXPECT_THAT(list, ElementsAre(0x20U, 0x10U, 5U));
  EXPECT_FALSE(ReadWith("[S]\n7\nx\n8\n", {{"S", Numbers{list}}}));
  EXPECT_THAT(list, ElementsAre(0x20U, 0x10U, 5U, 7U));
}

// A list that nobody hears of is read in a shorter way.
TEST_F(DescriptionFileTest, AListIsTheSameWhoeverListens) {
  const std::string text =
      "[S]\n7\n12\r\n 3\n4294967297\n;9\n5\0x\n0x1F\n2K\n10/\n\xFF"
      "8\n"s +
      std::string(98, '0') + "123\n[T]\n4\n[S]\n6";
  const auto listOf = [&](const DescriptionListener& listener) {
    std::vector<uint32_t> list;
    EXPECT_TRUE(ReadDescription(text, {.comment = "//"}, {{"S", Numbers{list}}}, listener));
    return list;
  };
  const RecordedLog log;
  for (const auto& listener : {DescriptionListener(), DescriptionListener(LogUnknown),
                               DescriptionListener([](const DescriptionNote& /*note*/) {})}) {
    EXPECT_THAT(listOf(listener), ElementsAre(7U, 12U, 3U, 1U, 5U, 31U, 2048U, 99U, 1U, 23U, 6U));
  }
  EXPECT_THAT(log.lines, ElementsAre("Unknown:T"));
}

TEST_F(DescriptionFileTest, AListThatNobodyHearsOfFailsAtWhatIsNoNumber) {
  std::vector<uint32_t> list;
  EXPECT_FALSE(
      ReadDescription("[S]\n12\n0x1G\n3\n", {.comment = "//"}, {{"S", Numbers{list}}}, {}));
  EXPECT_THAT(list, ElementsAre(12U));
}

TEST_F(DescriptionFileTest, RoomForAListIsMadeAtOnce) {
  std::vector<uint32_t> list;
  MakeRoom(list, "1\n2\n3");
  EXPECT_GE(list.capacity(), 3U);
  EXPECT_THAT(list, IsEmpty());
}

TEST_F(DescriptionFileTest, CyclesTakeNamedKeysThenAddressesThenData) {
  uint32_t count = 0;
  std::vector<uint32_t> addresses;
  std::vector<uint32_t> data;
  EXPECT_TRUE(ReadWith("[S]\nADDR3=3\nmy data=13\nCycles=2\nDataAddr=4\nFoo=oops\nDATA1=11\n",
                       {{"S", Cycles{{{"cycles", count}}, addresses, data}}}));
  EXPECT_EQ(count, 2U);
  EXPECT_THAT(addresses, ElementsAre(3U, 4U));
  EXPECT_THAT(data, ElementsAre(13U, 11U));
  EXPECT_THAT(notes, ElementsAre(Note{kUnknownKey, 6, "Foo"}));
}

TEST_F(DescriptionFileTest, LogUnknownWritesUnknownSectionsAndKeysOnly) {
  const RecordedLog log;
  LogUnknown({kUnknownSection, 1, "Other"});
  LogUnknown({kUnknownKey, 2, "Key%s\x1B"});
  for (const auto remark : {kUnclosedHeader, kOutsideSections, kNoEqualsSign, kBadNumber}) {
    LogUnknown({remark, 3, "text"});
  }
  EXPECT_THAT(log.lines, ElementsAre("Unknown:Other", "Unknown:Key%s\\x1B"));
}

}  // namespace
}  // namespace hollin
