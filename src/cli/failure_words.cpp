// SPDX-License-Identifier: MIT
#include "cli/failure_words.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

namespace hollin::words {
namespace {

struct CommandName {
  uint8_t code;
  std::string_view name;
  bool hasAddress;  // in bytes 1-4
};

constexpr std::array<CommandName, 10> kCommandNames = {{
    {0x01, "enter update mode", false},
    {0x02, "erase", true},
    {0x03, "ask whether erased", true},
    {0x04, "word-program cycles", false},
    {0x05, "write-buffer cycles", false},
    {0x06, "program-buffer cycles", false},
    {0x07, "write block", true},
    {0x08, "verify", true},
    {0x09, "end update", false},
    {0x0B, "configure flash", false},
}};

constexpr size_t kAddressEnd = 5;

std::string HexBytes(ByteView bytes) {
  constexpr size_t kMostBytes = 32;
  std::string text;
  for (const uint8_t byte : bytes.first(std::min(bytes.size(), kMostBytes))) {
    text += fmt::format("{}{:02X}", text.empty() ? "" : " ", byte);
  }
  if (bytes.size() > kMostBytes) text += fmt::format(" ... ({} bytes)", bytes.size());
  return text;
}

// How many bytes at the end of a reply may not have come: those hold the complement of what was
// expected, but so may bytes that did come. The first byte of a reply always came.
size_t DoubtfulBytes(const RecordedFailure& failure) {
  const size_t size = std::min(failure.reply.size(), failure.expected.size());
  size_t count = 0;
  while (count + 1 < size && failure.reply[size - 1 - count] ==
                                 static_cast<uint8_t>(~failure.expected[size - 1 - count])) {
    count++;
  }
  return count;
}

std::string ReplyText(const RecordedFailure& failure) {
  if (failure.reason != UpdateFailure::kWrongReply) return "nothing";
  const size_t doubtful = DoubtfulBytes(failure);
  if (doubtful == 0) return HexBytes(failure.reply);
  return fmt::format("{} (the last {} perhaps not received)", HexBytes(failure.reply), doubtful);
}

}  // namespace

std::string_view OfReason(UpdateFailure reason) {
  switch (reason) {
    case UpdateFailure::kNone:
      break;
    case UpdateFailure::kNoKeyboard:
      return "the keyboard is not connected";
    case UpdateFailure::kSeveralKeyboards:
      return "more than one keyboard is connected";
    case UpdateFailure::kNotOpened:
      return "the keyboard could not be opened: there is no right to, or it was just removed";
    case UpdateFailure::kLinkClosed:
      return "the link to the keyboard was closed";
    case UpdateFailure::kSendFailed:
      return "the command could not be sent: the keyboard was removed or takes nothing any more";
    case UpdateFailure::kReceiveFailed:
      return "no reply: the keyboard was removed, or what it sent was no reply";
    case UpdateFailure::kWrongReply:
      return "the keyboard did not reply what it should";
    case UpdateFailure::kNotErased:
      return "the sector was not erased in time";
    case UpdateFailure::kFlashTooSmall:
      return "the keyboard's flash cannot hold the image";
    case UpdateFailure::kNoFreeSector:
      return "the description reserves every sector of the flash";
    case UpdateFailure::kBeyondPlan:
      return "the step lies outside what was planned; nothing was sent";
  }
  return "unknown";
}

std::string OfCommand(ByteView command) {
  if (command.empty()) return "none";
  const auto* const known = std::find_if(kCommandNames.begin(), kCommandNames.end(),
                                         [&](const auto& c) { return c.code == command[0]; });
  if (known == kCommandNames.end()) return fmt::format("0x{:02X}", command[0]);
  if (!known->hasAddress || command.size() < kAddressEnd) return std::string(known->name);
  return fmt::format("{} at address 0x{:08X}", known->name, ReadU32(command, 1));
}

std::vector<std::string> OfFailure(const RecordedFailure& failure) {
  std::vector<std::string> lines = {fmt::format("Reason: {}", OfReason(failure.reason))};
  if (failure.command.empty()) return lines;
  lines.push_back(fmt::format("Command: {}", OfCommand(failure.command)));
  lines.push_back(fmt::format("Sent: {}", HexBytes(failure.command)));
  if (failure.expected.empty()) return lines;
  lines.push_back(fmt::format("Expected: {}", HexBytes(failure.expected)));
  lines.push_back(fmt::format("Received: {}", ReplyText(failure)));
  return lines;
}

}  // namespace hollin::words
