// SPDX-License-Identifier: MIT
// How a keyboard answers: its replies, and what the injected faults make of them.
#include <algorithm>
#include <utility>

#include "simulator/keyboard.h"

namespace hollin::simulator {
namespace {

void Invert(Bytes& bytes, int64_t index) {
  if (index >= 0 && static_cast<size_t>(index) < bytes.size()) {
    bytes[static_cast<size_t>(index)] ^= 0xFF;
  }
}

// The low `size` bytes of a value, little-endian, at an offset.
void Put(Bytes& bytes, size_t offset, size_t size, int64_t value) {
  for (size_t i = 0; i < size && offset + i < bytes.size(); i++) {
    bytes[offset + i] = static_cast<uint8_t>(static_cast<uint64_t>(value) >> (8 * i));
  }
}

// A player touches a key: no part of any reply, since its offset is not 0.
Bytes KeyReport() {
  Bytes report = Packet().U8(0x51).U32(0x00403C90).U32(3).U8(0x90).U8(0x3C).U8(0x40);
  report.resize(kReportSize);
  return report;
}

bool CarriesStatus(const Reply& reply) {
  return reply.kind == ReplyKind::kStatus || reply.kind == ReplyKind::kCapacity;
}

}  // namespace

// The counters as they will be when the next report has gone out.
FaultCounters Keyboard::NextReport() const {
  FaultCounters counters = record.counters;
  counters.keyboardReports++;
  return counters;
}

void Keyboard::Send(Replies replies, Deliveries& deliveries) {
  for (Reply& reply : replies) {
    if (CarriesStatus(reply) && reply.bytes[0] == kRefused) record.refusals++;
    Spoil(reply);
    if (Withheld(reply)) continue;
    Replies ready = std::exchange(late, {});
    ready.push_back(std::move(reply));
    for (const Reply& each : ready) {
      for (Bytes& report : ReplyReports(each.bytes)) SendReport(std::move(report), deliveries);
    }
  }
}

void Keyboard::Spoil(Reply& reply) {
  int64_t parameter = 0;
  const auto strikes = [&](FaultKind fault, ReplyKind kind) {
    return reply.kind == kind && faults.Strikes(fault, NextReport(), parameter);
  };
  if (strikes(FaultKind::kWrongEcho, ReplyKind::kEcho)) Invert(reply.bytes, parameter);
  if (CarriesStatus(reply) && strikes(FaultKind::kWrongStatus, reply.kind)) {
    Put(reply.bytes, 0, 1, parameter);
  }
  if (strikes(FaultKind::kWrongSum, ReplyKind::kSum)) {
    Put(reply.bytes, 9, 2, ReadU16(reply.bytes, 9) + parameter);
  }
  if (strikes(FaultKind::kWrongWord, ReplyKind::kWord)) Put(reply.bytes, 5, 2, parameter);
  if (strikes(FaultKind::kWrongCapacity, ReplyKind::kCapacity)) Put(reply.bytes, 1, 4, parameter);
}

bool Keyboard::Withheld(const Reply& reply) {
  const FaultCounters counters = NextReport();
  if (faults.Strikes(FaultKind::kMute, counters)) return true;
  if (faults.Strikes(FaultKind::kNoReply, counters)) return true;
  if (!faults.Strikes(FaultKind::kLate, counters)) return false;
  late.push_back(reply);
  return true;
}

void Keyboard::SendReport(Bytes report, Deliveries& deliveries) {
  record.counters.keyboardReports++;
  int64_t count = 0;
  if (faults.Strikes(FaultKind::kReadFails, record.counters)) deliveries.push_back({{}, true});
  if (faults.Strikes(FaultKind::kStale, record.counters)) {
    deliveries.push_back({lastReport.empty() ? KeyReport() : lastReport});
  }
  if (faults.Strikes(FaultKind::kUnsolicited, record.counters, count)) {
    for (int64_t i = 0; i < count; i++) deliveries.push_back({KeyReport()});
  }
  SpoilReport(report);
  lastReport = report;
  if (faults.Strikes(FaultKind::kDuplicate, record.counters)) deliveries.push_back({report});
  deliveries.push_back({std::move(report)});
}

void Keyboard::SpoilReport(Bytes& report) {
  int64_t parameter = 0;
  const auto strikes = [&](FaultKind kind) {
    return faults.Strikes(kind, record.counters, parameter);
  };
  if (strikes(FaultKind::kWrongOffset)) Put(report, 1, 4, parameter);
  if (strikes(FaultKind::kWrongTotal)) Put(report, 5, 4, parameter);
  if (strikes(FaultKind::kFlipByte)) Invert(report, parameter);
  if (strikes(FaultKind::kShortReport)) {
    report.resize(static_cast<size_t>(std::clamp<int64_t>(parameter, 0, kReportSize)));
  }
}

}  // namespace hollin::simulator
