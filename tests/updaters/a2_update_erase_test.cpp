// SPDX-License-Identifier: MIT
// How an A2 sector is erased: the chip's cycles, the poll, and erasing again.
#include <chrono>
#include <numeric>

#include "tests/updaters/a2_test.h"

namespace hollin {
namespace {

using std::chrono::milliseconds;
using Pauses = std::vector<milliseconds>;

const Bytes kErasedWord = Hex("00 00 00 00 00 FF FF");
const Bytes kOtherWord = Hex("00 00 00 00 00 34 12");

constexpr milliseconds kFirst{700};
constexpr milliseconds kLater{20};

class A2UpdateEraseTest : public A2Test {
 protected:
  A2UpdateEraseTest() { static_cast<void>(Plan(Counting(16))); }

  // Queues what polls read from now on: true is erased.
  void Poll(std::initializer_list<bool> erased) {
    for (const bool isErased : erased) {
      keyboard.AnswerNext(0x03, {isErased ? kErasedWord : kOtherWord});
    }
  }

  [[nodiscard]] milliseconds Waited() const {
    return std::accumulate(pauses.lengths.begin(), pauses.lengths.end(), milliseconds{0});
  }
};

TEST_F(A2UpdateEraseTest, CyclesGoToTheirAddressInTheSectorAndTheLastToTheSectorItself) {
  ASSERT_TRUE(Plan(Counting(32)));
  ASSERT_TRUE(update.RunStep(0));
  EXPECT_EQ(keyboard.commands[0], Hex("02 55 06 00 00 AA 00"));
  EXPECT_EQ(keyboard.commands[1], Hex("02 00 01 00 00 30 00"));
  keyboard.commands.clear();
  ASSERT_TRUE(update.RunStep(1));
  EXPECT_EQ(keyboard.commands[0], Hex("02 5D 06 00 00 AA 00"));
  EXPECT_EQ(keyboard.commands[1], Hex("02 08 01 00 00 30 00"));
}

TEST_F(A2UpdateEraseTest, CycleAddressesWrapAndDataKeepTheirLow16Bits) {
  update.flash.eraseAddrs = {0xFFFFFF80, 0};
  update.flash.eraseData = {0x12345, 0xABCD6789};
  ASSERT_TRUE(update.RunStep(0));
  EXPECT_EQ(keyboard.commands[0], Hex("02 80 00 00 00 45 23"));
  EXPECT_EQ(keyboard.commands[1], Hex("02 00 01 00 00 89 67"));
}

TEST_F(A2UpdateEraseTest, AFlashThatBeginsAt1400SendsCyclesToTheirListedAddresses) {
  update.flash.sectorAddrs = {0x1400, 0x1408, 0x1410};
  ASSERT_TRUE(Plan(Counting(32)));
  ASSERT_TRUE(RunSteps(2));
  EXPECT_EQ(keyboard.commands[0], Hex("02 55 05 00 00 AA 00"));
  EXPECT_EQ(keyboard.commands[1], Hex("02 00 14 00 00 30 00"));
  EXPECT_EQ(keyboard.commands[7], Hex("02 55 05 00 00 AA 00"));
  EXPECT_EQ(keyboard.commands[8], Hex("02 08 14 00 00 30 00"));
}

TEST_F(A2UpdateEraseTest, OnlyAFirstSectorAt1400IsSpecial) {
  struct Case {
    std::vector<uint32_t> sectors;
    Bytes firstCycle;
  };
  const std::vector<Case> cases{{{0x13FF, 0x1407}, Hex("02 54 19 00 00 AA 00")},
                                {{0x1400, 0x1408}, Hex("02 55 05 00 00 AA 00")},
                                {{0x1401, 0x1409}, Hex("02 56 19 00 00 AA 00")},
                                {{0x13F8, 0x1400}, Hex("02 4D 19 00 00 AA 00")}};
  for (const Case& c : cases) {
    update.flash.sectorAddrs = c.sectors;
    ASSERT_TRUE(Plan(Counting(16)));
    keyboard.commands.clear();
    ASSERT_TRUE(update.RunStep(0));
    EXPECT_EQ(keyboard.commands[0], c.firstCycle);
  }
}

TEST_F(A2UpdateEraseTest, OneCycleGoesToTheSector) {
  update.flash.eraseCycleCount = 1;
  update.flash.eraseAddrs = {0x555};
  update.flash.eraseData = {0x30};
  ASSERT_TRUE(update.RunStep(0));
  EXPECT_EQ(keyboard.CountOf(0x02), 1U);
  EXPECT_EQ(keyboard.commands[0], Hex("02 00 01 00 00 30 00"));
}

TEST_F(A2UpdateEraseTest, WithoutCyclesOnlyPollsAreSent) {
  update.flash.eraseCycleCount = 0;
  update.flash.eraseAddrs = {};
  update.flash.eraseData = {};
  ASSERT_TRUE(update.CheckConfig());
  ASSERT_TRUE(update.RunStep(0));
  EXPECT_EQ(keyboard.CountOf(0x02), 0U);
  EXPECT_EQ(keyboard.commands[0], Hex("03 00 01 00 00"));
}

TEST_F(A2UpdateEraseTest, AWrongEchoOfACycleEndsTheStepAtOnce) {
  const Messages cycles{Hex("02 55 06 00 00 AA 00"), Hex("02 00 01 00 00 30 00")};
  for (size_t cycle = 0; cycle < cycles.size(); cycle++) {
    for (size_t i = 0; i < cycles[cycle].size(); i++) {
      SCOPED_TRACE(testing::Message() << "cycle " << cycle << " byte " << i);
      keyboard.commands.clear();
      Bytes echo = cycles[cycle];
      echo[i] ^= 0x01;
      if (cycle == 1) keyboard.AnswerNext(0x02, {cycles[0]});
      keyboard.AnswerNext(0x02, {echo});
      EXPECT_FALSE(update.RunStep(0));
      EXPECT_EQ(keyboard.commands,
                Messages(cycles.begin(), cycles.begin() + 1 + static_cast<ptrdiff_t>(cycle)));
    }
  }
}

TEST_F(A2UpdateEraseTest, AnEchoThatStopsEarlyIsWrong) {
  keyboard.AnswerNext(0x02, {Hex("02 55 06 00 00 AA")});  // the 00 behind it did not come
  EXPECT_FALSE(update.RunStep(0));
  EXPECT_EQ(keyboard.commands.size(), 1U);
}

TEST_F(A2UpdateEraseTest, EachEraseConnects) {
  HidDevice::Close();
  hidapi.calls.clear();
  EXPECT_TRUE(update.RunStep(0));
  EXPECT_EQ(hidapi.CountOf("hid_open"), 1U);
}

TEST_F(A2UpdateEraseTest, WithoutAKeyboardNothingIsSent) {
  HidDevice::Close();
  hidapi.deviceCount = 0;
  EXPECT_FALSE(update.RunStep(0));
  EXPECT_TRUE(hidapi.writes.empty());
}

TEST_F(A2UpdateEraseTest, TheEraseIsPolledAfter700MillisecondsAndAgainAfter20) {
  ASSERT_TRUE(update.RunStep(0));
  EXPECT_EQ(keyboard.commands[2], Hex("03 00 01 00 00"));
  EXPECT_EQ(keyboard.commands[3], Hex("03 00 01 00 00"));
  EXPECT_EQ(keyboard.CountOf(0x03), 2U);
  EXPECT_EQ(pauses.lengths, (Pauses{kFirst, kLater}));
}

TEST_F(A2UpdateEraseTest, TwoMatchesMustComeInARow) {
  Poll({true, false, true, false, false, true, true});
  ASSERT_TRUE(update.RunStep(0));
  EXPECT_EQ(keyboard.CountOf(0x03), 7U);
  EXPECT_EQ(Waited(), milliseconds(700 + 6 * 20));
  EXPECT_EQ(Erases(), 1U);
}

TEST_F(A2UpdateEraseTest, APollReadsBytes5And6Alone) {
  keyboard.AnswerNext(0x03, {Hex("99 88 77 66 55 FF FF")}, 2);
  ASSERT_TRUE(update.RunStep(0));
  EXPECT_EQ(keyboard.CountOf(0x03), 2U);
}

TEST_F(A2UpdateEraseTest, AFlashMayReadBackAnotherErasedValue) {
  update.flash.erasedValue = 0x1234;
  Poll({false, false});  // which is 0x1234, low byte first
  ASSERT_TRUE(update.RunStep(0));
  EXPECT_EQ(keyboard.CountOf(0x03), 2U);
}

TEST_F(A2UpdateEraseTest, TheReadBackWordIsComparedWithAll32BitsOfTheErasedValue) {
  update.flash.erasedValue = 0x1FFFF;
  EXPECT_FALSE(update.RunStep(0));
  EXPECT_EQ(Erases(), 6U);
  EXPECT_EQ(keyboard.CountOf(0x04), 0U);
}

TEST_F(A2UpdateEraseTest, APollThatStopsEarlyIsNeverErased) {
  struct Case {
    uint32_t erasedValue;
    Bytes reply;
  };
  const std::vector<Case> cases{{0x00FF, Hex("03 00 01 00 00 FF")},
                                {0x0000, Hex("03 00 01 00 00")},
                                {0x0300, Hex("03 00 01 00 00 00")},
                                {0xFFFF, Hex("03")}};
  update.flash.maxSectorEraseTime = 1;
  for (const Case& c : cases) {
    SCOPED_TRACE(c.erasedValue);
    update.flash.erasedValue = c.erasedValue;
    keyboard.AnswerNext(0x03, {c.reply}, 11);
    EXPECT_FALSE(update.RunStep(0));
  }
}

// One poll of 700 milliseconds without success, one of 20 with it: 720 have elapsed.
TEST_F(A2UpdateEraseTest, ASectorIsErasedAgainOnceElapsedExceedsTheTime) {
  struct Case {
    uint32_t time;
    size_t erases;
    size_t polls;
  };
  for (const Case& c : std::vector<Case>{{719, 2, 5}, {720, 1, 3}, {721, 1, 3}}) {
    SCOPED_TRACE(c.time);
    update.flash.maxSectorEraseTime = c.time;
    keyboard.commands.clear();
    Poll({false});
    ASSERT_TRUE(update.RunStep(0));
    EXPECT_EQ(Erases(), c.erases);
    EXPECT_EQ(keyboard.CountOf(0x03), c.polls);
  }
}

TEST_F(A2UpdateEraseTest, TheFirstPollAloneTakes700Milliseconds) {
  struct Case {
    uint32_t time;
    size_t erases;
    size_t polls;
  };
  // At 699 every first poll is late, though it matched: each erase begins the next, up to the
  // sixth, which fails; the five around it then find their second match.
  for (const Case& c : std::vector<Case>{{699, 6, 11}, {700, 1, 2}, {701, 1, 2}}) {
    SCOPED_TRACE(c.time);
    update.flash.maxSectorEraseTime = c.time;
    keyboard.commands.clear();
    ASSERT_TRUE(update.RunStep(0));
    EXPECT_EQ(Erases(), c.erases);
    EXPECT_EQ(keyboard.CountOf(0x03), c.polls);
  }
}

TEST_F(A2UpdateEraseTest, ElapsedTimeIsNeverReset) {
  update.flash.maxSectorEraseTime = 700;
  // Own polls: late at 720, 740 and, with the first match, at 760. Each time the erase that runs
  // then needs two polls.
  Poll({false, false, true, true, false, true, true, true, true, true, true});
  ASSERT_TRUE(update.RunStep(0));
  EXPECT_EQ(Erases(), 4U);
  EXPECT_EQ(pauses.lengths, (Pauses{kFirst, kLater, kFirst, kLater, kLater, kFirst, kLater, kLater,
                                    kFirst, kLater, kLater}));
}

TEST_F(A2UpdateEraseTest, AReEraseIsAWholeEraseAndIsFollowedByAPoll) {
  update.flash.maxSectorEraseTime = 700;
  const Messages cycles{Hex("02 55 06 00 00 AA 00"), Hex("02 00 01 00 00 30 00")};
  const Messages poll{Hex("03 00 01 00 00")};
  Poll({false, false, true, true, true, true, true, true});
  ASSERT_TRUE(update.RunStep(0));
  const Messages erases =
      Joined({cycles, poll, poll, cycles, poll, poll, poll, cycles, poll, poll, poll});
  ASSERT_GE(keyboard.commands.size(), erases.size());
  EXPECT_EQ(Messages(keyboard.commands.begin(),
                     keyboard.commands.begin() + static_cast<ptrdiff_t>(erases.size())),
            erases);
}

// Five late polls erase again, each of them with success; a sixth ends the erase.
TEST_F(A2UpdateEraseTest, AFifthReEraseMaySucceed) {
  update.flash.maxSectorEraseTime = 700;
  Poll({false});
  for (int reErase = 0; reErase < 4; reErase++) Poll({false, true, true});
  Poll({true, true, true, true});
  EXPECT_TRUE(update.RunStep(0));
  EXPECT_EQ(Erases(), 6U);
}

TEST_F(A2UpdateEraseTest, ThereIsNoSixthReErase) {
  update.flash.maxSectorEraseTime = 700;
  Poll({false});
  for (int reErase = 0; reErase < 5; reErase++) Poll({false, true, true});
  Poll({true});
  EXPECT_FALSE(update.RunStep(0));
  EXPECT_EQ(Erases(), 6U);
  EXPECT_EQ(keyboard.CountOf(0x04), 0U);
}

TEST_F(A2UpdateEraseTest, TheResultOfAReEraseIsIgnored) {
  update.flash.maxSectorEraseTime = 720;
  Poll({false, false, false});
  keyboard.AnswerNext(0x02, {Hex("02 55 06 00 00 AA 00")});
  keyboard.AnswerNext(0x02, {Hex("02 00 01 00 00 30 00")});
  keyboard.AnswerNext(0x02, {Hex("02 55 06 00 00 AA FF")});
  EXPECT_TRUE(update.RunStep(0));
  // The one that failed sent one cycle; the match that came late erased a third time.
  EXPECT_EQ(keyboard.CountOf(0x02), 2U + 1U + 2U);
}

// At 2000 milliseconds an erase polls 67 times before it is late.
TEST_F(A2UpdateEraseTest, ASectorThatNeverErasesCosts6Erases407PollsAnd12220Milliseconds) {
  keyboard.polledWord = Hex("00 00");
  EXPECT_FALSE(update.RunStep(0));
  EXPECT_EQ(Erases(), 6U);
  EXPECT_EQ(keyboard.CountOf(0x03), 407U);
  EXPECT_EQ(pauses.lengths.size(), 407U);
  EXPECT_EQ(Waited(), milliseconds(12220));
  EXPECT_EQ(keyboard.CountOf(0x04), 0U);
}

// The counter is the sector's: the second attempt at programming has five re-erases of its own.
TEST_F(A2UpdateEraseTest, EachAttemptCountsItsReErasesAnew) {
  update.flash.maxSectorEraseTime = 699;
  keyboard.AnswerNext(0x07, {Hex("00")});
  EXPECT_TRUE(update.RunStep(0));
  EXPECT_EQ(Erases(), 12U);
}

TEST_F(A2UpdateEraseTest, AFailedReadOfAPollEndsTheStep) {
  keyboard.AnswerNext(0x03, {kErasedWord});
  keyboard.AnswerNext(0x03, {std::nullopt});
  EXPECT_FALSE(update.RunStep(0));
  EXPECT_EQ(Erases(), 1U);
  EXPECT_EQ(keyboard.CountOf(0x03), 2U);
}

TEST_F(A2UpdateEraseTest, AReplyOfTotal0EndsTheStep) {
  for (const uint8_t code : Bytes{0x02, 0x03}) {
    keyboard.commands.clear();
    keyboard.AnswerTotal0(code);
    EXPECT_FALSE(update.RunStep(0));
    EXPECT_EQ(keyboard.CountOf(code), 1U);
    EXPECT_EQ(keyboard.CountOf(0x04), 0U);
  }
}

TEST_F(A2UpdateEraseTest, AFailedSendEndsTheStepWhereverItHappens) {
  for (size_t send = 1; send <= 4; send++) {
    SCOPED_TRACE(send);
    hidapi.writes.clear();
    hidapi.failingWrite = send;
    EXPECT_FALSE(update.RunStep(0));
    EXPECT_EQ(hidapi.writes.size(), send);
  }
}

}  // namespace
}  // namespace hollin
