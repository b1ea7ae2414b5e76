// SPDX-License-Identifier: MIT
// How a C1 sector is programmed: the chunks, and starting over.
#include <optional>

#include "tests/updaters/c1_test.h"

namespace hollin {
namespace {

const Messages kEraseMessages{Hex("02 00 00 00 00"), Hex("03 00 00 00 00")};
// Bytes 00 to 1F.
const Bytes kHeader = Hex("07 00 00 00 00 20 00 00 00 F0 01 00");

class C1UpdateProgramTest : public C1Test {
 protected:
  C1UpdateProgramTest() { static_cast<void>(Plan(Counting(32))); }

  // A flash of sectors of 64 KiB and an image whose n-th 8 KiB hold nothing but n, from 1.
  [[nodiscard]] bool PlanChunks(size_t length) {
    update.flash.sectorSize = 65536;
    Bytes image;
    for (uint8_t n = 1; image.size() < length; n++) image.insert(image.end(), 8192, n);
    image.resize(length);
    return Plan(image);
  }

  [[nodiscard]] Messages Headers() const {
    Messages found;
    for (const Bytes& command : keyboard.commands) {
      if (command.front() == 0x07) found.push_back(command);
    }
    return found;
  }

  [[nodiscard]] std::vector<size_t> ChunkSizes() const {
    std::vector<size_t> sizes;
    for (const Bytes& block : keyboard.dataOfBlocks) sizes.push_back(block.size());
    return sizes;
  }
};

TEST_F(C1UpdateProgramTest, ASectorIsErasedAnnouncedAndSent) {
  ASSERT_TRUE(update.RunStep(0));
  EXPECT_EQ(hidapi.SentMessages(),
            (Messages{kEraseMessages[0], kEraseMessages[1], kHeader, Counting(32)}));
  EXPECT_EQ(update.readPosition, 32U);
  EXPECT_EQ(update.bytesDone, 32U);
}

TEST_F(C1UpdateProgramTest, ASectorOf65536BytesGoesInEightChunksEachWithItsHeaderAndSum) {
  ASSERT_TRUE(PlanChunks(65536));
  ASSERT_TRUE(update.RunStep(0));
  EXPECT_EQ(
      Headers(),
      (Messages{
          Hex("07 00 00 00 00 00 20 00 00 00 20 00"), Hex("07 00 20 00 00 00 20 00 00 00 40 00"),
          Hex("07 00 40 00 00 00 20 00 00 00 60 00"), Hex("07 00 60 00 00 00 20 00 00 00 80 00"),
          Hex("07 00 80 00 00 00 20 00 00 00 A0 00"), Hex("07 00 A0 00 00 00 20 00 00 00 C0 00"),
          Hex("07 00 C0 00 00 00 20 00 00 00 E0 00"), Hex("07 00 E0 00 00 00 20 00 00 00 00 00")}));
  ASSERT_EQ(keyboard.dataOfBlocks.size(), 8U);
  for (uint8_t n = 1; n <= 8; n++) EXPECT_EQ(keyboard.dataOfBlocks[n - 1U], Filled(8192, n));
}

TEST_F(C1UpdateProgramTest, TheLastChunkTakesWhatRemains) {
  struct Case {
    size_t length;
    std::vector<size_t> chunks;
  };
  const std::vector<Case> cases{
      {8191, {8191}}, {8192, {8192}}, {8193, {8192, 1}}, {16385, {8192, 8192, 1}}};
  for (const Case& c : cases) {
    keyboard.dataOfBlocks.clear();
    ASSERT_TRUE(PlanChunks(c.length));
    ASSERT_TRUE(update.RunStep(0));
    EXPECT_EQ(ChunkSizes(), c.chunks);
  }
}

TEST_F(C1UpdateProgramTest, ALastSectorOfOneByteIsOneChunkOfOneByte) {
  ASSERT_TRUE(Plan(Counting(97)));
  EXPECT_EQ(update.StepCount(), 6U);
  ASSERT_TRUE(RunSteps(4));
  EXPECT_EQ(Headers().back(), Hex("07 80 00 00 00 01 00 00 00 60 00 00"));
  EXPECT_EQ(keyboard.dataOfBlocks.back(), Hex("60"));
}

TEST_F(C1UpdateProgramTest, TheHeadersEchoCountsInItsFirst11Bytes) {
  for (size_t i = 0; i < 12; i++) {
    SCOPED_TRACE(i);
    keyboard.commands.clear();
    Bytes echo = kHeader;
    echo[i] ^= 0x01;
    keyboard.AnswerNext(0x07, {echo});
    EXPECT_TRUE(update.RunStep(0));
    EXPECT_EQ(keyboard.CountOf(0x02), i < 11 ? 2U : 1U);
  }
}

TEST_F(C1UpdateProgramTest, AFailureInTheMiddleErasesAgainAndSendsFromTheFirstChunk) {
  ASSERT_TRUE(PlanChunks(8193));
  keyboard.AnswerNextData({Hex("F4")});
  keyboard.AnswerNextData({Hex("F5")});
  ASSERT_TRUE(update.RunStep(0));
  EXPECT_EQ(ChunkSizes(), (std::vector<size_t>{8192, 1, 8192, 1}));
  EXPECT_EQ(keyboard.dataOfBlocks[2], Filled(8192, 1));
  EXPECT_EQ(keyboard.dataOfBlocks[3], Filled(1, 2));
  EXPECT_EQ(keyboard.CountOf(0x02), 2U);
  EXPECT_EQ(update.readPosition, 8193U);
  EXPECT_EQ(update.bytesDone, 65536U);
}

TEST_F(C1UpdateProgramTest, AnotherAttemptAtALaterSectorBeginsWhereThatSectorBegan) {
  ASSERT_TRUE(Plan(Counting(70)));
  ASSERT_TRUE(RunSteps(1));
  keyboard.dataOfBlocks.clear();
  keyboard.AnswerNextData({Hex("F5")}, 2);
  ASSERT_TRUE(update.RunStep(1));
  EXPECT_EQ(keyboard.dataOfBlocks,
            (Messages{Counting(32, 32), Counting(32, 32), Counting(32, 32)}));
  EXPECT_EQ(update.readPosition, 64U);
  ASSERT_TRUE(update.RunStep(2));
  EXPECT_EQ(keyboard.dataOfBlocks.back(), Counting(6, 64));
}

TEST_F(C1UpdateProgramTest, AReplyOfTotal0EndsTheAttempt) {
  keyboard.AnswerTotal0(0x07);
  EXPECT_TRUE(update.RunStep(0));
  EXPECT_EQ(keyboard.CountOf(0x02), 2U);
}

TEST_F(C1UpdateProgramTest, WhateverFailsInAChunkEndsTheAttempt) {
  using Replies = AnsweringKeyboard::Replies;
  for (const Replies& header : {Replies{std::nullopt}, Replies{Hex("07")}}) {
    keyboard.AnswerNext(0x07, header);
    keyboard.commands.clear();
    EXPECT_TRUE(update.RunStep(0));
    EXPECT_EQ(keyboard.CountOf(0x02), 2U);
  }
  for (const Replies& status : {Replies{std::nullopt}, Replies{Hex("D4")}, Replies{Hex("F1")}}) {
    keyboard.AnswerNextData(status);
    keyboard.commands.clear();
    EXPECT_TRUE(update.RunStep(0));
    EXPECT_EQ(keyboard.CountOf(0x02), 2U);
  }
}

TEST_F(C1UpdateProgramTest, AFailedSendEndsTheAttempt) {
  hidapi.failingWrite = 3;
  EXPECT_TRUE(update.RunStep(0));
  EXPECT_EQ(keyboard.CountOf(0x02), 2U);
}

TEST_F(C1UpdateProgramTest, SixAttemptsAreMade) {
  for (const size_t failures : {4U, 5U}) {
    keyboard.commands.clear();
    keyboard.AnswerNext(0x07, {Hex("00")}, failures);
    EXPECT_TRUE(update.RunStep(0));
    EXPECT_EQ(keyboard.CountOf(0x02), failures + 1);
  }
}

TEST_F(C1UpdateProgramTest, AfterTheSixthFailedAttemptTheStepFails) {
  keyboard.AnswerNextData({Hex("00")}, 6);
  EXPECT_FALSE(update.RunStep(0));
  EXPECT_EQ(keyboard.CountOf(0x02), 6U);
  EXPECT_EQ(keyboard.dataOfBlocks.size(), 6U);
  EXPECT_EQ(update.bytesDone, 0U);
  EXPECT_EQ(update.readPosition, 0U);
}

TEST_F(C1UpdateProgramTest, DataOfUpTo8192BytesASectorHas1SecondAndOfMore3) {
  update.flash.sectorSize = 65536;
  update.image.reset();
  for (const int64_t length : {1, 8191, 8192}) {
    ASSERT_TRUE(PlanLength(length));
    EXPECT_EQ(update.DataTimeOut(0), 1.0) << length;
  }
  for (const int64_t length : {8193, 65535, 65536}) {
    ASSERT_TRUE(PlanLength(length));
    EXPECT_EQ(update.DataTimeOut(0), 3.0) << length;
  }
}

TEST_F(C1UpdateProgramTest, TheLastSectorsTimeDependsOnTheBytesThatRemain) {
  update.flash.sectorSize = 65536;
  update.image.reset();
  ASSERT_TRUE(PlanLength(3 * 65536 + 1));
  EXPECT_EQ(update.DataTimeOut(2), 3.0);
  EXPECT_EQ(update.DataTimeOut(3), 1.0);
}

}  // namespace
}  // namespace hollin
