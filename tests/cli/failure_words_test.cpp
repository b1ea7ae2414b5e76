// SPDX-License-Identifier: MIT
#include "cli/failure_words.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/hex_bytes.h"

namespace hollin::words {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

TEST(FailureWordsTest, EveryCommandHasItsName) {
  const std::vector<std::pair<const char*, const char*>> table = {
      {"", "none"},
      {"01 0A 4D 02", "enter update mode"},
      {"02 00 00 01 00 30 00", "erase at address 0x00010000"},
      {"02 78 56 34 12", "erase at address 0x12345678"},
      {"03 00 14 00 00", "ask whether erased at address 0x00001400"},
      {"04 02 AA 02 AA 00", "word-program cycles"},
      {"05 02 10 01 02 03 04 AA 02 AA 00", "write-buffer cycles"},
      {"06 02 01 02 AA 02 AA 00", "program-buffer cycles"},
      {"07 00 40 00 00 00 40 12 34 00 00 00", "write block at address 0x00004000"},
      {"08 00 00 01 00 00 40 00 00 00", "verify at address 0x00010000"},
      {"09 01 00 00", "end update"},
      {"0B 00 01 04 00 10 00", "configure flash"},
      {"0A", "0x0A"},
      {"07 00 40 00", "write block"},
  };
  for (const auto& [command, name] : table) EXPECT_EQ(OfCommand(Hex(command)), name) << command;
}

TEST(FailureWordsTest, EveryReasonHasItsOwnWords) {
  std::vector<std::string_view> all;
  for (auto reason = 0; reason <= static_cast<int>(UpdateFailure::kBeyondPlan); reason++) {
    const std::string_view text = OfReason(static_cast<UpdateFailure>(reason));
    EXPECT_NE(text, "");
    EXPECT_THAT(all, ::testing::Not(::testing::Contains(text)));
    all.push_back(text);
  }
}

TEST(FailureWordsTest, AWrongReplyIsShownBesideTheExpectedOne) {
  const RecordedFailure failure = {.reason = UpdateFailure::kWrongReply,
                                   .command = Hex("01 0A 4D 02"),
                                   .expected = Hex("F1"),
                                   .reply = Hex("E0")};
  EXPECT_THAT(OfFailure(failure), ElementsAre("Reason: the keyboard did not reply what it should",
                                              "Command: enter update mode", "Sent: 01 0A 4D 02",
                                              "Expected: F1", "Received: E0"));
}

TEST(FailureWordsTest, AReplyThatDidNotComeIsNothing) {
  const RecordedFailure failure = {.reason = UpdateFailure::kReceiveFailed,
                                   .command = Hex("01 0A 4D 02"),
                                   .expected = Hex("F1"),
                                   .reply = Hex("0E")};
  EXPECT_THAT(OfFailure(failure), ::testing::Contains("Received: nothing"));
}

TEST(FailureWordsTest, BytesThatMayNotHaveComeAreCounted) {
  const RecordedFailure failure = {.reason = UpdateFailure::kWrongReply,
                                   .command = Hex("09 00 00 00"),
                                   .expected = Hex("09 00 00 00"),
                                   .reply = Hex("09 00 FF FF")};
  EXPECT_THAT(OfFailure(failure),
              ::testing::Contains("Received: 09 00 FF FF (the last 2 perhaps not received)"));
}

TEST(FailureWordsTest, TheFirstByteOfAReplyAlwaysCame) {
  const RecordedFailure failure = {.reason = UpdateFailure::kWrongReply,
                                   .command = Hex("01 0A 4D 02"),
                                   .expected = Hex("F1"),
                                   .reply = Hex("0E")};
  EXPECT_THAT(OfFailure(failure), ::testing::Contains("Received: 0E"));
}

TEST(FailureWordsTest, AFailureBeforeAnyCommandHasItsReasonAlone) {
  EXPECT_THAT(OfFailure({.reason = UpdateFailure::kNoKeyboard}),
              ElementsAre("Reason: the keyboard is not connected"));
}

TEST(FailureWordsTest, LongCommandsAreCutBehindThirtyTwoBytes) {
  const auto sent = [](size_t size) {
    return OfFailure({.reason = UpdateFailure::kSendFailed, .command = Filled(size, 4)})[2];
  };
  EXPECT_THAT(sent(31), ::testing::Not(HasSubstr("...")));
  EXPECT_THAT(sent(32), ::testing::Not(HasSubstr("...")));
  EXPECT_THAT(sent(33), ::testing::EndsWith(" 04 ... (33 bytes)"));
}

}  // namespace
}  // namespace hollin::words
