// SPDX-License-Identifier: MIT
#include "app/update_loop.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "base/log.h"
#include "base/pause.h"
#include "package/dat_file_examine.h"
#include "tests/package/fake_update.h"
#include "tests/support/hex_bytes.h"
#include "tests/support/link_test.h"

namespace hollin {
namespace {

// Everything that happens is one story: steps, pauses, reported progress, log lines and the end
// command.
class UpdateLoopTest : public LinkTest {
 protected:
  UpdateLoopTest() {
    SetPauseFunction([this](std::chrono::milliseconds length) {
      story.push_back("pause " + std::to_string(length.count()));
    });
    SetLogFunction([this](const std::string& line) { story.push_back("log " + line); });
    hidapi.onWrite = [this](const Bytes& report) {
      story.push_back(report[10] == 0 ? "end: success" : "end: failure");
    };
    datFile.isFileReady = true;
    datFile.countDataPack = 1;
  }
  ~UpdateLoopTest() override {
    SetPauseFunction({});
    SetLogFunction({});
  }

  FakeUpdate& Plan(uint32_t steps) {
    auto updater = std::make_unique<FakeUpdate>("run", steps, story);
    FakeUpdate& fake = *updater;
    datFile.Update1 = std::move(updater);
    return fake;
  }

  void AcknowledgeSuccess() { hidapi.Reply(Hex("09 00 00 00")); }
  void AcknowledgeFailure() { hidapi.Reply(Hex("09 01 00 00")); }

  UpdateOutcome Run() {
    return RunUpdate(datFile, [this](int32_t value) {
      reported.push_back(value);
      story.push_back("report " + std::to_string(value));
    });
  }

  Story story;
  std::vector<int32_t> reported;
  DatFileExamine datFile;
};

TEST_F(UpdateLoopTest, ThreeStepsThatSucceedAreReportedAndLoggedOneByOne) {
  Plan(3);
  AcknowledgeSuccess();

  EXPECT_EQ(Run(), UpdateOutcome::kSucceeded);

  EXPECT_EQ(reported, (std::vector<int32_t>{0, 1, 2, -1}));
  EXPECT_EQ(story, (Story{"run EnterUpdateMode(5)", "pause 500", "report 0", "log 0",  //
                          "run RunStep(0)", "pause 500", "report 1", "log 1",          //
                          "run VerifyImage", "pause 500", "report 2", "log 2",         //
                          "end: success", "report -1"}));
}

TEST_F(UpdateLoopTest, AFirstStepThatFailsIsReportedAloneAndNotLogged) {
  Plan(3).answer = [](const std::string&) { return false; };
  AcknowledgeFailure();

  EXPECT_EQ(Run(), UpdateOutcome::kFailed);

  EXPECT_EQ(story, (Story{"run EnterUpdateMode(5)", "end: failure", "report -2"}));
}

TEST_F(UpdateLoopTest, AVerifyThatFailsLeavesTheProgressAtTheStepBefore) {
  Plan(3).answer = [](const std::string& line) { return line != "VerifyImage"; };
  AcknowledgeFailure();

  EXPECT_EQ(Run(), UpdateOutcome::kFailed);

  EXPECT_EQ(reported, (std::vector<int32_t>{0, 1, -2}));
  EXPECT_EQ(story.back(), "report -2");
  EXPECT_EQ(story[8], "run VerifyImage");
  EXPECT_EQ(story[9], "end: failure");  // and no pause after a step that failed
}

TEST_F(UpdateLoopTest, NoStepFollowsOneThatFailed) {
  Plan(9).answer = [](const std::string& line) { return line != "RunStep(2)"; };
  AcknowledgeFailure();
  EXPECT_EQ(Run(), UpdateOutcome::kFailed);
  EXPECT_EQ(reported, (std::vector<int32_t>{0, 1, 2, -2}));
}

TEST_F(UpdateLoopTest, AFailedUpdateStaysFailedWhenItsEndIsNotAcknowledged) {
  Plan(3).answer = [](const std::string&) { return false; };
  hidapi.ReplyFailure();
  EXPECT_EQ(Run(), UpdateOutcome::kFailed);
  EXPECT_EQ(reported, (std::vector<int32_t>{-2}));
}

TEST_F(UpdateLoopTest, APackageWithoutStepsSucceedsAtOnce) {
  Plan(0);
  AcknowledgeSuccess();
  EXPECT_EQ(Run(), UpdateOutcome::kSucceeded);
  EXPECT_EQ(story, (Story{"end: success", "report -1"}));
}

TEST_F(UpdateLoopTest, ATotalThatWrappedToANegativeNumberRunsNoStep) {
  Plan(0x80000000);
  AcknowledgeSuccess();
  Run();
  EXPECT_EQ(story, (Story{"end: success", "report -1"}));
}

TEST_F(UpdateLoopTest, APackageThatIsNotReadyFailsWithoutAReportToTheKeyboard) {
  Plan(3);
  datFile.isFileReady = false;

  EXPECT_EQ(Run(), UpdateOutcome::kFailed);

  EXPECT_EQ(story, (Story{"report -2"}));
  EXPECT_EQ(hidapi.calls, Story{});
}

TEST_F(UpdateLoopTest, AnEndThatIsNotAcknowledgedIsStillASuccessAndLogged) {
  Plan(2);
  AcknowledgeFailure();  // not what was sent

  EXPECT_EQ(Run(), UpdateOutcome::kSucceededUnacknowledged);

  EXPECT_EQ(reported, (std::vector<int32_t>{0, 1, -1}));
  EXPECT_EQ(story.back(), "log The keyboard did not acknowledge the end of the update.");
}

TEST_F(UpdateLoopTest, WhateverAStepThrowsIsAFailedStep) {
  FakeUpdate& updater = Plan(3);
  const std::function<bool(const std::string&)> throwing[] = {
      [](const std::string&) -> bool { throw std::bad_alloc(); },
      [](const std::string&) -> bool { throw std::length_error("too long"); },
      [](const std::string&) -> bool { throw 7; },
  };
  for (const auto& answer : throwing) {
    story.clear();
    updater.answer = answer;
    AcknowledgeFailure();
    EXPECT_EQ(Run(), UpdateOutcome::kFailed);
    EXPECT_EQ(story, (Story{"run EnterUpdateMode(5)", "end: failure", "report -2"}));
  }
}

TEST_F(UpdateLoopTest, WhateverTheEndCommandThrowsIsNoAcknowledgement) {
  Plan(2);
  hidapi.onWrite = [](const Bytes&) { throw 7; };
  EXPECT_EQ(Run(), UpdateOutcome::kSucceededUnacknowledged);
  EXPECT_EQ(reported, (std::vector<int32_t>{0, 1, -1}));
}

TEST_F(UpdateLoopTest, AReportOfProgressThatThrowsIsAFailedStep) {
  Plan(3);
  AcknowledgeFailure();
  std::vector<int32_t> seen;
  const auto outcome = RunUpdate(datFile, [&seen](int32_t value) {
    seen.push_back(value);
    if (value == 1) throw std::bad_alloc();
  });
  EXPECT_EQ(outcome, UpdateOutcome::kFailed);
  EXPECT_EQ(seen, (std::vector<int32_t>{0, 1, -2}));
}

TEST_F(UpdateLoopTest, NoExceptionGetsOutOfTheLastReport) {
  Plan(2);
  AcknowledgeSuccess();
  const auto outcome = RunUpdate(datFile, [](int32_t value) {
    if (value < 0) throw 7;
  });
  EXPECT_EQ(outcome, UpdateOutcome::kSucceeded);
}

TEST_F(UpdateLoopTest, NoExceptionGetsOutOfTheLog) {
  Plan(2);
  AcknowledgeFailure();
  SetLogFunction([](const std::string& line) {
    if (line.size() > 1) throw std::bad_alloc();
  });
  EXPECT_EQ(Run(), UpdateOutcome::kSucceededUnacknowledged);
}

TEST_F(UpdateLoopTest, AStopIsAskedForBetweenStepsOnly) {
  Plan(3);
  AcknowledgeSuccess();
  size_t asked = 0;
  const auto outcome = RunUpdate(
      datFile, [](int32_t) {}, [&asked] { return ++asked > 2; });
  EXPECT_EQ(outcome, UpdateOutcome::kSucceeded);
  EXPECT_EQ(asked, 2U);  // not before the first, and not behind the last
}

TEST_F(UpdateLoopTest, AStoppedUpdateEndsLikeAFailedOne) {
  Plan(3);
  AcknowledgeFailure();
  const auto outcome = RunUpdate(
      datFile, [this](int32_t value) { reported.push_back(value); }, [] { return true; });
  EXPECT_EQ(outcome, UpdateOutcome::kStopped);
  EXPECT_EQ(reported, (std::vector<int32_t>{0, -2}));
  EXPECT_EQ(story, (Story{"run EnterUpdateMode(5)", "pause 500", "log 0", "end: failure"}));
}

TEST_F(UpdateLoopTest, ASecondRunTakesTheSameStepsAgain) {
  Plan(3);
  AcknowledgeSuccess();
  Run();
  const Story first = std::exchange(story, {});
  AcknowledgeSuccess();
  EXPECT_EQ(Run(), UpdateOutcome::kSucceeded);
  EXPECT_EQ(story, first);
}

}  // namespace
}  // namespace hollin
