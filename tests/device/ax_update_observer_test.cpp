// SPDX-License-Identifier: MIT
// What an observer is told of failed commands: reason, command, expected reply, reply.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

#include "device/ax_update.h"
#include "device/update_observer.h"
#include "tests/support/hex_bytes.h"
#include "tests/support/link_test.h"

namespace hollin {
namespace {

using ::testing::Each;
using ::testing::Field;
using ::testing::IsEmpty;
using ::testing::SizeIs;

// A report whose bytes are kept: the views end with the call.
struct Told {
  UpdateFailure reason;
  Bytes command;
  Bytes expected;
  Bytes reply;
};

Bytes Copy(ByteView view) { return {view.begin(), view.end()}; }

class RecordingObserver : public UpdateObserver {
 public:
  void CommandFailed(const CommandFailure& failure) override {
    reports.push_back(
        {failure.reason, Copy(failure.command), Copy(failure.expected), Copy(failure.reply)});
  }

  std::vector<Told> reports;
};

class AXUpdateObserverTest : public LinkTest {
 protected:
  AXUpdateObserverTest() { updater.observer = &observer; }

  // The one report there is.
  const Told& Only() {
    EXPECT_THAT(observer.reports, SizeIs(1));
    return observer.reports.at(0);
  }

  RecordingObserver observer;
  AXUpdate updater{"description", "image"};
};

TEST_F(AXUpdateObserverTest, NothingIsToldOfWhatSucceeds) {
  hidapi.Reply(Hex("F1"));
  hidapi.Reply(Hex("09 00 00 00"));
  EXPECT_TRUE(updater.EnterUpdateMode(5));
  EXPECT_TRUE(updater.FinishUpdate(true));
  EXPECT_THAT(observer.reports, IsEmpty());
}

TEST_F(AXUpdateObserverTest, AMissingKeyboardIsToldBeforeAnyCommand) {
  hidapi.deviceCount = 0;
  EXPECT_FALSE(updater.EnterUpdateMode(5));
  EXPECT_EQ(Only().reason, UpdateFailure::kNoKeyboard);
  EXPECT_THAT(Only().command, IsEmpty());
  EXPECT_THAT(Only().expected, IsEmpty());
  EXPECT_THAT(Only().reply, IsEmpty());
}

TEST_F(AXUpdateObserverTest, ASecondKeyboardIsTold) {
  hidapi.deviceCount = 2;
  EXPECT_FALSE(updater.EnterUpdateMode(5));
  EXPECT_EQ(Only().reason, UpdateFailure::kSeveralKeyboards);
}

TEST_F(AXUpdateObserverTest, AKeyboardThatCannotBeOpenedIsTold) {
  hidapi.failingOpen = 1;
  EXPECT_FALSE(updater.EnterUpdateMode(5));
  EXPECT_EQ(Only().reason, UpdateFailure::kNotOpened);
}

TEST_F(AXUpdateObserverTest, AClosedLinkIsToldWithTheCommand) {
  EXPECT_FALSE(updater.VerifyRange(1, 2, 3));
  EXPECT_EQ(Only().reason, UpdateFailure::kLinkClosed);
  EXPECT_EQ(Only().command, Hex("08  01 00 00 00  02 00 00 00  00"));
}

TEST_F(AXUpdateObserverTest, AFailedSendIsToldWithTheCommand) {
  OpenLink();
  hidapi.failingWrite = 1;
  EXPECT_FALSE(updater.FinishUpdate(true));
  EXPECT_EQ(Only().reason, UpdateFailure::kSendFailed);
  EXPECT_EQ(Only().command, Hex("09 00 00 00"));
  EXPECT_THAT(Only().reply, IsEmpty());
}

TEST_F(AXUpdateObserverTest, AFailedReceiveIsToldWithWhatWasExpected) {
  OpenLink();
  hidapi.ReplyFailure();
  EXPECT_FALSE(updater.FinishUpdate(false));
  EXPECT_EQ(Only().reason, UpdateFailure::kReceiveFailed);
  EXPECT_EQ(Only().command, Hex("09 01 00 00"));
  EXPECT_EQ(Only().expected, Hex("09 01 00 00"));
}

TEST_F(AXUpdateObserverTest, AWrongReplyIsToldWithAllOfIt) {
  OpenLink();
  hidapi.Reply(Hex("08  01 00 00 00  02 00 00 00  AA BB"));
  EXPECT_FALSE(updater.VerifyRange(1, 2, 0x1234));
  EXPECT_EQ(Only().reason, UpdateFailure::kWrongReply);
  EXPECT_EQ(Only().command, Hex("08  01 00 00 00  02 00 00 00  00"));
  EXPECT_EQ(Only().expected, Hex("08  01 00 00 00  02 00 00 00  34 12"));
  EXPECT_EQ(Only().reply, Hex("08  01 00 00 00  02 00 00 00  AA BB"));
}

TEST_F(AXUpdateObserverTest, BytesThatDidNotComeAreTheComplementOfTheExpectedOnes) {
  OpenLink();
  hidapi.Reply(Hex("09"));
  EXPECT_FALSE(updater.FinishUpdate(false));
  EXPECT_EQ(Only().reason, UpdateFailure::kWrongReply);
  EXPECT_EQ(Only().reply, Hex("09 FE FF FF"));
}

TEST_F(AXUpdateObserverTest, EveryRefusedAttemptIsTold) {
  for (int i = 0; i < 5; i++) hidapi.Reply(Hex("F0"));
  EXPECT_FALSE(updater.EnterUpdateMode(5));
  EXPECT_THAT(observer.reports, SizeIs(5));
  EXPECT_THAT(observer.reports, Each(Field(&Told::reason, UpdateFailure::kWrongReply)));
  EXPECT_THAT(observer.reports, Each(Field(&Told::reply, Hex("F0"))));
  EXPECT_THAT(observer.reports, Each(Field(&Told::expected, Hex("F1"))));
}

TEST_F(AXUpdateObserverTest, WithoutAnObserverFailuresAreBorne) {
  updater.observer = nullptr;
  EXPECT_FALSE(updater.VerifyRange(1, 2, 3));
  hidapi.deviceCount = 0;
  EXPECT_FALSE(updater.FinishUpdate(true));
}

}  // namespace
}  // namespace hollin
