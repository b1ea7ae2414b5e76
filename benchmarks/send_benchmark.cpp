// SPDX-License-Identifier: MIT
// Framing and sending a message to a keyboard that takes it at once, against a bare loop that fills
// and sends as many buffers. The goal: at least 0.9 of the bare loop's rate.
#include <hidapi.h>

#include <cstring>

#include "base/bytes.h"
#include "benchmarks/stopwatch.h"
#include "device/hid_device.h"

namespace hollin {
namespace {

constexpr size_t kMessageSize = size_t{1} << 20;
constexpr size_t kPayloadSize = 55;
constexpr size_t kReports = (kMessageSize + kPayloadSize - 1) / kPayloadSize;

// What no sender can do without: as many buffers, each filled with marker, numbers and payload, and
// handed over. The last one is taken for a full one.
void SendBare(const uint8_t* message, std::array<uint8_t, 64>& buffer) {
  const uint32_t total = kMessageSize;
  for (uint32_t offset = 0; offset < total; offset += kPayloadSize) {
    buffer[0] = 0x51;
    std::memcpy(&buffer[1], &total, 4);
    std::memcpy(&buffer[5], &offset, 4);
    std::memcpy(&buffer[9], message + offset, kPayloadSize);
    hid_write(HidDevice::handle, buffer.data(), buffer.size());
  }
}

// Buffers that are only copied, without any framing: no goal, but the end of all improvement.
void CopyBare(const uint8_t* message, std::array<uint8_t, 64>& buffer) {
  for (uint32_t report = 0; report < kReports; report++) {
    std::memcpy(buffer.data(), message + report * kPayloadSize, buffer.size());
    hid_write(HidDevice::handle, buffer.data(), buffer.size());
  }
}

void SendMessage(benchmark::State& state) {
  const Bytes source(kMessageSize + 64, 0x5A);  // the bare loop copies a little beyond the message
  const ByteView message = ByteView(source).first(kMessageSize);
  alignas(64) std::array<uint8_t, 64> buffer{};
  if (!HidDevice::Open()) state.SkipWithError("no keyboard");
  const Comparison best = CompareInTurns(
      state, [&] { benchmark::DoNotOptimize(HidDevice::SendMessage(message)); },
      [&] { SendBare(source.data(), buffer); });
  double copied = best.bare;
  for (int i = 0; i < 100; i++) {
    copied = std::min(copied, SecondsOf([&] { CopyBare(source.data(), buffer); }));
  }
  HidDevice::Close();
  state.counters["ns_per_report"] = best.work * 1e9 / kReports;
  state.counters["bare_ns_per_report"] = best.bare * 1e9 / kReports;
  state.counters["copy_ns_per_report"] = copied * 1e9 / kReports;
  state.counters["rate_over_bare"] = best.bare / best.work;
  state.counters["rate_over_copy"] = copied / best.work;
}
BENCHMARK(SendMessage)->UseManualTime()->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace hollin
