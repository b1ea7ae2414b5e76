// SPDX-License-Identifier: MIT
// Messages from and to the host in reports of 64 bytes. Host to keyboard: 0x51, total length (4),
// offset (4), up to 55 bytes of payload. Keyboard to host: 0x51, offset (4), total length (4),
// payload; the two directions differ.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "base/bytes.h"

namespace hollin::simulator {

inline constexpr size_t kReportSize = 64;
inline constexpr size_t kHeaderSize = 9;
inline constexpr size_t kPayloadSize = kReportSize - kHeaderSize;

// Puts the host's messages together. A report of offset 0 begins a message whatever went before;
// one that does not continue the message, has another total or is no report of 64 bytes drops it.
class MessageAssembler {
 public:
  static constexpr uint32_t kLongestMessage = 1024 * 1024;  // a keyboard's memory has an end

  // True when the report completed a message, which is then in `message`.
  [[nodiscard]] bool Take(ByteView report, Bytes& message);
  void Reset();

  uint64_t dropped = 0;  // reports that did not belong to any message

 private:
  [[nodiscard]] bool Fits(ByteView report);

  uint32_t total = 0;
  Bytes taken;
};

// The reports of one reply, each of 64 bytes, unused ones zero.
[[nodiscard]] std::vector<Bytes> ReplyReports(ByteView reply);

}  // namespace hollin::simulator
