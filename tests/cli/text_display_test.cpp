// SPDX-License-Identifier: MIT
#include "cli/text_display.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "tests/support/hex_bytes.h"

namespace hollin {
namespace {

using namespace std::chrono_literals;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::StartsWith;

const std::string kErase = "\r\x1B[K";

const UpdatePlan kPlan = {.productModel = "TS30", .firmwareVersion = "2.0.1", .packs = {{"A1", 3}}};

class TextDisplayTest : public ::testing::Test {
 protected:
  // A display for a pipe, or for a terminal of 80 columns.
  TextDisplay MakePipe() { return TextDisplay({.out = out, .err = err}, clock); }
  TextDisplay MakeTerminal() {
    return TextDisplay(
        {.out = out, .err = err, .canDraw = true, .width = [] { return size_t{80}; }}, clock);
  }

  // What was written since the last time.
  static std::string Take(std::ostringstream& stream) {
    std::string text = stream.str();
    stream.str("");
    return text;
  }

  std::ostringstream out, err;
  std::chrono::steady_clock::time_point now;
  TextDisplay::Clock clock = [this] { return now; };
  FailureRecord failures;
};

TEST_F(TextDisplayTest, APipeGetsALineAStep) {
  TextDisplay display = MakePipe();
  display.Start(kPlan);
  for (int32_t step = 0; step < 3; step++) display.StepCompleted(step);
  display.Tick();
  display.Finish(UpdateOutcome::kSucceeded, ExitCode::kDone, failures);
  EXPECT_EQ(out.str(),
            "Updating to TS30 2.0.1 in 3 steps\n"
            "Step 1 of 3: enter update mode\n"
            "Step 2 of 3: write block 1 of 1\n"
            "Step 3 of 3: verify\n"
            "Update completed, please use the TS30 power switch to restart the keyboard.\n");
  EXPECT_EQ(err.str(), "");
}

TEST_F(TextDisplayTest, ATerminalGetsABarThatIsDrawnAgainInPlace) {
  TextDisplay display = MakeTerminal();
  display.Start(kPlan);
  EXPECT_EQ(Take(out), "Updating to TS30 2.0.1 in 3 steps\n" + kErase +
                           "[...............]   0%  step 1/3  0:00  enter update mode");
  now += 2s;
  display.StepCompleted(0);
  EXPECT_EQ(Take(out),
            kErase + "[####...........]  33%  step 2/3  0:02, 0:04 left  write block 1 of 1");
  now += 1s;
  display.Tick();
  EXPECT_EQ(Take(out),
            kErase + "[####...........]  33%  step 2/3  0:03, 0:03 left  write block 1 of 1");
}

TEST_F(TextDisplayTest, TheLastColumnStaysFree) {
  TextDisplay display({.out = out, .err = err, .canDraw = true, .width = [] { return size_t{40}; }},
                      clock);
  display.Start(kPlan);
  const std::string text = Take(out);
  EXPECT_EQ(text.substr(text.rfind('K') + 1), "[..........]   0%  step 1/3  0:00  ente");
}

TEST_F(TextDisplayTest, TheFullBarStaysAndTheOutcomeFollows) {
  TextDisplay display = MakeTerminal();
  display.Start(kPlan);
  for (int32_t step = 0; step < 3; step++) display.StepCompleted(step);
  Take(out);
  display.Finish(UpdateOutcome::kSucceeded, ExitCode::kDone, failures);
  EXPECT_EQ(Take(out), kErase +
                           "[###############] 100%  step 3/3  0:00\n"
                           "Update completed, please use the TS30 power switch to restart the "
                           "keyboard.\n");
}

TEST_F(TextDisplayTest, ALineOfTheLogTakesTheBarsPlace) {
  TextDisplay display = MakeTerminal();
  display.Start(kPlan);
  Take(out);
  display.LogLine("Unknown:x");
  EXPECT_EQ(Take(err), "Unknown:x\n");
  EXPECT_THAT(Take(out), StartsWith(kErase + kErase + "[....."));
}

TEST_F(TextDisplayTest, BeforeTheUpdateTheLogMakesNoBar) {
  TextDisplay display = MakeTerminal();
  display.LogLine("Unknown:x");
  display.Tick();
  EXPECT_EQ(Take(err), "Unknown:x\n");
  EXPECT_EQ(Take(out), "");
}

TEST_F(TextDisplayTest, ANoticeLeavesTheInterruptedBarAndBeginsANewOne) {
  TextDisplay display = MakeTerminal();
  display.Start(kPlan);
  Take(out);
  display.Notice("mind this");
  EXPECT_EQ(Take(err), "mind this\n");
  EXPECT_THAT(Take(out), StartsWith("\n" + kErase + "[....."));
}

TEST_F(TextDisplayTest, AFailureNamesStepCommandAddressAndReply) {
  const Bytes command = Hex("07 00 40 00 00 00 40 34 12 00 00 00");
  TextDisplay display = MakePipe();
  display.Start(kPlan);
  display.StepCompleted(0);
  failures.CommandFailed({.reason = UpdateFailure::kWrongReply,
                          .command = command,
                          .expected = Hex("F4"),
                          .reply = Hex("E0")});
  display.Finish(UpdateOutcome::kFailed, ExitCode::kFailed, failures);
  EXPECT_EQ(err.str(),
            "Update Error!\n"
            "Step 2 of 3 failed: write block 1 of 1\n"
            "  Reason: the keyboard did not reply what it should\n"
            "  Command: write block at address 0x00004000\n"
            "  Sent: 07 00 40 00 00 00 40 34 12 00 00 00\n"
            "  Expected: F4\n"
            "  Received: E0\n");
  EXPECT_THAT(out.str(), EndsWith("Step 1 of 3: enter update mode\n"));
}

TEST_F(TextDisplayTest, AnUnacknowledgedEndIsDoneWithAWarning) {
  TextDisplay display = MakePipe();
  display.Start(kPlan);
  display.Finish(UpdateOutcome::kSucceededUnacknowledged, ExitCode::kDone, failures);
  EXPECT_EQ(err.str(), "Warning: the keyboard did not acknowledge the end of the update.\n");
  EXPECT_THAT(out.str(), HasSubstr("Update completed, "));
}

TEST_F(TextDisplayTest, AStoppedUpdateSaysWhatToDo) {
  TextDisplay display = MakePipe();
  display.Start(kPlan);
  display.Finish(UpdateOutcome::kStopped, ExitCode::kInterrupted, failures);
  EXPECT_EQ(err.str(),
            "Update stopped. The keyboard must be updated again before it can be used.\n");
  EXPECT_THAT(out.str(), ::testing::Not(HasSubstr("completed")));
}

TEST_F(TextDisplayTest, TextsOfAPackageCannotSteerTheTerminal) {
  TextDisplay display = MakePipe();
  display.Start({.productModel = "\x1B[2J", .firmwareVersion = "1\n2", .packs = {{"A1", 3}}});
  display.Refuse(ExitCode::kPackage, "unreadable", {"Unable to open dat file: \r\x1B[K"},
                 "Try another.");
  EXPECT_EQ(out.str(), "Updating to \\x1B[2J 1\\x0A2 in 3 steps\n");
  EXPECT_EQ(err.str(), "Unable to open dat file: \\x0D\\x1B[K\nTry another.\n");
}

TEST_F(TextDisplayTest, AbandoningEndsTheBarsLineOnce) {
  TextDisplay display = MakeTerminal();
  display.Abandon();
  EXPECT_EQ(Take(out), "");
  display.Start(kPlan);
  Take(out);
  display.Abandon();
  display.Abandon();
  EXPECT_EQ(Take(out), "\n");
}

TEST_F(TextDisplayTest, AnOutputThatIsStalledGetsNothingFromTheSignals) {
  bool takesLines = true;
  TextDisplay display({.out = out,
                       .err = err,
                       .canDraw = true,
                       .width = [] { return size_t{80}; },
                       .takesLines = [&] { return takesLines; }},
                      clock);
  display.Start(kPlan);
  Take(out);
  takesLines = false;
  display.Tick();
  display.Notice("Wait.");
  display.Abandon();
  EXPECT_EQ(out.str() + err.str(), "");
  takesLines = true;
  display.Notice("Wait.");
  EXPECT_EQ(err.str(), "Wait.\n");
}

}  // namespace
}  // namespace hollin
