// SPDX-License-Identifier: MIT
#include "cli/words.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace hollin::words {
namespace {

using ::testing::ElementsAre;

TEST(WordsTest, TheMessageAboutTheButtonsHasTwoLines) {
  EXPECT_THAT(LinesOfNotConnected("The TS30 is not connected. Please hold down the \"A\" \r\n "
                                  "buttons while powering on the TS30."),
              ElementsAre("The TS30 is not connected. Please hold down the \"A\"",
                          "buttons while powering on the TS30."));
}

TEST(WordsTest, ALineEndInTheNameOfAButtonMakesNoLine) {
  EXPECT_THAT(LinesOfNotConnected("hold \"a \r\n b\" \r\n buttons"),
              ElementsAre("hold \"a \r\n b\"", "buttons"));
}

TEST(WordsTest, TheShortMessageHasOneLine) {
  EXPECT_THAT(LinesOfNotConnected("The TS30 is not connected."),
              ElementsAre("The TS30 is not connected."));
}

TEST(WordsTest, EveryRefusalHasItsOwnWords) {
  EXPECT_EQ(OfRefusal(PackRefusal::kNone), "");
  std::vector<std::string_view> all = {""};
  for (int i = 1; i <= static_cast<int>(PackRefusal::kTooLarge); i++) {
    const std::string_view text = OfRefusal(static_cast<PackRefusal>(i));
    EXPECT_THAT(all, ::testing::Not(::testing::Contains(text)));
    all.push_back(text);
  }
}

}  // namespace
}  // namespace hollin::words
