// SPDX-License-Identifier: MIT
// The messages and pauses of an update of A1 (docs/protocol.md) and nothing else: no reply is
// looked at, nothing is tried again.
//
//   hollin_bare_host IMAGE-LENGTH BLOCK-LENGTH
//
// The image is all zeros, so every sum is 0, and belongs at address 0. Prints how many reports were
// exchanged in both directions, and the seconds from the first to the last, the pauses taken off.
// Numbers are sent as the processor has them: the lowest byte first.
#include <hidapi.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <thread>

namespace {

using Clock = std::chrono::steady_clock;

constexpr uint32_t kPayload = 55;
constexpr uint32_t kMessage = 64;
constexpr std::chrono::milliseconds kPauseAfterStep{500};

hid_device* keyboard = nullptr;
std::array<uint8_t, 64> report{};
int reports = 0;
Clock::duration pauses{};

void Send(const uint8_t* message, uint32_t length) {
  for (uint32_t offset = 0; offset < length; offset += kPayload) {
    report[0] = 0x51;
    std::memcpy(&report[1], &length, 4);
    std::memcpy(&report[5], &offset, 4);
    std::memcpy(&report[9], message + offset, std::min(kPayload, length - offset));
    hid_write(keyboard, report.data(), report.size());
    reports++;
  }
}

void Receive() {
  hid_read(keyboard, report.data(), report.size());
  reports++;
}

void EndStep() {
  const auto start = Clock::now();
  std::this_thread::sleep_for(kPauseAfterStep);
  pauses += Clock::now() - start;
}

void EnterUpdateMode() {
  const std::array<uint8_t, 4> mode{0x01, 0x0A, 0x4D, 0x02};
  Send(mode.data(), mode.size());
  Receive();
}

void WriteBlock(uint32_t offset, uint32_t length) {
  std::array<uint8_t, 12> header{0x07};
  std::memcpy(&header[1], &offset, 4);
  std::memcpy(&header[5], &length, 2);
  Send(header.data(), header.size());
  Receive();
  const std::array<uint8_t, kMessage> zeros{};
  for (uint32_t sent = 0; sent < length; sent += kMessage) {
    Send(zeros.data(), std::min(kMessage, length - sent));
  }
  Receive();  // 0xF4
  Receive();  // 0xD4
}

void Verify(uint32_t length) {
  std::array<uint8_t, 10> verify{0x08};
  std::memcpy(&verify[5], &length, 4);
  Send(verify.data(), verify.size());
  Receive();
}

void End() {
  const std::array<uint8_t, 4> end{0x09};
  Send(end.data(), end.size());
  Receive();
}

void Update(uint32_t imageLength, uint32_t blockLength) {
  EnterUpdateMode();
  EndStep();
  for (uint32_t offset = 0; offset < imageLength; offset += blockLength) {
    WriteBlock(offset, std::min(blockLength, imageLength - offset));
    EndStep();
  }
  Verify(imageLength);
  EndStep();
  End();
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  const auto imageLength = static_cast<uint32_t>(std::strtoul(argv[1], nullptr, 10));
  const auto blockLength = static_cast<uint32_t>(std::strtoul(argv[2], nullptr, 10));
  keyboard = hid_open(0x1C3E, 0x2B91, nullptr);
  if (keyboard == nullptr) return 1;
  const auto start = Clock::now();
  Update(imageLength, blockLength);
  const std::chrono::duration<double> seconds = Clock::now() - start - pauses;
  std::printf("%d %.6f\n", reports, seconds.count());
  hid_close(keyboard);
  return 0;
}
