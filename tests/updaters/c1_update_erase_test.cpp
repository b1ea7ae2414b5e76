// SPDX-License-Identifier: MIT
// How a C1 sector is erased: the command, and the polls of its status.
#include <chrono>
#include <optional>

#include "tests/updaters/c1_test.h"

namespace hollin {
namespace {

using std::chrono::milliseconds;

const Bytes kErase = Hex("02 40 00 00 00");
const Bytes kStatus = Hex("03 40 00 00 00");
const Bytes kBusy = Hex("00 00 00 00 00 00 00");

// The first sector is reserved and the second, too: data begins at 0x40.
class C1UpdateEraseTest : public C1Test {
 protected:
  C1UpdateEraseTest() {
    update.flash.reservedSectors = {0, 0x20};
    static_cast<void>(Plan(Counting(32)));
  }
};

TEST_F(C1UpdateEraseTest, TheSectorIsErasedAndItsStatusAskedFor) {
  ASSERT_TRUE(update.RunStep(0));
  EXPECT_EQ(keyboard.commands[0], kErase);
  EXPECT_EQ(keyboard.commands[1], kStatus);
  EXPECT_EQ(keyboard.CountOf(0x02), 1U);
}

TEST_F(C1UpdateEraseTest, AnEraseThatEndsAtTheFirstPollWaits20Milliseconds) {
  ASSERT_TRUE(update.RunStep(0));
  EXPECT_EQ(keyboard.CountOf(0x03), 1U);
  EXPECT_EQ(pauses.lengths, std::vector<milliseconds>{milliseconds(20)});
}

TEST_F(C1UpdateEraseTest, EveryByteOfTheEchoCounts) {
  for (size_t i = 0; i < kErase.size(); i++) {
    keyboard.commands.clear();
    Bytes echo = kErase;
    echo[i] ^= 0x01;
    keyboard.AnswerNext(0x02, {echo});
    EXPECT_FALSE(update.RunStep(0)) << "byte " << i;
    EXPECT_EQ(keyboard.commands, Messages{kErase});
  }
}

TEST_F(C1UpdateEraseTest, AnEchoThatStopsEarlyIsWrong) {
  keyboard.AnswerNext(0x02, {Hex("02 40 00 00")});
  EXPECT_FALSE(update.RunStep(0));
}

TEST_F(C1UpdateEraseTest, APollReadsBytes5And6Alone) {
  keyboard.AnswerNext(0x03, {Hex("99 88 77 66 55 FF FF")});
  ASSERT_TRUE(update.RunStep(0));
  EXPECT_EQ(keyboard.CountOf(0x03), 1U);
}

TEST_F(C1UpdateEraseTest, BothBytesMustReadErased) {
  keyboard.AnswerNext(0x03, {Hex("FF FF FF FF FF FE FF")});
  keyboard.AnswerNext(0x03, {Hex("FF FF FF FF FF FF FE")});
  ASSERT_TRUE(update.RunStep(0));
  EXPECT_EQ(keyboard.CountOf(0x03), 3U);
}

TEST_F(C1UpdateEraseTest, AStatusThatStopsEarlyIsNotErased) {
  keyboard.AnswerNext(0x03, {Hex("03 40 00 00 00 FF")});
  keyboard.AnswerNext(0x03, {Hex("03")});
  ASSERT_TRUE(update.RunStep(0));
  EXPECT_EQ(keyboard.CountOf(0x03), 3U);
}

TEST_F(C1UpdateEraseTest, The106thPollMayStillSucceed) {
  for (const size_t busy : {104U, 105U}) {
    keyboard.commands.clear();
    keyboard.AnswerNext(0x03, {kBusy}, busy);
    EXPECT_TRUE(update.RunStep(0));
    EXPECT_EQ(keyboard.CountOf(0x03), busy + 1);
  }
}

TEST_F(C1UpdateEraseTest, After106PollsAnd2120MillisecondsTheStepFails) {
  keyboard.AnswerNext(0x03, {kBusy}, 106);
  EXPECT_FALSE(update.RunStep(0));
  EXPECT_EQ(keyboard.CountOf(0x02), 1U);
  EXPECT_EQ(keyboard.CountOf(0x03), 106U);
  EXPECT_EQ(keyboard.CountOf(0x07), 0U);
  EXPECT_EQ(pauses.lengths, std::vector<milliseconds>(106, milliseconds(20)));
}

TEST_F(C1UpdateEraseTest, AFailedReadEndsTheStep) {
  keyboard.AnswerNext(0x03, {kBusy});
  keyboard.AnswerNext(0x03, {std::nullopt});
  EXPECT_FALSE(update.RunStep(0));
  EXPECT_EQ(keyboard.CountOf(0x02), 1U);
}

TEST_F(C1UpdateEraseTest, AReplyOfTotal0EndsTheStep) {
  for (const uint8_t code : Bytes{0x02, 0x03}) {
    keyboard.commands.clear();
    keyboard.AnswerTotal0(code);
    EXPECT_FALSE(update.RunStep(0));
    EXPECT_EQ(keyboard.CountOf(code), 1U);
    EXPECT_EQ(keyboard.CountOf(0x07), 0U);
  }
}

TEST_F(C1UpdateEraseTest, AFailedSendEndsTheStep) {
  for (const size_t send : {1U, 2U, 3U}) {
    if (send == 3) keyboard.AnswerNext(0x03, {kBusy});
    hidapi.writes.clear();
    hidapi.failingWrite = send;
    EXPECT_FALSE(update.RunStep(0));
    EXPECT_EQ(hidapi.writes.size(), send);
  }
}

TEST_F(C1UpdateEraseTest, AFailedEraseEndsTheStepEvenAfterAFailedAttempt) {
  keyboard.AnswerNext(0x02, {kErase});
  keyboard.AnswerNext(0x07, {Hex("00")});
  keyboard.AnswerNext(0x02, {Hex("00")});
  EXPECT_FALSE(update.RunStep(0));
  EXPECT_EQ(keyboard.CountOf(0x02), 2U);
}

TEST_F(C1UpdateEraseTest, EachEraseConnects) {
  HidDevice::Close();
  hidapi.calls.clear();
  EXPECT_TRUE(update.RunStep(0));
  EXPECT_EQ(hidapi.CountOf("hid_open"), 1U);
}

TEST_F(C1UpdateEraseTest, WithoutAKeyboardNothingIsSent) {
  HidDevice::Close();
  hidapi.deviceCount = 0;
  EXPECT_FALSE(update.RunStep(0));
  EXPECT_TRUE(hidapi.writes.empty());
}

}  // namespace
}  // namespace hollin
