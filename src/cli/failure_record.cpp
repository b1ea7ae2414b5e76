// SPDX-License-Identifier: MIT
#include "cli/failure_record.h"

namespace hollin {
namespace {

constexpr uint8_t kEndCode = 0x09;

Bytes CopyOf(ByteView bytes) { return {bytes.begin(), bytes.end()}; }

}  // namespace

void FailureRecord::CommandFailed(const CommandFailure& failure) {
  const bool isEnd = !failure.command.empty() && failure.command[0] == kEndCode;
  (isEnd ? ofEnd : ofStep) = {.reason = failure.reason,
                              .command = CopyOf(failure.command),
                              .expected = CopyOf(failure.expected),
                              .reply = CopyOf(failure.reply)};
}

}  // namespace hollin
