// SPDX-License-Identifier: MIT
#include "simulator/keyboard.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <random>
#include <string>

#include "tests/simulator/host.h"

namespace hollin::simulator {
namespace {

class KeyboardTest : public testing::Test {
 protected:
  // A block of three bytes 01 02 03 at address 0x10, whose sum is 6.
  const Bytes header = {0x07, 0x10, 0, 0, 0, 3, 0, 6, 0, 0, 0, 0};
  const Bytes data = {1, 2, 3};

  Keyboard keyboard;
  Host host{keyboard};
};

TEST_F(KeyboardTest, TheModeCommandIsAnsweredInOneReport) {
  Bytes report(64, 0xEE);
  const Bytes head = {0x51, 4, 0, 0, 0, 0, 0, 0, 0, 0x01, 0x0A, 0x4D, 0x02};
  std::ranges::copy(head, report.begin());
  Deliveries deliveries;
  ASSERT_TRUE(keyboard.TakeReport(report, deliveries));
  Bytes expected(64, 0);
  const Bytes start = {0x51, 0, 0, 0, 0, 1, 0, 0, 0, 0xF1};
  std::ranges::copy(start, expected.begin());
  ASSERT_EQ(deliveries.size(), 1U);
  EXPECT_EQ(deliveries[0].report, expected);
}

TEST_F(KeyboardTest, UnknownModesAndMalformedModeCommandsAreRefused) {
  EXPECT_EQ(host.Ask({0x01, 0x0A, 0x4D, 0x04}), kRefusal);
  EXPECT_EQ(host.Ask({0x01, 0x0B, 0x4D, 0x02}), kRefusal);
  EXPECT_EQ(host.Ask({0x01, 0x0A, 0x4E, 0x02}), kRefusal);
  EXPECT_EQ(host.Ask({0x01, 0x0A, 0x4D}), kRefusal);
  EXPECT_EQ(host.Ask({0x01, 0x0A, 0x4D, 0x02, 0x00}), kRefusal);
}

TEST_F(KeyboardTest, AModeNumberIsAnOption) {
  Keyboard other({.a1 = {.mode = 5}});
  Host otherHost(other);
  EXPECT_EQ(otherHost.Ask(kModeA1), kRefusal);
  EXPECT_EQ(otherHost.Ask({0x01, 0x0A, 0x4D, 0x05}), Bytes{0xF1});
}

TEST_F(KeyboardTest, NothingIsWrittenBeforeTheModeCommand) {
  EXPECT_EQ(host.Ask(header), kRefusal);
  EXPECT_EQ(host.Ask({0x08, 0, 0, 0, 0, 1, 0, 0, 0, 0}), kRefusal);
  EXPECT_TRUE(keyboard.A1().memory.erased.empty());
}

TEST_F(KeyboardTest, EndIsEchoedAlwaysAndEndsTheMode) {
  EXPECT_EQ(host.Ask({0x09, 0x01, 0x00, 0x00}), (Bytes{0x09, 0x01, 0x00, 0x00}));
  host.Ask(kModeA1);
  EXPECT_EQ(host.Ask(kEnd), kEnd);
  EXPECT_EQ(host.Ask(header), kRefusal);
}

TEST_F(KeyboardTest, UnknownCommandsAreRefused) {
  host.Ask(kModeA1);
  for (const uint8_t code : Bytes{0x00, 0x02, 0x0A, 0x0B, 0xFF})
    EXPECT_EQ(host.Ask({code}), kRefusal);
  EXPECT_EQ(keyboard.Record().refusals, 5U);
}

TEST_F(KeyboardTest, AnA1BlockIsEchoedErasedProgrammedAndAcknowledgedTwice) {
  host.Ask(kModeA1);
  EXPECT_EQ(host.Ask(header), header);
  EXPECT_EQ(keyboard.A1().memory.erased, (std::vector<Range>{{0x10, 3}}));
  EXPECT_EQ(host.Ask(data), (Bytes{0xF4, 0xD4}));
  EXPECT_EQ(host.last.size(), 2U);
  EXPECT_EQ(keyboard.A1().memory.Contents()[0x12], 3);
  EXPECT_EQ(keyboard.A1().memory.Contents()[0x13], 0xFF);
}

TEST_F(KeyboardTest, AnA1BlockComesInMessagesOfSixtyFourBytes) {
  host.Ask(kModeA1);
  // 65 bytes of 0x01, whose sum is 65.
  host.Ask({0x07, 0, 0, 0, 0, 65, 0, 65, 0, 0, 0, 0});
  EXPECT_EQ(host.Ask(Bytes(64, 1)), Bytes{});
  EXPECT_EQ(host.Ask(Bytes(1, 1)), (Bytes{0xF4, 0xD4}));
}

TEST_F(KeyboardTest, AnA1LengthOfZeroMeans65536) {
  host.Ask(kModeA1);
  const Bytes whole = {0x07, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
  EXPECT_EQ(host.Ask(whole), whole);
  EXPECT_EQ(keyboard.A1().memory.erased, (std::vector<Range>{{0, 65536}}));
  for (int i = 0; i < 1023; i++) ASSERT_EQ(host.Ask(Bytes(64, 0)), Bytes{});
  EXPECT_EQ(host.Ask(Bytes(64, 0)), (Bytes{0xF4, 0xD4}));
}

TEST_F(KeyboardTest, AnA1BlockWithAnotherSumIsErasedButNotWritten) {
  host.Ask(kModeA1);
  host.Ask(header);
  EXPECT_EQ(host.Ask({1, 2, 4}), kRefusal);
  EXPECT_TRUE(keyboard.A1().memory.programmed.empty());
}

TEST_F(KeyboardTest, A1HeadersCountFromTheWindowAndVerifyDoesNot) {
  Keyboard other({.a1 = {.base = 0x100}});
  Host otherHost(other);
  otherHost.Ask(kModeA1);
  otherHost.Ask(header);
  otherHost.Ask(data);
  EXPECT_EQ(other.A1().memory.Contents()[0x110], 1);
  EXPECT_EQ(otherHost.Ask({0x08, 0x10, 0x01, 0, 0, 3, 0, 0, 0, 0}),
            (Bytes{0x08, 0x10, 0x01, 0, 0, 3, 0, 0, 0, 6, 0}));
}

TEST_F(KeyboardTest, VerifySumsTheBytesThatAreThere) {
  host.Ask(kModeA1);
  // Two erased bytes: 0x1FE.
  EXPECT_EQ(host.Ask({0x08, 0, 0, 0, 0, 2, 0, 0, 0, 0}),
            (Bytes{0x08, 0, 0, 0, 0, 2, 0, 0, 0, 0xFE, 0x01}));
}

TEST_F(KeyboardTest, RangesBeyondTheA1ChipAreRefused) {
  host.Ask(kModeA1);
  EXPECT_EQ(host.Ask({0x08, 0xFF, 0xFF, 0x0F, 0, 1, 0, 0, 0, 0}).size(), 11U);
  EXPECT_EQ(host.Ask({0x08, 0xFF, 0xFF, 0x0F, 0, 2, 0, 0, 0, 0}), kRefusal);
  EXPECT_EQ(host.Ask({0x08, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0}), kRefusal);
  EXPECT_EQ(host.Ask({0x07, 0xFE, 0xFF, 0x0F, 0, 3, 0, 6, 0, 0, 0, 0}), kRefusal);
  EXPECT_EQ(host.Ask({0x07, 0xFD, 0xFF, 0x0F, 0, 3, 0, 6, 0, 0, 0, 0}).size(), 12U);
}

TEST_F(KeyboardTest, AHostThatGivesABlockUpIsAnswered) {
  host.Ask(kModeA1);
  // A block of 128 bytes, of which 64 come.
  host.Ask({0x07, 0, 0, 0, 0, 128, 0, 0, 0, 0, 0, 0});
  host.Ask(Bytes(64, 0));
  EXPECT_EQ(host.Ask(kEnd), kEnd);
  EXPECT_EQ(keyboard.Record().abandonedBlocks, 1U);
}

TEST_F(KeyboardTest, UnpluggingForgetsTheModeButNotTheFlash) {
  host.Ask(kModeA1);
  host.Ask(header);
  host.Ask(data);
  keyboard.Unplug();
  EXPECT_EQ(host.Ask(kEnd), Bytes{});
  EXPECT_FALSE(host.taken);
  EXPECT_FALSE(keyboard.Open());
  keyboard.Replug();
  EXPECT_TRUE(keyboard.Open());
  EXPECT_EQ(host.Ask(header), kRefusal);
  EXPECT_EQ(keyboard.A1().memory.Contents()[0x10], 1);
}

TEST_F(KeyboardTest, ItRecordsCommandsBlocksAndReports) {
  host.Ask(kModeA1);
  host.Ask(header);
  host.Ask(data);
  const KeyboardRecord& record = keyboard.Record();
  EXPECT_EQ(record.commands, (std::vector<Bytes>{kModeA1, header}));
  EXPECT_EQ(record.blocks, 1U);
  EXPECT_EQ(record.counters.hostReports, 3U);
  EXPECT_EQ(record.counters.commands, 2U);
  EXPECT_EQ(record.counters.keyboardReports, 4U);
}

TEST_F(KeyboardTest, ContentsAreKeptInAFileForEachKind) {
  const std::string folder = testing::TempDir() + "keyboard-" + std::to_string(getpid());
  std::filesystem::create_directory(folder);
  Keyboard other({.a1 = {.size = 8, .file = folder + "/a1"},
                  .a2 = {.sectors = {0, 4}, .file = folder + "/a2"},
                  .c1 = {.capacities = {{{16, 0}, {4, 0}}}, .file = folder + "/c1"}});
  std::string failedFile;
  ASSERT_TRUE(other.KeepContents(failedFile));
  EXPECT_EQ(std::filesystem::file_size(folder + "/a1"), 8U);
  EXPECT_EQ(std::filesystem::file_size(folder + "/a2"), 16U);
  EXPECT_EQ(std::filesystem::file_size(folder + "/c1"), 20U);
  std::filesystem::remove_all(folder);
  Keyboard failing({.a2 = {.file = folder + "/a2"}});
  EXPECT_FALSE(failing.KeepContents(failedFile));
  EXPECT_EQ(failedFile, folder + "/a2");
}

// Every state of the keyboard is entered by true commands; what follows is noise.
TEST_F(KeyboardTest, NoReportsOfAHostileHostDoItHarm) {
  std::mt19937 random(1);
  Deliveries deliveries;
  for (int round = 0; round < 20'000; round++) {
    host.Ask({0x01, 0x0A, 0x4D, static_cast<uint8_t>(1 + random() % 3)});
    host.Ask({0x0B, 0, 0, 4, 0, 0x10, 0});
    Bytes message(1 + random() % 70);
    for (uint8_t& byte : message) byte = static_cast<uint8_t>(random() % 4 == 0 ? random() : 0);
    message[0] = static_cast<uint8_t>(random() % 12);
    if (round % 2 == 0) message.resize(message[0] == 7 ? 12 : 7);
    for (Bytes& report : HostReports(message)) {
      if (random() % 4 == 0) report[random() % 9] ^= static_cast<uint8_t>(random());
      EXPECT_TRUE(keyboard.TakeReport(report, deliveries));
    }
    deliveries.clear();
  }
  keyboard.Unplug();
  keyboard.Replug();
  EXPECT_EQ(host.Ask(kModeA1), Bytes{0xF1});
}

}  // namespace
}  // namespace hollin::simulator
