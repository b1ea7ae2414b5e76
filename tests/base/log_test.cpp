// SPDX-License-Identifier: MIT
#include "base/log.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <stdexcept>
#include <string>
#include <string_view>

#include "tests/base/system_calls.h"
#include "tests/support/recorded_log.h"

namespace hollin {
namespace {

using namespace std::string_view_literals;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

// Standard error on something else, as long as it lives.
class RedirectedError {
 public:
  explicit RedirectedError(int file) : before(dup(STDERR_FILENO)) { dup2(file, STDERR_FILENO); }
  ~RedirectedError() {
    dup2(before, STDERR_FILENO);
    close(before);
  }
  RedirectedError(const RedirectedError&) = delete;
  RedirectedError& operator=(const RedirectedError&) = delete;

 private:
  int before;
};

// A terminal with both its ends: what a program writes to the screen is read from its keeper.
struct Terminal {
  Terminal() : keeper(posix_openpt(O_RDWR | O_NOCTTY)) {
    if (keeper < 0 || grantpt(keeper) != 0 || unlockpt(keeper) != 0) {
      throw std::runtime_error("no terminal");
    }
    screen = open(ptsname(keeper), O_RDWR | O_NOCTTY);
    if (screen < 0) throw std::runtime_error("no screen");
  }
  ~Terminal() {
    close(screen);
    close(keeper);
  }
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;

  int keeper;
  int screen = -1;
};

class LogTest : public ::testing::Test {
 protected:
  LogTest() {
    Calls().logFormats.clear();
    Calls().logLines.clear();
  }

  // Logs with standard error on `file` and gives what arrives at `reader`.
  static std::string ErrorOutput(int file, int reader, std::string_view text) {
    {
      const RedirectedError redirected(file);
      Log(text);
    }
    fcntl(reader, F_SETFL, O_NONBLOCK);
    char buffer[256];
    const ssize_t size = read(reader, buffer, sizeof buffer);
    return size < 0 ? "" : std::string(buffer, static_cast<size_t>(size));
  }
};

TEST_F(LogTest, LinesGoToTheSystemLogUnderTheProgramsName) {
  Log("1");
  Log("2");
  EXPECT_EQ(Calls().logIdent, "Hollin");
  EXPECT_THAT(Calls().logLines, ElementsAre("1", "2"));
}

TEST_F(LogTest, TextIsNeverAFormat) {
  Log("%s%n%d 100%");
  EXPECT_THAT(Calls().logFormats, ElementsAre("%s"));
  EXPECT_THAT(Calls().logLines, ElementsAre("%s%n%d 100%"));
}

TEST_F(LogTest, EveryTextIsOneLineWithoutControlCharacters) {
  Log("Unknown:a\nforged \x1B[2J\0 entry"sv);
  EXPECT_THAT(Calls().logLines, ElementsAre("Unknown:a\\x0Aforged \\x1B[2J\\x00 entry"));
}

TEST_F(LogTest, AReplacementGetsTheEscapedLineAndTheSystemLogNone) {
  const RecordedLog log;
  Log("a\tb");
  EXPECT_THAT(log.lines, ElementsAre("a\\x09b"));
  EXPECT_THAT(Calls().logLines, IsEmpty());
}

TEST_F(LogTest, AnEmptyFunctionBringsTheSystemLogBack) {
  { const RecordedLog log; }
  Log("back");
  EXPECT_THAT(Calls().logLines, ElementsAre("back"));
}

TEST_F(LogTest, ATerminalOnStandardErrorGetsTheLineToo) {
  const Terminal terminal;
  EXPECT_EQ(ErrorOutput(terminal.screen, terminal.keeper, "step\n5"), "step\\x0A5\r\n");
  EXPECT_THAT(Calls().logLines, ElementsAre("step\\x0A5"));
}

TEST_F(LogTest, AnEchoTakesTheTerminalsPlaceUntilItIsEmpty) {
  const Terminal terminal;
  std::vector<std::string> lines;
  SetLogEcho([&lines](const std::string& line) { lines.push_back(line); });
  EXPECT_EQ(ErrorOutput(terminal.screen, terminal.keeper, "a\tb"), "");
  SetLogEcho({});
  EXPECT_EQ(ErrorOutput(terminal.screen, terminal.keeper, "c"), "c\r\n");
  EXPECT_THAT(lines, ElementsAre("a\\x09b"));
  EXPECT_THAT(Calls().logLines, ElementsAre("a\\x09b", "c"));
}

// As after Ctrl-S, or on a terminal program that hangs.
TEST_F(LogTest, ATerminalThatNobodyReadsHoldsNothingUp) {
  constexpr size_t kLines = 5000;  // more than any terminal keeps
  const Terminal terminal;
  {
    const RedirectedError redirected(terminal.screen);
    for (size_t i = 0; i < kLines; i++) Log(std::string(99, 'x'));
  }
  EXPECT_EQ(Calls().logLines.size(), kLines);
}

// A full pipe would block the writer.
TEST_F(LogTest, APipeOnStandardErrorGetsNothing) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  EXPECT_EQ(ErrorOutput(ends[1], ends[0], "5"), "");
  EXPECT_THAT(Calls().logLines, ElementsAre("5"));
  close(ends[0]);
  close(ends[1]);
}

}  // namespace
}  // namespace hollin
