// SPDX-License-Identifier: MIT
#include "tests/fuzz/erase_plan.h"

#include <algorithm>
#include <set>

#include "tests/fuzz/fuzz_targets.h"

namespace hollin::fuzz {
namespace {

constexpr uint8_t kMode = 0x01, kErase = 0x02, kBlock = 0x07, kVerify = 0x08, kConfigure = 0x0B;

bool IsSentByMode(const Bytes& message) { return message[0] == kMode || message[0] == kConfigure; }

// The bytes of a C1 block are a message too, and may look like anything. A2's are even in number.
bool IsBlockData(const Messages& messages, size_t index) {
  if (index == 0) return false;
  const Bytes& header = messages[index - 1];
  return header.size() == 12 && header[0] == kBlock && ReadU32(header, 5) == messages[index].size();
}

bool IsErase(const ErasePlan& plan, const Messages& messages, size_t index) {
  const Bytes& message = messages[index];
  return message.size() == plan.eraseSize && message[0] == kErase && !IsBlockData(messages, index);
}

// Cycles of one erase stand side by side; without the last one the chip erases nothing.
void RequireErasesOf(const ErasePlan& plan, uint32_t sector, const Messages& messages) {
  size_t cycles = 0;
  for (size_t i = 0; i < messages.size(); i++) {
    cycles = IsErase(plan, messages, i) ? cycles + 1 : 0;
    Require(cycles <= plan.eraseCycles, "an erase has its cycles");
    const bool isWhole = cycles > 0 && cycles == plan.eraseCycles;
    Require(!isWhole || ReadU32(messages[i], 1) == sector, "the step's sector is erased");
    if (isWhole) cycles = 0;
  }
}

}  // namespace

// Which sectors are planned is found in 32 bits, as it always was; where their bytes lie in the
// image in as many as that takes.
ErasePlan ErasePlanOf(const A2Description& flash, size_t imageLength) {
  ErasePlan plan{.sectors = {}, .eraseCycles = flash.eraseCycleCount, .eraseSize = 7};
  const std::vector<uint32_t>& sectors = flash.sectorAddrs;
  const std::set<uint32_t> reserved(flash.reservedSectors.begin(), flash.reservedSectors.end());
  const auto bytesToWrite = static_cast<uint32_t>(imageLength - uint64_t{flash.fileOffset} * 2);
  uint64_t begin = uint64_t{flash.fileOffset} * 2;
  plan.isRefused = begin > imageLength;
  for (size_t i = 1; i < sectors.size(); i++) {
    plan.isRefused = plan.isRefused || sectors[i] <= sectors[i - 1];
  }
  for (size_t i = 0; i < sectors.size() && !plan.isRefused; i++) {
    const uint32_t distance = (sectors[i] - sectors[0]) * 2;
    if (i > 0 && distance >= bytesToWrite) break;
    const size_t next = std::min(i + 1, sectors.size() - 1);
    const uint64_t size = (uint64_t{sectors[next]} - sectors[next - 1]) * 2;
    const bool isLast = i + 1 == sectors.size() ||
                        static_cast<uint32_t>((sectors[i + 1] - sectors[0]) * 2) >= bytesToWrite;
    const uint64_t end = isLast ? imageLength : begin + size;
    plan.isRefused = begin > end || end > imageLength || end - begin > size;
    const bool isReserved = reserved.contains(sectors[i]);
    plan.sectors.push_back(isReserved ? std::nullopt : std::optional(sectors[i]));
    begin += size;
  }
  return plan;
}

// Beyond 2^31 bytes no flash is large enough, so the walk ends whatever is reserved.
ErasePlan ErasePlanOf(const C1Description& flash, size_t imageLength) {
  constexpr uint64_t kLargestFlash = 0x7FFFFFFF;
  ErasePlan plan{.sectors = {}, .eraseSize = 5};
  const std::set<uint32_t> reserved(flash.reservedSectors.begin(), flash.reservedSectors.end());
  uint64_t written = 0;
  for (uint64_t begin = 0; written < imageLength; begin += flash.sectorSize) {
    plan.isRefused = begin + flash.sectorSize > kLargestFlash;
    if (plan.isRefused) return plan;
    if (reserved.contains(static_cast<uint32_t>(begin))) continue;
    plan.sectors.emplace_back(static_cast<uint32_t>(begin));
    written += flash.sectorSize;
  }
  return plan;
}

Messages MessagesOf(const std::vector<Bytes>& reports) {
  Messages messages;
  for (const Bytes& report : reports) {
    const uint32_t total = ReadU32(report, 1);
    const uint32_t offset = ReadU32(report, 5);
    if (offset == 0) messages.emplace_back(total);
    Bytes& message = messages.back();
    for (size_t i = 9; i < report.size() && offset + i - 9 < total; i++) {
      message[offset + i - 9] = report[i];
    }
  }
  return messages;
}

void RequirePlannedErases(const ErasePlan& plan, const std::vector<Messages>& steps) {
  for (size_t step = 0; step < steps.size(); step++) {
    const Messages& messages = steps[step];
    if (step == 0 || plan.isRefused) {
      Require(std::all_of(messages.begin(), messages.end(), IsSentByMode),
              "a plan that is refused touches no flash, nor does the change of mode");
    } else if (step > plan.sectors.size()) {
      Require(std::all_of(messages.begin(), messages.end(),
                          [](const Bytes& message) { return message[0] == kVerify; }),
              "behind the planned sectors nothing but sums is asked for");
    } else if (!plan.sectors[step - 1]) {
      Require(messages.empty(), "nothing is sent for a reserved sector");
    } else {
      RequireErasesOf(plan, *plan.sectors[step - 1], messages);
    }
  }
}

}  // namespace hollin::fuzz
