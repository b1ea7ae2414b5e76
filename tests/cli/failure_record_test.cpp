// SPDX-License-Identifier: MIT
#include "cli/failure_record.h"

#include <gtest/gtest.h>

#include "tests/support/hex_bytes.h"

namespace hollin {
namespace {

void Tell(FailureRecord& record, UpdateFailure reason, const char* command) {
  const Bytes bytes = Hex(command);
  record.CommandFailed({.reason = reason, .command = bytes, .expected = bytes, .reply = bytes});
}

TEST(FailureRecordTest, TheLastFailureOfAStepCounts) {
  FailureRecord record;
  Tell(record, UpdateFailure::kWrongReply, "01 0A 4D 02");
  Tell(record, UpdateFailure::kSendFailed, "01 0A 4D 03");
  EXPECT_EQ(record.OfStep().reason, UpdateFailure::kSendFailed);
  EXPECT_EQ(record.OfStep().command, Hex("01 0A 4D 03"));
}

TEST(FailureRecordTest, AFailureThatARetryMadeGoodIsForgotten) {
  FailureRecord record;
  Tell(record, UpdateFailure::kWrongReply, "01 0A 4D 02");
  record.StepSucceeded();
  EXPECT_EQ(record.OfStep().reason, UpdateFailure::kNone);
  EXPECT_EQ(record.OfStep().command, Bytes{});
}

TEST(FailureRecordTest, TheEndCommandDoesNotHideWhyTheStepFailed) {
  FailureRecord record;
  Tell(record, UpdateFailure::kWrongReply, "07 00 00 00 00 40 00 00 00 00 00 00");
  Tell(record, UpdateFailure::kReceiveFailed, "09 01 00 00");
  EXPECT_EQ(record.OfStep().reason, UpdateFailure::kWrongReply);
  EXPECT_EQ(record.OfEnd().reason, UpdateFailure::kReceiveFailed);
}

TEST(FailureRecordTest, AFailureBeforeAnyCommandIsTheSteps) {
  FailureRecord record;
  Tell(record, UpdateFailure::kNotOpened, "");
  EXPECT_EQ(record.OfStep().reason, UpdateFailure::kNotOpened);
}

}  // namespace
}  // namespace hollin
