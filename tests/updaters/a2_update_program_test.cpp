// SPDX-License-Identifier: MIT
// How an A2 sector is programmed: the chip's cycles, the blocks, and starting over.
#include <optional>
#include <ostream>

#include "tests/updaters/a2_test.h"

namespace hollin {
namespace {

const Messages kErase{Hex("02 55 06 00 00 AA 00"), Hex("02 00 01 00 00 30 00"),
                      Hex("03 00 01 00 00"), Hex("03 00 01 00 00")};
const Messages kWordProgram{Hex("04 02 55 05 A0 00")};
const Messages kWriteBuffer{Hex("05 02 00 03 FF 04 FF AA 02 25 00"),
                            Hex("06 02 01 FF AB 02 29 00")};
// Bytes 00 to 0F in two blocks.
const Messages kHeaders{Hex("07 00 01 00 00 04 00 0C 10 00 00 00"),
                        Hex("07 04 01 00 00 04 00 2C 30 00 00 00")};
const Messages kBlocks{Hex("00 01 02 03 04 05 06 07"), Hex("08 09 0A 0B 0C 0D 0E 0F")};

class A2UpdateProgramTest : public A2Test {
 protected:
  A2UpdateProgramTest() { static_cast<void>(Plan(Counting(16))); }
};

TEST_F(A2UpdateProgramTest, ASectorIsErasedStartedAndSentInBlocks) {
  ASSERT_TRUE(update.RunStep(0));
  EXPECT_EQ(hidapi.SentMessages(),
            Joined({kErase, kWordProgram, {kHeaders[0], kBlocks[0], kHeaders[1], kBlocks[1]}}));
}

TEST_F(A2UpdateProgramTest, InWriteBufferModeTwoCommandsStartTheSector) {
  update.flash.writeBufferMode = true;
  ASSERT_TRUE(update.RunStep(0));
  EXPECT_EQ(hidapi.SentMessages(),
            Joined({kErase, kWriteBuffer, {kHeaders[0], kBlocks[0], kHeaders[1], kBlocks[1]}}));
}

TEST_F(A2UpdateProgramTest, CyclesAndParametersKeepTheirLowBits) {
  A2Description& flash = update.flash;
  flash.writeBufferMode = true;
  flash.writeBufferCount = 0x1A0;
  flash.writeBufferPA1 = 0x1A1;
  flash.writeBufferPA2 = 0x1A2;
  flash.writeBufferSA1 = 0x1A3;
  flash.writeBufferSA2 = 0x1A4;
  flash.writeBufferCycleCount = 2;
  flash.writeBufferAddrs = {0x12345, 0x111};
  flash.writeBufferData = {0x6789A, 0x222};
  flash.programBufferSA1 = 0x1B1;
  flash.programBufferSA2 = 0x1B2;
  flash.programBufferCycleCount = 2;
  flash.programBufferAddrs = {0x23456, 0x333};
  flash.programBufferData = {0x789AB, 0x444};
  ASSERT_TRUE(update.RunStep(0));
  EXPECT_EQ(keyboard.commands[4], Hex("05 04 A0 A1 A2 A3 A4 45 23 9A 78 11 01 22 02"));
  EXPECT_EQ(keyboard.commands[5], Hex("06 04 B1 B2 56 34 AB 89 33 03 44 04"));
}

TEST_F(A2UpdateProgramTest, WordProgramCyclesKeepTheirLow16Bits) {
  update.flash.programCycleCount = 2;
  update.flash.programAddrs = {0x12345, 0x111};
  update.flash.programData = {0x6789A, 0x222};
  ASSERT_TRUE(update.RunStep(0));
  EXPECT_EQ(keyboard.commands[4], Hex("04 04 45 23 9A 78 11 01 22 02"));
}

// 300 cycles: 600 words, announced by 0x58; 22 reports each way.
TEST_F(A2UpdateProgramTest, HundredsOfCyclesTravelWhole) {
  update.flash.programCycleCount = 300;
  update.flash.programAddrs.assign(300, 0x0201);
  update.flash.programData.assign(300, 0x0403);
  ASSERT_TRUE(update.CheckConfig());
  ASSERT_TRUE(update.RunStep(0));
  Bytes expected = Hex("04 58");
  for (int cycle = 0; cycle < 300; cycle++) expected = expected + Hex("01 02 03 04");
  EXPECT_EQ(keyboard.commands[4], expected);
}

TEST_F(A2UpdateProgramTest, WithoutCyclesTheCommandsAreSentBare) {
  update.flash.programCycleCount = 0;
  update.flash.programAddrs = {};
  update.flash.programData = {};
  ASSERT_TRUE(update.CheckConfig());
  ASSERT_TRUE(update.RunStep(0));
  EXPECT_EQ(keyboard.commands[4], Hex("04 00"));
}

struct Resend {
  uint8_t code;
  size_t wrongEchoes;
  size_t sends;
  size_t erases;  // 2 where the first attempt failed
};

// For the names of the cases; GoogleTest would print the bytes between the fields too.
void PrintTo(const Resend& resend, std::ostream* output) {
  *output << "command " << int{resend.code} << ", wrong echoes " << resend.wrongEchoes;
}

class A2UpdateResendTest : public A2UpdateProgramTest,
                           public testing::WithParamInterface<Resend> {};

TEST_P(A2UpdateResendTest, AWrongEchoIsAnsweredBySendingAgain) {
  const Resend& c = GetParam();
  update.flash.writeBufferMode = c.code != 0x04;
  keyboard.AnswerNext(c.code, {Bytes{c.code}}, c.wrongEchoes);
  EXPECT_TRUE(update.RunStep(0));
  EXPECT_EQ(keyboard.CountOf(c.code), c.sends);
  EXPECT_EQ(Erases(), c.erases);
}

INSTANTIATE_TEST_SUITE_P(AtMost10ForWordProgram, A2UpdateResendTest,
                         testing::Values(Resend{0x04, 1, 2, 1}, Resend{0x04, 9, 10, 1},
                                         Resend{0x04, 10, 11, 1}, Resend{0x04, 11, 12, 2}));
INSTANTIATE_TEST_SUITE_P(AtMost5ForTheWriteBuffer, A2UpdateResendTest,
                         testing::Values(Resend{0x05, 4, 5, 1}, Resend{0x05, 5, 6, 1},
                                         Resend{0x05, 6, 7, 2}));
INSTANTIATE_TEST_SUITE_P(AtMost5ForTheProgramBuffer, A2UpdateResendTest,
                         testing::Values(Resend{0x06, 4, 5, 1}, Resend{0x06, 5, 6, 1},
                                         Resend{0x06, 6, 7, 2}));

TEST_F(A2UpdateProgramTest, EveryByteOfACyclesEchoCounts) {
  const Bytes command = Hex("04 02 55 05 A0 00");
  for (size_t i = 0; i < command.size(); i++) {
    keyboard.commands.clear();
    Bytes echo = command;
    echo[i] ^= 0x80;
    keyboard.AnswerNext(0x04, {echo});
    EXPECT_TRUE(update.RunStep(0));
    EXPECT_EQ(keyboard.CountOf(0x04), 2U) << "byte " << i;
  }
}

TEST_F(A2UpdateProgramTest, BothWriteBufferCommandsHaveFiveResendsOfTheirOwn) {
  update.flash.writeBufferMode = true;
  keyboard.AnswerNext(0x05, {Hex("05")}, 5);
  keyboard.AnswerNext(0x06, {Hex("06")}, 5);
  EXPECT_TRUE(update.RunStep(0));
  EXPECT_EQ(keyboard.CountOf(0x05), 6U);
  EXPECT_EQ(keyboard.CountOf(0x06), 6U);
  EXPECT_EQ(Erases(), 1U);
}

TEST_F(A2UpdateProgramTest, AFailedReadOfACyclesEchoIsNotAnsweredBySendingAgain) {
  keyboard.AnswerNext(0x04, {std::nullopt});
  EXPECT_TRUE(update.RunStep(0));
  EXPECT_EQ(keyboard.CountOf(0x04), 2U);
  EXPECT_EQ(Erases(), 2U);
}

TEST_F(A2UpdateProgramTest, SixAttemptsAreMade) {
  for (const size_t failures : {4U, 5U}) {
    keyboard.commands.clear();
    keyboard.AnswerNext(0x07, {Hex("00")}, failures);
    EXPECT_TRUE(update.RunStep(0));
    EXPECT_EQ(Erases(), failures + 1);
  }
}

TEST_F(A2UpdateProgramTest, AfterTheSixthFailedAttemptTheStepFails) {
  keyboard.AnswerNext(0x07, {Hex("00")}, 6);
  EXPECT_FALSE(update.RunStep(0));
  EXPECT_EQ(Erases(), 6U);
  EXPECT_EQ(keyboard.CountOf(0x07), 6U);
  EXPECT_EQ(update.bytesDone, 0U);
}

TEST_F(A2UpdateProgramTest, AnotherAttemptErasesAgainAndSendsFromTheFirstBlock) {
  keyboard.AnswerNextData({Hex("F4"), Hex("D4")});
  keyboard.AnswerNextData({Hex("F5")});
  ASSERT_TRUE(update.RunStep(0));
  const Messages attempt =
      Joined({kErase, kWordProgram, {kHeaders[0], kBlocks[0], kHeaders[1], kBlocks[1]}});
  EXPECT_EQ(hidapi.SentMessages(), Joined({attempt, attempt}));
  EXPECT_EQ(update.readPos, 16U);
  EXPECT_EQ(update.bytesDone, 16U);
}

TEST_F(A2UpdateProgramTest, AFailedEraseEndsTheStepEvenAfterAFailedAttempt) {
  keyboard.AnswerNext(0x07, {Hex("00")});
  for (const Bytes& echo : {kErase[0], kErase[1], Hex("02")}) keyboard.AnswerNext(0x02, {echo});
  EXPECT_FALSE(update.RunStep(0));
  EXPECT_EQ(keyboard.CountOf(0x02), 3U);
}

TEST_F(A2UpdateProgramTest, TheHeadersEchoCountsInItsFirst9Bytes) {
  for (size_t i = 0; i < 12; i++) {
    SCOPED_TRACE(i);
    keyboard.commands.clear();
    Bytes echo = kHeaders[0];
    echo[i] ^= 0x01;
    keyboard.AnswerNext(0x07, {echo});
    EXPECT_TRUE(update.RunStep(0));
    EXPECT_EQ(Erases(), i < 9 ? 2U : 1U);
  }
}

// What goes wrong with a block ends the attempt, and the attempt alone.
TEST_F(A2UpdateProgramTest, AFailedBlockTransferIsOneOfTheSixAttempts) {
  const std::vector<AnsweringKeyboard::Replies> statuses{{Hex("F5")},
                                                         {Hex("D4")},
                                                         {Hex("F4"), Hex("D5")},
                                                         {Hex("F4"), Hex("F4")},
                                                         {std::nullopt},
                                                         {Hex("F4"), std::nullopt}};
  for (const auto& status : statuses) {
    keyboard.commands.clear();
    keyboard.AnswerNextData(status);
    EXPECT_TRUE(update.RunStep(0));
    EXPECT_EQ(Erases(), 2U);
  }
}

TEST_F(A2UpdateProgramTest, AReplyOfTotal0IsAFailedReceive) {
  keyboard.AnswerTotal0(0x07);
  EXPECT_TRUE(update.RunStep(0));
  EXPECT_EQ(Erases(), 2U);
}

// A failed receive, unlike a wrong echo, is not answered by sending again.
TEST_F(A2UpdateProgramTest, ACyclesEchoOfTotal0EndsTheAttempt) {
  for (const uint8_t code : Bytes{0x04, 0x05, 0x06}) {
    SCOPED_TRACE(code);
    update.flash.writeBufferMode = code != 0x04;
    keyboard.commands.clear();
    keyboard.AnswerTotal0(code);
    EXPECT_TRUE(update.RunStep(0));
    EXPECT_EQ(keyboard.CountOf(code), 2U);
    EXPECT_EQ(Erases(), 2U);
  }
}

TEST_F(A2UpdateProgramTest, AnotherAttemptAtALaterSectorBeginsWhereThatSectorBegan) {
  ASSERT_TRUE(Plan(Counting(40)));
  ASSERT_TRUE(RunSteps(1));
  hidapi.writes.clear();
  keyboard.dataOfBlocks.clear();
  keyboard.AnswerNextData({Hex("F4"), Hex("D4")});
  keyboard.AnswerNextData({Hex("F4"), Hex("D5")});
  ASSERT_TRUE(update.RunStep(1));
  EXPECT_EQ(keyboard.dataOfBlocks,
            (Messages{Counting(8, 16), Counting(8, 24), Counting(8, 16), Counting(8, 24)}));
  EXPECT_EQ(update.readPos, 32U);
  ASSERT_TRUE(update.RunStep(2));
  EXPECT_EQ(keyboard.dataOfBlocks.back(), Counting(8, 32));
}

// Four messages erase, the fifth starts the sector and the sixth is the header.
TEST_F(A2UpdateProgramTest, AFailedSendOfACommandEndsTheAttempt) {
  for (const size_t send : {5U, 6U}) {
    hidapi.failingWrite = send;
    keyboard.commands.clear();
    EXPECT_TRUE(update.RunStep(0));
    EXPECT_EQ(Erases(), 2U);
  }
}

TEST_F(A2UpdateProgramTest, AFailedSendOfABlockEndsTheAttempt) {
  keyboard.AnswerNextData({});
  hidapi.onWrite = [this, answer = hidapi.onWrite](const Bytes& report) {
    const size_t blocks = keyboard.dataOfBlocks.size();
    answer(report);
    hidapi.writeResult.reset();
    if (blocks == 0 && keyboard.dataOfBlocks.size() == 1) hidapi.writeResult = -1;
  };
  EXPECT_TRUE(update.RunStep(0));
  EXPECT_EQ(Erases(), 2U);
  EXPECT_EQ(keyboard.dataOfBlocks, (Messages{kBlocks[0], kBlocks[0], kBlocks[1]}));
}

TEST_F(A2UpdateProgramTest, ASectorIsCutIntoBlocksOfTheBlockSizeInWords) {
  struct Case {
    uint32_t blockSize;
    std::vector<size_t> blocks;  // bytes
  };
  const std::vector<Case> cases{{2, {4, 4, 4, 4}}, {6, {12, 4}}, {8, {16}}, {10, {16}}};
  for (const Case& c : cases) {
    update.flash.blockSize = c.blockSize;
    keyboard.dataOfBlocks.clear();
    ASSERT_TRUE(update.RunStep(0));
    std::vector<size_t> sizes;
    for (const Bytes& block : keyboard.dataOfBlocks) sizes.push_back(block.size());
    EXPECT_EQ(sizes, c.blocks);
  }
}

TEST_F(A2UpdateProgramTest, BlockAddressesAndLengthsCountWords) {
  update.flash.blockSize = 6;
  ASSERT_TRUE(update.RunStep(0));
  EXPECT_EQ(keyboard.commands[5], Hex("07 00 01 00 00 06 00 1E 24 00 00 00"));
  EXPECT_EQ(keyboard.commands[6], Hex("07 06 01 00 00 02 00 1A 1C 00 00 00"));
}

TEST_F(A2UpdateProgramTest, ABlockOf65536WordsIsAnnouncedAs0) {
  update.flash.sectorAddrs = {0, 0x10000};
  update.flash.blockSize = 0x10000;
  Bytes image = Filled(0x20000, 0);
  image[0x1FFFE] = 0x34;
  image[0x1FFFF] = 0x12;
  ASSERT_TRUE(Plan(image));
  ASSERT_TRUE(update.RunStep(0));
  EXPECT_EQ(keyboard.commands[5], Hex("07 00 00 00 00 00 00 34 12 00 00 00"));
  EXPECT_EQ(keyboard.dataOfBlocks, Messages{image});
}

// A sector has 8 words.
TEST_F(A2UpdateProgramTest, TheDataOfASectorOfOneBlockHas1SecondAndOfSeveral3) {
  struct Case {
    uint32_t blockSize;
    double seconds;
  };
  for (const Case& c : std::vector<Case>{{2, 3.0}, {4, 3.0}, {6, 3.0}, {8, 1.0}, {10, 1.0}}) {
    update.flash.blockSize = c.blockSize;
    ASSERT_TRUE(Plan(Counting(32)));
    EXPECT_EQ(update.DataTimeOut(0), c.seconds) << c.blockSize;
  }
}

// Blocks have 4 words; behind the first sector's 16 bytes remain 7, 8, 9, 10 and 11.
TEST_F(A2UpdateProgramTest, TheLastSectorsTimeDependsOnTheBytesThatRemain) {
  struct Case {
    size_t length;
    double seconds;
  };
  for (const Case& c : std::vector<Case>{
           {16 + 7, 1.0}, {16 + 8, 1.0}, {16 + 9, 1.0}, {16 + 10, 3.0}, {16 + 11, 3.0}}) {
    ASSERT_TRUE(Plan(Counting(c.length)));
    ASSERT_TRUE(RunSteps(1));
    EXPECT_EQ(update.DataTimeOut(1), c.seconds) << c.length;
  }
}

}  // namespace
}  // namespace hollin
