// SPDX-License-Identifier: MIT
#include "simulator/keyboard.h"

#include <algorithm>
#include <csignal>
#include <utility>

namespace hollin::simulator {

template <typename Unit, typename... Arguments>
Unit* Keyboard::Add(const std::string& file, Arguments&&... arguments) {
  auto unit = std::make_unique<Unit>(std::forward<Arguments>(arguments)...);
  Unit* added = unit.get();
  units.push_back(std::move(unit));
  files.push_back(file);
  return added;
}

Keyboard::Keyboard(KeyboardOptions given)
    : options(std::move(given)),
      clock(options.realTime),
      faults(options.faults),
      a1(Add<A1Flash>(options.a1.file, options.a1)),
      a2(Add<A2Flash>(options.a2.file, options.a2, clock)),
      c1(Add<C1Flash>(options.c1.file, options.c1, clock)) {}

bool Keyboard::KeepContents(std::string& failedFile) {
  for (size_t i = 0; i < units.size(); i++) {
    if (files[i].empty() || units[i]->memory.KeepIn(files[i])) continue;
    failedFile = files[i];
    return false;
  }
  return true;
}

bool Keyboard::Open() {
  if (!attached) return false;
  record.counters.opens++;
  return !faults.Strikes(FaultKind::kOpenFails, record.counters);
}

void Keyboard::Unplug() {
  if (!attached) return;
  attached = false;
  for (auto& unit : units) unit->LosePower();
}

void Keyboard::Replug() {
  if (attached) return;
  attached = true;
  record.plugged++;
  assembler.Reset();
  selected = nullptr;
  pending.reset();
  late.clear();
  lastReport.clear();
  for (auto& unit : units) unit->Reset();
}

bool Keyboard::TakeReport(ByteView report, Deliveries& deliveries) {
  if (!attached) return false;
  record.counters.hostReports++;
  if (faults.Strikes(FaultKind::kWriteFails, record.counters)) return false;
  if (faults.Strikes(FaultKind::kRemoveBefore, record.counters)) {
    Unplug();
    return false;
  }
  Bytes message;
  Replies replies;
  if (assembler.Take(report, message)) Take(message, replies);
  if (faults.Strikes(FaultKind::kRemoveAt, record.counters)) {
    Unplug();
    return true;
  }
  if (faults.Strikes(FaultKind::kHold, record.counters)) std::raise(SIGSTOP);
  Send(std::move(replies), deliveries);
  if (faults.Strikes(FaultKind::kRemoveAfter, record.counters)) Unplug();
  return true;
}

void Keyboard::Take(ByteView message, Replies& replies) {
  if (pending && TakeBlockData(message, replies)) return;
  Execute(message, replies);
}

// A block's data comes in messages of known sizes. Any other message is a command of a host that
// gave the block up, and must be answered, or that host would wait for ever.
bool Keyboard::TakeBlockData(ByteView message, Replies& replies) {
  const size_t missing = pending->block.size - pending->data.size();
  if (message.size() != std::min(missing, pending->block.messageSize)) {
    record.abandonedBlocks++;
    pending.reset();
    return false;
  }
  pending->data.insert(pending->data.end(), message.begin(), message.end());
  if (pending->data.size() < pending->block.size) return true;
  const PendingBlock complete = *std::exchange(pending, std::nullopt);
  record.blocks++;
  selected->Write(complete.block, complete.data, replies);
  return true;
}

void Keyboard::Execute(ByteView command, Replies& replies) {
  record.counters.commands++;
  record.commands.emplace_back(command.begin(), command.end());
  if (!Obey(command, replies)) replies.push_back(Status(kRefused));
}

bool Keyboard::Obey(ByteView command, Replies& replies) {
  switch (command[0]) {
    case 0x01:
      return SelectUnit(command, replies);
    case 0x07:
      return AnnounceBlock(command, replies);
    case 0x08:
      return SumRange(command, replies);
    case 0x09:
      return End(command, replies);
    default:
      return selected != nullptr && selected->Execute(command, replies);
  }
}

// Mode: 0x01, 0x0A, "M", mode (1). The reply is the status 0xF1.
bool Keyboard::SelectUnit(ByteView command, Replies& replies) {
  if (command.size() != 4 || command[1] != 0x0A || command[2] != 'M') return false;
  const auto unit =
      std::ranges::find(units, command[3], [](const auto& each) { return each->mode; });
  if (unit == units.end()) return false;
  selected = unit->get();
  selected->Reset();
  replies.push_back(Status(kAccepted));
  return true;
}

// Block header: 0x07, then 11 bytes as the kind of flash has them. The reply is its echo.
bool Keyboard::AnnounceBlock(ByteView header, Replies& replies) {
  Block block;
  if (selected == nullptr || header.size() != 12 || !selected->Announce(header, block)) {
    return false;
  }
  replies.push_back(Echo(header));
  pending = PendingBlock{block, {}};
  return true;
}

// Verify: 0x08, address (4), length (4), 0x00. The reply is bytes 0 to 8, then the sum (2).
bool Keyboard::SumRange(ByteView command, Replies& replies) {
  uint16_t sum = 0;
  if (selected == nullptr || command.size() != 10) return false;
  if (!selected->Sum(ReadU32(command, 1), ReadU32(command, 5), sum)) return false;
  Reply reply{ReplyKind::kSum, Bytes(command.begin(), command.begin() + 9)};
  reply.bytes.push_back(static_cast<uint8_t>(sum));
  reply.bytes.push_back(static_cast<uint8_t>(sum >> 8));
  replies.push_back(std::move(reply));
  return true;
}

// End: 0x09, 0x00 for success or 0x01 for failure, 0x0000 (2). The reply is its echo, whatever
// went before.
bool Keyboard::End(ByteView command, Replies& replies) {
  if (command.size() != 4) return false;
  selected = nullptr;
  replies.push_back(Echo(command));
  return true;
}

}  // namespace hollin::simulator
