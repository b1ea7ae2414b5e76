// SPDX-License-Identifier: MIT
#include "package/update_effort.h"

#include <algorithm>

#include "updaters/a1_update.h"
#include "updaters/a2_erase_timer.h"
#include "updaters/a2_update.h"
#include "updaters/c1_update.h"

namespace hollin {
namespace {

constexpr uint64_t kPauseAfterStep = 500;
constexpr uint64_t kPayload = 55;  // bytes of a message in one report
constexpr uint64_t kExchange = 2;  // a command and its reply, one report each
constexpr uint64_t kMessage = 64;  // A1: bytes of a block's data in one message
constexpr uint64_t kChunk = 8192;  // C1: bytes of data behind one header
constexpr uint64_t kC1Erase = 20;  // before the one poll
constexpr uint64_t kWordSize = 2;

uint64_t Ceiling(uint64_t a, uint64_t b) { return a / b + (a % b != 0 ? 1 : 0); }

uint64_t ReportsOf(uint64_t bytes) { return Ceiling(bytes, kPayload); }

// A command whose reply echoes it.
uint64_t EchoedReports(uint64_t bytes) { return 2 * ReportsOf(bytes); }

uint64_t A1BlockReports(uint64_t bytes) {
  const uint64_t data = bytes / kMessage * ReportsOf(kMessage) + ReportsOf(bytes % kMessage);
  return kExchange + data + 2;
}

UpdateEffort EffortOfA1(const A1Update& updater) {
  const auto image = static_cast<uint64_t>(updater.imageLength);
  const uint64_t block = updater.flash.dataLength;
  return {.reports = image / block * A1BlockReports(block) +
                     (image % block != 0 ? A1BlockReports(image % block) : 0)};
}

uint64_t A2BlocksReports(const A2Update& updater, uint64_t words) {
  const uint64_t block = updater.flash.blockSize;
  const uint64_t overhead = kExchange + 2;
  return words / block * (overhead + ReportsOf(block * kWordSize)) +
         (words % block != 0 ? overhead + ReportsOf(words % block * kWordSize) : 0);
}

uint64_t A2CyclesReports(const A2Description& flash) {
  if (!flash.writeBufferMode) return EchoedReports(2 + uint64_t{4} * flash.programCycleCount);
  return EchoedReports(7 + uint64_t{4} * flash.writeBufferCycleCount) +
         EchoedReports(4 + uint64_t{4} * flash.programBufferCycleCount);
}

// The erase of one sector, which must be read as erased twice.
UpdateEffort A2EraseEffort(const A2Description& flash) {
  constexpr auto kFirst = static_cast<uint64_t>(A2EraseTimer::kFirstPause.count());
  constexpr auto kLater = static_cast<uint64_t>(A2EraseTimer::kLaterPause.count());
  const uint64_t cycles = kExchange * flash.eraseCycleCount;
  if (flash.maxSectorEraseTime >= kFirst) {
    return {.pauses = kFirst + kLater, .reports = cycles + kExchange * 2};
  }
  // Late at the first look already: each erase begins the next one inside it, and the sixth gives
  // up. Then each of the other five looks a second time.
  constexpr uint64_t kErases = 6;
  constexpr uint64_t kSecondLooks = kErases - 1;
  return {.pauses = kErases * kFirst + kSecondLooks * kLater,
          .reports = kErases * cycles + kExchange * (kErases + kSecondLooks)};
}

UpdateEffort EffortOfA2(const A2Update& updater) {
  if (!updater.IsPlanInsideImage()) return {};  // nothing will be written
  const UpdateEffort erase = A2EraseEffort(updater.flash);
  const uint64_t perSector = A2CyclesReports(updater.flash) + kExchange;  // and its verification
  UpdateEffort effort;
  uint32_t done = 0;
  for (uint32_t sector = 0; sector < updater.plannedSectors; sector++) {
    const bool isLast = sector + 1 == updater.plannedSectors;
    const uint32_t bytes = isLast ? updater.bytesToWrite - done : updater.SectorSize(sector);
    done += updater.SectorSize(sector);
    if (updater.IsReserved(sector)) continue;
    effort += erase;
    effort.reports += perSector + A2BlocksReports(updater, bytes / kWordSize);
  }
  return effort;
}

uint64_t C1SectorReports(uint64_t bytes) {
  const uint64_t overhead = kExchange + 1;
  const uint64_t data = bytes / kChunk * (overhead + ReportsOf(kChunk)) +
                        (bytes % kChunk != 0 ? overhead + ReportsOf(bytes % kChunk) : 0);
  return kExchange + kExchange + data + kExchange;  // erase, poll, the data, verification
}

UpdateEffort EffortOfC1(const C1Update& updater) {
  const uint64_t size = updater.flash.sectorSize;
  const uint64_t image = updater.dataLength;
  const uint64_t rest = image % size;
  return {.pauses = kC1Erase * updater.dataSectorCount,
          .reports = kExchange + image / size * C1SectorReports(size) +
                     (rest != 0 ? C1SectorReports(rest) : 0)};
}

UpdateEffort EffortOfKind(const AXUpdate& updater) {
  if (const auto* a1 = dynamic_cast<const A1Update*>(&updater)) {
    UpdateEffort effort = EffortOfA1(*a1);
    effort.reports += kExchange;  // one verification for all
    return effort;
  }
  if (const auto* a2 = dynamic_cast<const A2Update*>(&updater)) return EffortOfA2(*a2);
  if (const auto* c1 = dynamic_cast<const C1Update*>(&updater)) return EffortOfC1(*c1);
  return {};
}

}  // namespace

UpdateEffort EffortOf(const AXUpdate& updater) {
  UpdateEffort effort = EffortOfKind(updater);
  effort.pauses += kPauseAfterStep * updater.StepCount();
  effort.reports += kExchange;  // mode
  return effort;
}

UpdateEffort EffortOfEnd() { return {.reports = kExchange}; }

}  // namespace hollin
