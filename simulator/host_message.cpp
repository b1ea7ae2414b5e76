// SPDX-License-Identifier: MIT
#include "simulator/host_message.h"

#include <algorithm>
#include <utility>

namespace hollin::simulator {
namespace {

constexpr uint8_t kReportNumber = 0x51;

}  // namespace

bool MessageAssembler::Take(ByteView report, Bytes& message) {
  if (!Fits(report)) {
    dropped++;
    Reset();
    return false;
  }
  const size_t chunk = std::min<size_t>(total - taken.size(), kPayloadSize);
  const ByteView payload = report.subspan(kHeaderSize, chunk);
  taken.insert(taken.end(), payload.begin(), payload.end());
  if (taken.size() < total) return false;
  message = std::exchange(taken, {});
  Reset();
  return true;
}

void MessageAssembler::Reset() {
  total = 0;
  taken.clear();
}

bool MessageAssembler::Fits(ByteView report) {
  if (report.size() != kReportSize || report[0] != kReportNumber) return false;
  const uint32_t announced = ReadU32(report, 1);
  const uint32_t offset = ReadU32(report, 5);
  if (announced == 0 || announced > kLongestMessage) return false;
  if (offset == 0) {
    taken.clear();
    total = announced;
  }
  return announced == total && offset == taken.size();
}

std::vector<Bytes> ReplyReports(ByteView reply) {
  std::vector<Bytes> reports;
  for (size_t offset = 0; offset < reply.size(); offset += kPayloadSize) {
    const ByteView payload = reply.subspan(offset, std::min(reply.size() - offset, kPayloadSize));
    Bytes report = Packet()
                       .U8(kReportNumber)
                       .U32(static_cast<uint32_t>(offset))
                       .U32(static_cast<uint32_t>(reply.size()));
    report.insert(report.end(), payload.begin(), payload.end());
    report.resize(kReportSize);
    reports.push_back(std::move(report));
  }
  return reports;
}

}  // namespace hollin::simulator
