// SPDX-License-Identifier: MIT
// A stand-in for hidapi whose answers a test writes down beforehand. It has the eight functions
// that the link uses and no other, so that a call of any other one does not link.
//
// A case queues the reports that the keyboard will send, runs the code, and looks at the calls and
// the reports that were written. A read with nothing queued fails instead of waiting, and says so
// in `misuses`: an empty list there means that hidapi was used as it wants to be used.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/bytes.h"

namespace hollin {

struct ScriptedHidapi {
  using Ids = std::pair<uint16_t, uint16_t>;  // vendor, product

  // What is attached, and what goes wrong. The counters name the n-th call from now, from 1; 0 is
  // never. A write that fails is recorded like any other.
  size_t deviceCount = 1;
  size_t failingEnumerate = 0;
  size_t failingOpen = 0;
  size_t failingWrite = 0;
  size_t failingRead = 0;
  std::optional<int> writeResult;     // instead of the number of bytes
  const wchar_t* error = L"Success";  // hidapi's words for what went wrong; null for none

  // Reports that the keyboard will send, of any length; nullopt is a read that fails.
  std::deque<std::optional<Bytes>> replies;

  // Called with each report after it was recorded: a keyboard that answers may queue replies here.
  std::function<void(const Bytes& report)> onWrite;

  // What was done. `calls` holds hidapi's names in order.
  std::vector<std::string> calls;
  std::vector<Bytes> writes;
  std::vector<Ids> enumeratedIds;
  std::vector<Ids> openedIds;
  std::vector<std::string> misuses;
  size_t openHandles = 0;
  size_t unfreedLists = 0;

  // Queues a reply, cut into reports as the keyboard does it.
  void Reply(ByteView message);
  void ReplyReport(Bytes report) { replies.emplace_back(std::move(report)); }
  void ReplyFailure() { replies.emplace_back(std::nullopt); }

  // The payloads of the written reports, joined into messages.
  [[nodiscard]] std::vector<Bytes> SentMessages() const;
  [[nodiscard]] size_t CountOf(const std::string& call) const;
};

// The one stand-in of the process.
ScriptedHidapi& Hidapi();

// A report of the keyboard: not examined (1), offset (4), total (4), then the payload. 64 bytes,
// unless `size` says otherwise.
Bytes KeyboardReport(uint32_t offset, uint32_t total, ByteView payload, size_t size = 64);

// A report of the program: 0x51, total (4), offset (4), payload, and behind it what the buffer
// held.
Bytes ProgramReport(uint32_t total, uint32_t offset, ByteView payload, ByteView stale = {});

}  // namespace hollin
