// SPDX-License-Identifier: MIT
#include "base/text.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace hollin {
namespace {

using namespace std::string_view_literals;

// Every character with Unicode's property White_Space, which holds the line ends too.
const std::vector<std::string_view> kBlanks = {
    "\t",     "\n",     "\v",     "\f",     "\r",     " ",      "\u0085", "\u00A0", "\u1680",
    "\u2000", "\u2001", "\u2002", "\u2003", "\u2004", "\u2005", "\u2006", "\u2007", "\u2008",
    "\u2009", "\u200A", "\u2028", "\u2029", "\u202F", "\u205F", "\u3000"};

// Their neighbours, and what looks blank but is none.
const std::vector<std::string_view> kNoBlanks = {
    "\b",     "\x0E",   "\x1F",   "!",      "\u0084", "\u0086", "\u009F", "\u00A1",
    "\u167F", "\u1681", "\u180E", "\u1FFF", "\u200B", "\u2027", "\u202A", "\u202E",
    "\u2030", "\u205E", "\u2060", "\u2FFF", "\u3001", "\uFEFF", "\\"};

TEST(TrimTest, EveryUnicodeBlankIsTrimmedAtBothEnds) {
  for (const std::string_view blank : kBlanks) {
    const std::string text = std::string(blank) + "a b" + std::string(blank) + std::string(blank);
    EXPECT_EQ(Trim(text), "a b") << testing::PrintToString(blank);
    EXPECT_EQ(Trim(blank), "") << testing::PrintToString(blank);
  }
}

TEST(TrimTest, NothingElseIsTrimmed) {
  for (const std::string_view other : kNoBlanks) {
    const std::string text = std::string(other) + "a" + std::string(other);
    EXPECT_EQ(Trim(text), text) << testing::PrintToString(other);
  }
  EXPECT_EQ(Trim("\0a\0"sv), "\0a\0"sv);
}

TEST(TrimTest, BlanksInsideStay) { EXPECT_EQ(Trim(" a \u00A0 b "), "a \u00A0 b"); }

TEST(TrimTest, EmptyTextStaysEmpty) {
  EXPECT_EQ(Trim(""), "");
  EXPECT_EQ(Trim(" \r\n\u3000"), "");
  EXPECT_EQ(Trim({}), "");
}

TEST(TrimTest, LettersOfSeveralBytesStayWhole) {
  EXPECT_EQ(Trim(" \u00E0 "), "\u00E0");  // ends in the byte of a no-break space
  EXPECT_EQ(Trim("\U0001F3B9"), "\U0001F3B9");
  EXPECT_EQ(Trim("\u00C5"), "\u00C5");  // ends in the byte of a next-line character
}

TEST(TrimTest, TheAnswerPointsIntoTheText) {
  const std::string_view text = "  ab ";
  EXPECT_EQ(Trim(text).data(), text.data() + 2);
}

TEST(Utf8Test, OnlyWellFormedTextIsValid) {
  const std::vector<std::string_view> valid = {"",           "abc",     "\u00E9", "\uFFFD",
                                               "\U0010FFFF", "\uFEFF[", "\0"sv};
  for (const auto text : valid) EXPECT_TRUE(IsValidUtf8(text)) << testing::PrintToString(text);
  const std::vector<std::string_view> invalid = {"\x80",          // a continuation without a start
                                                 "\xC3",          // cut after one of two bytes
                                                 "\xE2\x82",      // cut after two of three
                                                 "\xF0\x9F\x8E",  // cut after three of four
                                                 "\xC0\xAF",      // longer than needed
                                                 "\xE0\x80\x80",  // likewise
                                                 "\xED\xA0\x80",  // half a surrogate pair
                                                 "\xF4\x90\x80\x80"  // beyond U+10FFFF
                                                 ,
                                                 "\xFF",
                                                 "a\xFE"};
  for (const auto text : invalid) EXPECT_FALSE(IsValidUtf8(text)) << testing::PrintToString(text);
}

TEST(CaseTest, AsciiLettersCompareWithoutRegardToCase) {
  EXPECT_TRUE(EqualsIgnoringCase("Chip Info", "cHIP iNFO"));
  EXPECT_TRUE(EqualsIgnoringCase("azAZ", "AZaz"));
  EXPECT_TRUE(EqualsIgnoringCase("", ""));
  EXPECT_FALSE(EqualsIgnoringCase("Chip Info", "Chip Inf"));
  EXPECT_FALSE(EqualsIgnoringCase("Chip Inf", "Chip Info"));
  EXPECT_FALSE(EqualsIgnoringCase("Chip Info", "Chip_Info"));
}

TEST(CaseTest, NeighboursOfTheLettersAreNotFolded) {
  EXPECT_FALSE(EqualsIgnoringCase("@", "`"));
  EXPECT_FALSE(EqualsIgnoringCase("[", "{"));
  EXPECT_FALSE(EqualsIgnoringCase("0", "P"));
}

TEST(CaseTest, OtherLettersAreNotFolded) {
  EXPECT_FALSE(EqualsIgnoringCase("k", "\u212A"));  // the Kelvin sign
  EXPECT_FALSE(EqualsIgnoringCase("s", "\u017F"));  // the long s
  EXPECT_FALSE(EqualsIgnoringCase("\u00E9", "\u00C9"));
  EXPECT_TRUE(EqualsIgnoringCase("\u00E9", "\u00E9"));
}

TEST(CaseTest, ContainingIsFoundAnywhereWithoutRegardToCase) {
  for (const std::string_view text : {"addr", "1ADDR", "Addr1", "xxaDdRyy", "adaddr"}) {
    EXPECT_TRUE(ContainsIgnoringCase(text, "addr")) << text;
  }
  for (const std::string_view text : {"", "add", "a ddr", "dda", "adda\u0072\u0301"}) {
    EXPECT_FALSE(ContainsIgnoringCase(text, "addr")) << text;
  }
  EXPECT_FALSE(ContainsIgnoringCase("addre\u017F\u017F", "ss"));
}

TEST(EscapeTest, ControlCharactersAreEscaped) {
  EXPECT_EQ(EscapeControlCharacters("a\nb\r\tc"), "a\\x0Ab\\x0D\\x09c");
  EXPECT_EQ(EscapeControlCharacters("\0"sv), "\\x00");
  EXPECT_EQ(EscapeControlCharacters("\x1B[31m"), "\\x1B[31m");
  EXPECT_EQ(EscapeControlCharacters("\x1F\x20\x7E\x7F"), "\\x1F ~\\x7F");
}

TEST(EscapeTest, LateControlsAndLineSeparatorsAreEscaped) {
  EXPECT_EQ(EscapeControlCharacters("\u0080\u009B\u009F\u00A0"), "\\x80\\x9B\\x9F\u00A0");
  EXPECT_EQ(EscapeControlCharacters("\u2027\u2028\u2029\u202A"), "\u2027\\x2028\\x2029\u202A");
}

TEST(EscapeTest, OrdinaryTextStays) {
  EXPECT_EQ(EscapeControlCharacters("100% %s %n \\x \u00E9\U0001F3B9"),
            "100% %s %n \\x \u00E9\U0001F3B9");
}

TEST(EscapeTest, InvalidBytesBecomeReplacementCharacters) {
  EXPECT_EQ(EscapeControlCharacters("a\xFF"
                                    "b"),
            "a\uFFFDb");
  EXPECT_EQ(EscapeControlCharacters("\xC3"), "\uFFFD");
  EXPECT_TRUE(IsValidUtf8(EscapeControlCharacters("\xE2\x82\xF0\x9F\xED\xA0\x80")));
}

TEST(FieldTest, AFieldEndsAtItsFirstNul) {
  EXPECT_EQ(TextOfField("TS30\0\0junk"sv), "TS30");
  EXPECT_EQ(TextOfField("TS30"), "TS30");
  EXPECT_EQ(TextOfField("\0TS30"sv), "");
  EXPECT_EQ(TextOfField(""), "");
}

TEST(FieldTest, InvalidBytesOfAFieldBecomeReplacementCharacters) {
  EXPECT_EQ(TextOfField("A\xFF\0"sv), "A\uFFFD");
}

}  // namespace
}  // namespace hollin
