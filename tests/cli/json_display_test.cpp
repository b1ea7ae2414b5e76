// SPDX-License-Identifier: MIT
#include "cli/json_display.h"

#include <gtest/gtest.h>

#include <sstream>

#include "tests/support/hex_bytes.h"

namespace hollin {
namespace {

class JsonDisplayTest : public ::testing::Test {
 protected:
  void Start() {
    display.Start({.productModel = "TS\x1B\xFF",
                   .firmwareVersion = "2.0.1",
                   .packs = {{.dataType = "A1", .steps = 3}, {.dataType = "C1", .steps = 4}}});
    out.str("");
  }

  std::ostringstream out, err;
  std::chrono::steady_clock::time_point now;
  JsonDisplay display{{.out = out, .err = err}, [this] { return now; }};
  FailureRecord failures;
};

TEST_F(JsonDisplayTest, ARefusalIsAnError) {
  display.Refuse(ExitCode::kKeyboard, "no-keyboard", {"Not there.", "Hold \"A\"."}, "Try again.");
  EXPECT_EQ(out.str(),
            R"j({"error":{"code":"no-keyboard","message":"Not there. Hold \"A\".","exitCode":4}})j"
            "\n");
  EXPECT_EQ(err.str(), "");
}

TEST_F(JsonDisplayTest, TheStartTellsThePlan) {
  display.Start({.productModel = "TS\x1B\xFF",
                 .firmwareVersion = "2.0.1",
                 .packs = {{.dataType = "A1", .steps = 3}, {.dataType = "C1", .steps = 4}}});
  EXPECT_EQ(out.str(),
            "{\"event\":\"start\",\"productModel\":\"TS\\u001b\xEF\xBF\xBD\","
            R"j("firmwareVersion":"2.0.1","totalSteps":7,)j"
            R"j("packs":[{"dataType":"A1","steps":3},{"dataType":"C1","steps":4}]})j"
            "\n");
}

TEST_F(JsonDisplayTest, EveryStepIsALine) {
  Start();
  now += std::chrono::milliseconds(1501);
  display.StepCompleted(1);
  display.Tick();
  display.LogLine("1");
  EXPECT_EQ(out.str(),
            R"j({"event":"step","step":1,"name":"write block 1 of 1 (pack 1)","totalSteps":7,)j"
            R"j("elapsedMilliseconds":1501})j"
            "\n");
}

TEST_F(JsonDisplayTest, AnswersToCtrlCAreNotices) {
  display.Notice("Wait.");
  EXPECT_EQ(out.str(), "{\"event\":\"notice\",\"message\":\"Wait.\"}\n");
}

TEST_F(JsonDisplayTest, TheEndTellsTheOutcomeInTheWordsOfTheWindow) {
  Start();
  display.Finish(UpdateOutcome::kSucceeded, ExitCode::kDone, failures);
  EXPECT_EQ(out.str(),
            R"j({"event":"end","outcome":"succeeded","message":"Update completed, please use the )j"
            R"j(TS30 power switch to restart the keyboard.","exitCode":0,"elapsedMilliseconds":0})j"
            "\n");
}

TEST_F(JsonDisplayTest, AnEndThatWasNotAcknowledgedIsASuccessWithAWarning) {
  display.Finish(UpdateOutcome::kSucceededUnacknowledged, ExitCode::kDone, failures);
  const Json end = Json::parse(out.str());
  EXPECT_EQ(end["outcome"], "succeeded");
  EXPECT_EQ(end["exitCode"], 0);
  EXPECT_EQ(end["warning"], "Warning: the keyboard did not acknowledge the end of the update.");
}

TEST_F(JsonDisplayTest, TheEndHasTheExitCodeOfTheProgram) {
  display.Finish(UpdateOutcome::kFailed, ExitCode::kInterrupted, failures);
  EXPECT_EQ(Json::parse(out.str())["outcome"], "failed");
  EXPECT_EQ(Json::parse(out.str())["exitCode"], 130);
}

TEST_F(JsonDisplayTest, NothingFollowsTheEnd) {
  display.Finish(UpdateOutcome::kStopped, ExitCode::kInterrupted, failures);
  EXPECT_EQ(Json::parse(out.str())["outcome"], "stopped");
  out.str("");
  display.Abandon();
  display.Notice("Wait.");
  EXPECT_EQ(out.str(), "");
}

TEST_F(JsonDisplayTest, NothingFollowsAnEndBySignal) {
  display.Abandon();
  EXPECT_EQ(Json::parse(out.str())["outcome"], "abandoned");
  EXPECT_EQ(Json::parse(out.str())["exitCode"], 130);
  out.str("");
  display.StepCompleted(0);
  display.Finish(UpdateOutcome::kSucceeded, ExitCode::kDone, failures);
  EXPECT_EQ(out.str(), "");
}

TEST_F(JsonDisplayTest, AnOutputThatIsStalledGetsNothingFromTheSignals) {
  JsonDisplay stalled({.out = out, .err = err, .takesLines = [] { return false; }},
                      [this] { return now; });
  stalled.Notice("Wait.");
  stalled.Abandon();
  EXPECT_EQ(out.str(), "");
}

TEST_F(JsonDisplayTest, AFailureTellsStepCommandAndReply) {
  Start();
  display.StepCompleted(3);
  out.str("");
  const Bytes command = Hex("02 00 10 00 00");
  const Bytes reply = Hex("02 00 10 00 01");
  failures.CommandFailed({.reason = UpdateFailure::kWrongReply,
                          .command = command,
                          .expected = command,
                          .reply = reply});
  display.Finish(UpdateOutcome::kFailed, ExitCode::kFailed, failures);
  EXPECT_EQ(
      out.str(),
      R"j({"event":"end","outcome":"failed","message":"Update Error!","exitCode":1,)j"
      R"j("elapsedMilliseconds":0,"failure":{"step":4,"name":"write sector 1 of 2 (pack 2)",)j"
      R"j("reason":"the keyboard did not reply what it should",)j"
      R"j("command":"erase at address 0x00001000","sent":[2,0,16,0,0],)j"
      R"j("expected":[2,0,16,0,0],"received":[2,0,16,0,1]}})j"
      "\n");
}

TEST_F(JsonDisplayTest, AFailureWithoutACommandTellsTheReasonAlone) {
  Start();
  failures.CommandFailed(
      {.reason = UpdateFailure::kNotOpened, .command = {}, .expected = {}, .reply = {}});
  display.Finish(UpdateOutcome::kFailed, ExitCode::kFailed, failures);
  const Json failure = Json::parse(out.str())["failure"];
  EXPECT_EQ(failure["step"], 0);
  EXPECT_FALSE(failure.contains("command"));
}

}  // namespace
}  // namespace hollin
