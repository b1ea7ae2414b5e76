// SPDX-License-Identifier: MIT
#include "simulator/fault.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "simulator/keyboard.h"
#include "tests/simulator/host.h"

namespace hollin::simulator {
namespace {

Fault Parse(const std::string& text) {
  Fault fault;
  EXPECT_TRUE(ParseFault(text, fault)) << text;
  return fault;
}

TEST(ParseFaultTest, TheShortFormHasTheKindsOwnValues) {
  EXPECT_EQ(Parse("wrong-status@12"), (Fault{.kind = FaultKind::kWrongStatus,
                                             .moment = FaultMoment::kHostReport,
                                             .index = 12,
                                             .parameter = 0xE0,
                                             .times = 1}));
  EXPECT_EQ(Parse("mute@1").times, Fault::kAlways);
}

TEST(ParseFaultTest, ParameterMomentAndTimesCanBeGiven) {
  EXPECT_EQ(Parse("wrong-total=-1@r3x5"), (Fault{.kind = FaultKind::kWrongTotal,
                                                 .moment = FaultMoment::kKeyboardReport,
                                                 .index = 3,
                                                 .parameter = -1,
                                                 .times = 5}));
  EXPECT_EQ(Parse("wrong-status=0xF0@c2xalways").parameter, 0xF0);
  EXPECT_EQ(Parse("wrong-status=0xF0@c2xalways").times, Fault::kAlways);
  EXPECT_EQ(Parse("wrong-echo@c2").moment, FaultMoment::kCommand);
  EXPECT_EQ(Parse("wrong-echo@h2").moment, FaultMoment::kHostReport);
  EXPECT_EQ(Parse("open-fails@o2").moment, FaultMoment::kOpen);
}

TEST(ParseFaultTest, AnythingElseIsNoFaultAndChangesNothing) {
  for (const char* text :
       {"", "@", "wrong-echo", "wrong-echo@", "wrong-echo@0", "wrong-echo@x", "wrong-echo@1x",
        "wrong-echo@1x0", "wrong-echo@-1", "wrong-echo=@1", "wrong-echo=z@1", "wrong@1",
        "Wrong-echo@1", "wrong-echo@o1", "open-fails@1", "write-fails@c1", "wrong-echo@1 "}) {
    Fault fault{.kind = FaultKind::kLate, .index = 77};
    EXPECT_FALSE(ParseFault(text, fault)) << text;
    EXPECT_EQ(fault, (Fault{.kind = FaultKind::kLate, .index = 77})) << text;
  }
}

TEST(ParseFaultTest, EveryKindIsDescribedOnceAndCanBeWritten) {
  std::set<FaultKind> kinds;
  for (const FaultDescription& description : FaultDescriptions()) {
    const std::string text = std::string(description.name) + "@" + description.moments[0] + "1";
    EXPECT_EQ(Parse(text).kind, description.kind);
    EXPECT_TRUE(kinds.insert(description.kind).second) << description.name;
  }
  EXPECT_EQ(kinds.size(), static_cast<size_t>(FaultKind::kOpenFails) + 1);
}

TEST(FaultPlanTest, AFaultIsDueFromItsIndexOnAndStrikesItsTimes) {
  FaultPlan plan({{.kind = FaultKind::kLate, .index = 3, .times = 2}});
  EXPECT_FALSE(plan.Strikes(FaultKind::kLate, {.hostReports = 2}));
  EXPECT_FALSE(plan.Strikes(FaultKind::kMute, {.hostReports = 3}));
  EXPECT_TRUE(plan.Strikes(FaultKind::kLate, {.hostReports = 3}));
  EXPECT_TRUE(plan.Strikes(FaultKind::kLate, {.hostReports = 9}));
  EXPECT_FALSE(plan.Strikes(FaultKind::kLate, {.hostReports = 9}));
  EXPECT_EQ(plan.Struck(), 2U);
}

// One keyboard with one fault; the host asks for the A1 mode, then for the sum of no bytes.
class FaultTest : public testing::Test {
 protected:
  void Inject(const std::string& text) {
    keyboard = std::make_unique<Keyboard>(KeyboardOptions{.faults = {Parse(text)}});
    host = std::make_unique<Host>(*keyboard);
  }
  [[nodiscard]] const Bytes& Report(size_t index) const { return host->last.at(index).report; }

  const Bytes verify = {0x08, 0, 0, 0, 0, 0, 0, 0, 0, 0};
  const Bytes sum = {0x08, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
  std::unique_ptr<Keyboard> keyboard;
  std::unique_ptr<Host> host;
};

TEST_F(FaultTest, WrongEchoWaitsForAnEcho) {
  Inject("wrong-echo=3@1");
  EXPECT_EQ(host->Ask(kModeA1), Bytes{0xF1});
  EXPECT_EQ(host->Ask(kEnd), (Bytes{0x09, 0x00, 0x00, 0xFF}));
  EXPECT_EQ(host->Ask(kEnd), kEnd);
}

TEST_F(FaultTest, WrongStatusStrikesAsOftenAsItIsTold) {
  Inject("wrong-status@1x2");
  EXPECT_EQ(host->Ask(kModeA1), Bytes{0xE0});
  EXPECT_EQ(host->Ask(kModeA1), Bytes{0xE0});
  EXPECT_EQ(host->Ask(kModeA1), Bytes{0xF1});
}

TEST_F(FaultTest, WrongSumIsTooBig) {
  Inject("wrong-sum=0x102@c2");
  host->Ask(kModeA1);
  EXPECT_EQ(host->Ask(verify), (Bytes{0x08, 0, 0, 0, 0, 0, 0, 0, 0, 0x02, 0x01}));
  EXPECT_EQ(host->Ask(verify), sum);
}

TEST_F(FaultTest, WrongWordAndCapacityReplaceWhatWasThere) {
  Inject("wrong-capacity=0x12345678@1");
  host->Ask(kModeC1);
  EXPECT_EQ(host->Ask({0x0B, 0, 0, 1, 0, 0, 1}), (Bytes{0xF1, 0x78, 0x56, 0x34, 0x12}));
  Inject("wrong-word=0x1234@1");
  host->Ask(kModeA2);
  EXPECT_EQ(host->Ask({0x03, 0, 0, 0, 0}), (Bytes{0x03, 0, 0, 0, 0, 0x34, 0x12}));
}

TEST_F(FaultTest, NoReplyLosesOneAndMuteAll) {
  Inject("no-reply@2");
  EXPECT_EQ(host->Ask(kModeA1), Bytes{0xF1});
  EXPECT_EQ(host->Ask(kModeA1), Bytes{});
  EXPECT_EQ(host->Ask(kModeA1), Bytes{0xF1});
  Inject("mute@2");
  EXPECT_EQ(host->Ask(kModeA1), Bytes{0xF1});
  EXPECT_EQ(host->Ask(kModeA1), Bytes{});
  EXPECT_EQ(host->Ask(kEnd), Bytes{});
  EXPECT_TRUE(host->taken);
}

TEST_F(FaultTest, ALateReplyComesWithTheNext) {
  Inject("late@1");
  EXPECT_EQ(host->Ask(kModeA1), Bytes{});
  EXPECT_EQ(host->Ask(verify), (Bytes{0xF1, 0x08, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
}

TEST_F(FaultTest, AShortReportHasExactlyItsBytes) {
  for (const size_t size : {0U, 1U, 8U, 9U, 63U}) {
    Inject("short-report=" + std::to_string(size) + "@r1");
    host->Ask(kModeA1);
    EXPECT_EQ(Report(0).size(), size);
  }
}

TEST_F(FaultTest, HeaderFieldsCanBeReplaced) {
  Inject("wrong-offset=0x01020304@r1");
  host->Ask(kModeA1);
  EXPECT_EQ(Bytes(Report(0).begin(), Report(0).begin() + 10),
            (Bytes{0x51, 4, 3, 2, 1, 1, 0, 0, 0, 0xF1}));
  Inject("wrong-total=-1@r1");
  host->Ask(kModeA1);
  EXPECT_EQ(Bytes(Report(0).begin(), Report(0).begin() + 10),
            (Bytes{0x51, 0, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0xFF, 0xF1}));
  Inject("flip-byte=8@r1");
  host->Ask(kModeA1);
  EXPECT_EQ(Bytes(Report(0).begin(), Report(0).begin() + 10),
            (Bytes{0x51, 0, 0, 0, 0, 1, 0, 0, 0xFF, 0xF1}));
}

TEST_F(FaultTest, ReportsCanComeTwiceOrAgainOrUnasked) {
  Inject("duplicate@r2");
  host->Ask(kModeA1);
  EXPECT_EQ(host->Ask(kEnd), (Bytes{0x09, 0, 0, 0, 0x09, 0, 0, 0}));
  Inject("stale@r2");
  host->Ask(kModeA1);
  EXPECT_EQ(host->Ask(kEnd), (Bytes{0xF1, 0x09, 0, 0, 0}));
  Inject("unsolicited=64@r1");
  host->Ask(kModeA1);
  ASSERT_EQ(host->last.size(), 65U);
  EXPECT_NE(Report(0)[1], 0);
  EXPECT_EQ(Report(64)[9], 0xF1);
}

TEST_F(FaultTest, AReadFailsAndTheReportComesAfterwards) {
  Inject("read-fails@r1");
  host->Ask(kModeA1);
  ASSERT_EQ(host->last.size(), 2U);
  EXPECT_TRUE(host->last[0].readFails);
  EXPECT_EQ(Report(1)[9], 0xF1);
}

TEST_F(FaultTest, AWriteFailsOnceAndIsForgotten) {
  Inject("write-fails@1");
  EXPECT_EQ(host->Ask(kModeA1), Bytes{});
  EXPECT_FALSE(host->taken);
  EXPECT_TRUE(keyboard->Record().commands.empty());
  EXPECT_EQ(host->Ask(kModeA1), Bytes{0xF1});
}

TEST_F(FaultTest, RemovalBeforeAReportFailsItsWrite) {
  Inject("remove-before@2");
  host->Ask(kModeA1);
  EXPECT_EQ(host->Ask(kEnd), Bytes{});
  EXPECT_FALSE(host->taken);
  EXPECT_FALSE(keyboard->Attached());
  EXPECT_EQ(keyboard->Record().commands.size(), 1U);
}

TEST_F(FaultTest, RemovalAtAReportTakesItAndSaysNothing) {
  Inject("remove-at@c2");
  host->Ask(kModeA1);
  EXPECT_EQ(host->Ask(kEnd), Bytes{});
  EXPECT_TRUE(host->taken);
  EXPECT_FALSE(keyboard->Attached());
  EXPECT_EQ(keyboard->Record().commands.size(), 2U);
}

TEST_F(FaultTest, RemovalAfterAReportStillAnswersIt) {
  Inject("remove-after@r2");
  host->Ask(kModeA1);
  EXPECT_TRUE(keyboard->Attached());
  EXPECT_EQ(host->Ask(kEnd), kEnd);
  EXPECT_FALSE(keyboard->Attached());
}

TEST_F(FaultTest, AnOpenIsRefusedExactlyWhenItIsDue) {
  Inject("open-fails@o2");
  EXPECT_TRUE(keyboard->Open());
  EXPECT_FALSE(keyboard->Open());
  EXPECT_TRUE(keyboard->Open());
}

}  // namespace
}  // namespace hollin::simulator
