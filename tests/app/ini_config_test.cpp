// SPDX-License-Identifier: MIT
#include "app/ini_config.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "tests/support/temp_folder.h"

namespace hollin {
namespace {

class IniConfigTest : public ::testing::Test {
 protected:
  // What a file of this text has under a key; "(default)" where it sets none.
  std::string ValueIn(std::string_view text, const std::string& key = "key") {
    return ValueAt(folder.Write("Config.ini", text), key);
  }

  static std::string ValueAt(const std::string& path, const std::string& key = "key") {
    return IniConfig(path)._getValueByKey(key, "(default)");
  }

  TempFolder folder;
};

TEST_F(IniConfigTest, ALineSetsAKey) {
  EXPECT_EQ(ValueIn("IDC_VID=0x1234\nIDC_PID=0xABCD", "IDC_VID"), "0x1234");
  EXPECT_EQ(ValueIn("IDC_VID=0x1234\nIDC_PID=0xABCD", "IDC_PID"), "0xABCD");
}

TEST_F(IniConfigTest, AKeyThatIsNotSetHasItsDefault) {
  EXPECT_EQ(ValueIn("other=1\n"), "(default)");
  EXPECT_EQ(ValueIn(""), "(default)");
}

TEST_F(IniConfigTest, WithoutAFileEveryKeyHasItsDefault) {
  EXPECT_EQ(ValueAt(folder.Path("Config.ini")), "(default)");
}

TEST_F(IniConfigTest, ACommentAndTheBlanksBeforeItAreNoPartOfAValue) {
  EXPECT_EQ(ValueIn("IDC_VID = 0x1234 \t ; the maker's\n", "IDC_VID"), "0x1234");
}

TEST_F(IniConfigTest, ALineThatBeginsWithTheEqualsSignIsSkipped) {
  EXPECT_EQ(ValueIn("=value\n", ""), "(default)");
  EXPECT_EQ(ValueIn("  =value\n", ""), "(default)");
}

TEST_F(IniConfigTest, ALineThatEndsWithTheEqualsSignIsSkipped) {
  EXPECT_EQ(ValueIn("key=\n"), "(default)");
  EXPECT_EQ(ValueIn("key=  \r\n"), "(default)");  // trimmed before it is looked at
  EXPECT_EQ(ValueIn("key=;note\n"), "(default)");
  EXPECT_EQ(ValueIn("key=1\nkey=\n"), "1");
}

TEST_F(IniConfigTest, AValueOfBlanksBeforeACommentIsEmptyAndNotTheDefault) {
  EXPECT_EQ(ValueIn("IDC_PID= ;note\n", "IDC_PID"), "");
}

TEST_F(IniConfigTest, KeysCompareWithRegardToCase) {
  EXPECT_EQ(ValueIn("idc_vid=0x1234\n", "IDC_VID"), "(default)");
  EXPECT_EQ(ValueIn("idc_vid=0x1234\n", "idc_vid"), "0x1234");
}

TEST_F(IniConfigTest, AValueIsCutAtItsFirstSemicolon) {
  EXPECT_EQ(ValueIn("key=one;two;three\n"), "one");
}

TEST_F(IniConfigTest, ALineThatBeginsWithASemicolonIsAComment) {
  EXPECT_EQ(ValueIn(";key=1\n"), "(default)");
  EXPECT_EQ(ValueIn("  ; key=1\n", "; key"), "(default)");
}

TEST_F(IniConfigTest, ASemicolonBeforeTheEqualsSignHidesIt) {
  EXPECT_EQ(ValueIn("key;=1\n"), "(default)");
}

TEST_F(IniConfigTest, SectionHeadersAreSkippedAndTheirKeysStored) {
  EXPECT_EQ(ValueIn("[Device]\nkey=1\n[Other]\n"), "1");
  EXPECT_EQ(ValueIn("[Device]\nkey=1\n", "[Device]"), "(default)");
}

TEST_F(IniConfigTest, ALaterLineReplacesAnEarlierOne) {
  EXPECT_EQ(ValueIn("key=1\nkey=2\n"), "2");
  EXPECT_EQ(ValueIn("key=1\nkey= ;\n"), "");
}

TEST_F(IniConfigTest, OnlyTheFirstEqualsSignSeparates) {
  EXPECT_EQ(ValueIn("key=a=b\n"), "a=b");
  EXPECT_EQ(ValueIn("key==\n"), "=");
}

TEST_F(IniConfigTest, KeysAndValuesAreTrimmed) {
  EXPECT_EQ(ValueIn(" \t key \t = \t a b \t \n"), "a b");
  EXPECT_EQ(ValueIn("\u00A0key\u2003=\u3000value\u2028\n"), "value");
}

TEST_F(IniConfigTest, LinesMayEndInCrLf) {
  EXPECT_EQ(ValueIn("first=1\r\nkey=2\r\nlast=3\r\n"), "2");
  EXPECT_EQ(ValueIn("first=1\r\nkey=2\r\nlast=3", "last"), "3");
}

TEST_F(IniConfigTest, ACarriageReturnAloneEndsNoLine) {
  EXPECT_EQ(ValueIn("key=1\rother=2\n"), "1\rother=2");
}

TEST_F(IniConfigTest, AByteOrderMarkIsAnOrdinaryCharacter) {
  EXPECT_EQ(ValueIn("\uFEFFkey=1\nnext=2\n"), "(default)");
  EXPECT_EQ(ValueIn("\uFEFFkey=1\nnext=2\n", "\uFEFFkey"), "1");
  EXPECT_EQ(ValueIn("\uFEFFkey=1\nnext=2\n", "next"), "2");
}

TEST_F(IniConfigTest, ANulIsAnOrdinaryCharacter) {
  using std::string_literals::operator""s;
  EXPECT_EQ(ValueIn("key=a\0b\nnext=2\n"s), "a\0b"s);
  EXPECT_EQ(ValueIn("key=a\0b\nnext=2\n"s, "next"), "2");
}

TEST_F(IniConfigTest, ValuesAreUtf8) {
  EXPECT_EQ(ValueIn("key=Klavier \u00FC \U0001F3B9\n"), "Klavier \u00FC \U0001F3B9");
}

TEST_F(IniConfigTest, AFileThatIsNotUtf8AnywhereSetsNothing) {
  for (const char* invalid :
       {"\xFF", "\xC3(", "\xED\xA0\x80", "\xC0\xAF", "\xF5\x80\x80\x80", "\xE2\x82"}) {
    EXPECT_EQ(ValueIn(std::string("key=1\n;") + invalid), "(default)");
  }
  EXPECT_EQ(ValueIn("key=1\n;\xE2\x82\xAC"), "1");
}

TEST_F(IniConfigTest, WhatIsNoRegularFileSetsNothingAndIsNotWaitedFor) {
  ASSERT_EQ(mkfifo(folder.Path("fifo").c_str(), 0600), 0);
  EXPECT_EQ(ValueAt(folder.Path("fifo")), "(default)");
  EXPECT_EQ(ValueAt(folder.Path()), "(default)");
  EXPECT_EQ(ValueAt("/dev/zero"), "(default)");
  EXPECT_EQ(ValueAt(""), "(default)");
}

TEST_F(IniConfigTest, ALinkIsFollowed) {
  std::filesystem::create_symlink(folder.Write("target", "key=1"), folder.Path("link"));
  EXPECT_EQ(ValueAt(folder.Path("link")), "1");
}

TEST_F(IniConfigTest, AFileBeyondFourMebibytesSetsNothing) {
  constexpr size_t kLimit = size_t{4} << 20;
  for (const size_t size : {kLimit - 1, kLimit, kLimit + 1}) {
    std::string text = "key=1\n";
    text.resize(size, ' ');
    EXPECT_EQ(ValueIn(text), size <= kLimit ? "1" : "(default)") << size;
  }
}

TEST_F(IniConfigTest, TheFileIsReadOnce) {
  const IniConfig config(folder.Write("Config.ini", "key=1\n"));
  folder.Write("Config.ini", "key=2\n");
  EXPECT_EQ(config._getValueByKey("key", ""), "1");
}

}  // namespace
}  // namespace hollin
