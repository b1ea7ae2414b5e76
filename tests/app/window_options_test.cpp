// SPDX-License-Identifier: MIT
#include "app/window_options.h"

#include <gtest/gtest.h>

namespace hollin {
namespace {

TEST(WindowOptionsTest, TheVersionIsOneLine) {
  EXPECT_EQ(AnswerToOption("--version"), "hollin " HOLLIN_VERSION "\n");
}

TEST(WindowOptionsTest, BothFormsOfHelpTellTheUsage) {
  EXPECT_NE(AnswerToOption("--help").find("Usage: hollin [OPTIONS] [PACKAGE]\n"),
            std::string::npos);
  EXPECT_EQ(AnswerToOption("-h"), AnswerToOption("--help"));
}

TEST(WindowOptionsTest, NothingElseIsAnswered) {
  for (const char* argument : {"", "-", "--", "--hel", "--helper", "package.dat", "-platform"}) {
    EXPECT_EQ(AnswerToOption(argument), "") << argument;
  }
}

}  // namespace
}  // namespace hollin
