// SPDX-License-Identifier: MIT
// What the reader of descriptions tells a listener beside what it skips and refuses, and where.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "updaters/description_file.h"

namespace hollin {
namespace {

using namespace std::string_literals;
using ::testing::ElementsAre;
using ::testing::FieldsAre;
using Remark = DescriptionRemark;

class DescriptionNotesTest : public ::testing::Test {
 protected:
  struct Note {
    Remark remark;
    size_t line, column;
    std::string text;
  };

  bool Read(std::string_view text) {
    notes.clear();
    return ReadDescription(
        text, {.comment = "//", .unknownSectionFails = false},
        {{"List", Numbers{list}},
         {"Any", AnyKey{any}},
         {"Flag", AnyKeyFlag{flag}},
         {"Text", WholeLine{text1}},
         {"Named", NamedKeys{{{"Number", number}, {"Name", name}}}},
         {"Cycles", Cycles{{}, list, other}}},
        [this](const DescriptionNote& note) {
          fields.push_back(note.field);
          lineTexts.emplace_back(note.lineText);
          if (note.remark == Remark::kHeader) return;
          notes.push_back({note.remark, note.line, note.Column(), std::string(note.text)});
        });
  }

  std::vector<uint32_t> list, other;
  uint32_t any = 0, number = 0;
  bool flag = false;
  std::string text1;
  std::optional<std::string> name;
  std::vector<Note> notes;
  std::vector<const void*> fields;
  std::vector<std::string> lineTexts;
};

TEST_F(DescriptionNotesTest, EveryValueIsToldWithItsPlace) {
  EXPECT_TRUE(
      Read("[List]\n 12\n[Any]\nx = 3\n[Flag]\n=1\n[Text]\nabc\n[Named]\n"
           "Number=0x10\n\tName = me \n[Cycles]\nAddr=5\n"));
  EXPECT_THAT(
      notes,
      ElementsAre(FieldsAre(Remark::kEntry, 2, 2, "12"), FieldsAre(Remark::kSetting, 4, 5, "3"),
                  FieldsAre(Remark::kSetting, 6, 2, "1"), FieldsAre(Remark::kText, 8, 1, "abc"),
                  FieldsAre(Remark::kSetting, 10, 8, "0x10"), FieldsAre(Remark::kText, 11, 9, "me"),
                  FieldsAre(Remark::kEntry, 13, 6, "5")));
}

TEST_F(DescriptionNotesTest, TheFieldOfAValueIsToldWithIt) {
  EXPECT_TRUE(Read("[Any]\n=3\n[Flag]\n=1\n[Cycles]\nData=5\n"));
  EXPECT_THAT(fields, ElementsAre(nullptr, &any, nullptr, &flag, nullptr, &other));
}

TEST_F(DescriptionNotesTest, HeadersAndWhatFollowsThemAreTold) {
  EXPECT_TRUE(Read(" [ List ] 0x10\n"));
  EXPECT_THAT(notes, ElementsAre(FieldsAre(Remark::kHeaderTail, 1, 11, "0x10")));
  EXPECT_THAT(lineTexts, ElementsAre("[ List ] 0x10", "[ List ] 0x10"));
}

TEST_F(DescriptionNotesTest, ColumnsCountCharactersOfThePhysicalLine) {
  EXPECT_FALSE(Read("[Any]\n\u00E4\u20AC=zz\n[Any]\nkey=x\n"));
  EXPECT_THAT(notes, ElementsAre(FieldsAre(Remark::kSetting, 2, 4, "zz"),
                                 FieldsAre(Remark::kBadNumber, 4, 5, "x")));
  const std::string blanks(200, ' ');
  EXPECT_FALSE(Read("[Any]\n" + blanks + "=x"));
  EXPECT_THAT(notes, ElementsAre(FieldsAre(Remark::kLongLine, 2, 1, ""),
                                 FieldsAre(Remark::kLongLine, 2, 100, ""),
                                 FieldsAre(Remark::kBadNumber, 2, 202, "x")));
}

TEST_F(DescriptionNotesTest, ALineWithoutItsSignIsPlacedAtItsBeginning) {
  EXPECT_FALSE(Read("[Any]\n  12\n"));
  EXPECT_THAT(notes, ElementsAre(FieldsAre(Remark::kNoEqualsSign, 2, 3, "")));
}

TEST_F(DescriptionNotesTest, ALineOfAnUnknownSectionIsPlacedAtItsBeginning) {
  EXPECT_TRUE(Read("[Other]\n  12\n"));
  EXPECT_THAT(notes, ElementsAre(FieldsAre(Remark::kUnknownSection, 2, 3, "Other")));
}

TEST_F(DescriptionNotesTest, ALineIsLongFrom100BytesOn) {
  for (const std::string end : {"\n", "\r\n", ""}) {
    EXPECT_TRUE(Read(";" + std::string(97, 'x') + end));
    EXPECT_THAT(notes, ElementsAre());
    EXPECT_TRUE(Read(";" + std::string(98, 'x') + end));
    EXPECT_THAT(notes, ElementsAre());
    EXPECT_TRUE(Read(";" + std::string(98, 'x') + ";" + end));
    EXPECT_THAT(notes, ElementsAre(FieldsAre(Remark::kLongLine, 1, 1, "")));
  }
}

TEST_F(DescriptionNotesTest, WhatIsNotTextIsTold) {
  EXPECT_TRUE(Read("[List]\n1\xFF\n"));
  EXPECT_THAT(notes, ElementsAre(FieldsAre(Remark::kNotUtf8, 2, 1, "")));
  EXPECT_TRUE(Read("[List]\n1\0002\n"s));
  EXPECT_THAT(notes, ElementsAre(FieldsAre(Remark::kNul, 2, 2, "\0002\n"s),
                                 FieldsAre(Remark::kEntry, 2, 1, "1")));
}

TEST_F(DescriptionNotesTest, EmptyLinesAndLineEndsBehind99BytesAreCounted) {
  for (const size_t length : {size_t{98}, size_t{99}, size_t{100}}) {
    for (const char* end : {"\n", "\r\n"}) {
      std::string text = "\n\n;" + std::string(length - 2, 'x') + ";";
      text.append(end).append("\n\n[List]\n\n 7\n");
      EXPECT_TRUE(Read(text));
      EXPECT_THAT(notes.back(), FieldsAre(Remark::kEntry, 8, 2, "7")) << length;
    }
  }
}

}  // namespace
}  // namespace hollin
