// SPDX-License-Identifier: MIT
// The text that tells a user which buttons to hold.
#include <gtest/gtest.h>

#include <algorithm>

#include "package/dat_file_examine.h"

namespace hollin {
namespace {

class NotConnectedMessageTest : public ::testing::Test {
 protected:
  NotConnectedMessageTest() { datFile.isFileReady = true; }

  std::string MessageFor(std::string_view first, std::string_view second, std::string_view third) {
    Put(first, datFile.key1);
    Put(second, datFile.key2);
    Put(third, datFile.key3);
    return datFile.NotConnectedMessage();
  }

  DatFileExamine datFile;

 private:
  static void Put(std::string_view name, std::array<char, 9>& key) {
    key = {};
    std::copy(name.begin(), name.end(), key.begin());
  }
};

TEST_F(NotConnectedMessageTest, WithoutAPackageNoButtonIsNamed) {
  datFile.isFileReady = false;
  EXPECT_EQ(MessageFor("A", "B", "C"), "The TS30 is not connected.");
}

TEST_F(NotConnectedMessageTest, WithoutNamesNoButtonIsNamed) {
  EXPECT_EQ(MessageFor("", "", ""), "The TS30 is not connected.");
}

TEST_F(NotConnectedMessageTest, OneName) {
  EXPECT_EQ(MessageFor("MENU", "", ""),
            "The TS30 is not connected. Please hold down the \"MENU\" \r\n buttons while powering "
            "on the TS30.");
}

TEST_F(NotConnectedMessageTest, TwoNames) {
  EXPECT_EQ(MessageFor("MENU", "EXIT", ""),
            "The TS30 is not connected. Please hold down the \"MENU\" and \"EXIT\" \r\n buttons "
            "while powering on the TS30.");
}

TEST_F(NotConnectedMessageTest, ThreeNames) {
  EXPECT_EQ(MessageFor("MENU", "EXIT", "FUNCTION"),
            "The TS30 is not connected. Please hold down the \"MENU\" + \"EXIT\" + \"FUNCTION\" "
            "\r\n buttons while powering on the TS30.");
}

TEST_F(NotConnectedMessageTest, AThirdNameAloneStillMakesTheMessageOfThree) {
  EXPECT_EQ(MessageFor("", "", "C"),
            "The TS30 is not connected. Please hold down the \"\" + \"\" + \"C\" \r\n buttons "
            "while powering on the TS30.");
}

TEST_F(NotConnectedMessageTest, ASecondNameAloneStillMakesTheMessageOfTwo) {
  EXPECT_EQ(MessageFor("", "B", ""),
            "The TS30 is not connected. Please hold down the \"\" and \"B\" \r\n buttons while "
            "powering on the TS30.");
}

TEST_F(NotConnectedMessageTest, AFirstByteOfZeroNamesNoButton) {
  EXPECT_EQ(MessageFor(std::string_view("\0ENU", 4), "", ""), "The TS30 is not connected.");
}

TEST_F(NotConnectedMessageTest, NamesAreTextAndNoFormat) {
  EXPECT_EQ(MessageFor("%@{}%s", "{0}", ""),
            "The TS30 is not connected. Please hold down the \"%@{}%s\" and \"{0}\" \r\n buttons "
            "while powering on the TS30.");
}

TEST_F(NotConnectedMessageTest, NamesAreUtf8AndNeverInvalid) {
  EXPECT_EQ(MessageFor("\u00c9t\u00e9", "\xC3(", ""),
            "The TS30 is not connected. Please hold down the \"\u00c9t\u00e9\" and \"\uFFFD(\" "
            "\r\n buttons while powering on the TS30.");
}

}  // namespace
}  // namespace hollin
