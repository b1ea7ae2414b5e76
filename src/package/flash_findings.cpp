// SPDX-License-Identifier: MIT
#include "package/flash_findings.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

#include "updaters/a1_update.h"
#include "updaters/a2_update.h"
#include "updaters/c1_update.h"

namespace hollin {
namespace {

constexpr uint32_t kLargestByte = 0xFF;
constexpr uint32_t kLargestWord = 0xFFFF;
constexpr uint32_t kWordSize = 2;
constexpr uint32_t kLongestA1Block = 65536;
constexpr uint32_t kBlockAnnouncedAsZero = 65536;  // words
constexpr uint32_t kShortestEraseTime = 700;       // the pause before the first poll
constexpr uint32_t kAbsoluteCyclesStart = 0x1400;
constexpr uint32_t kMostCycles = 127;  // announced twice, in one byte
constexpr uint32_t kSectorSizeEnd = 1 << 24;

// Adds findings of one pack.
class Findings {
 public:
  Findings(size_t pack, FindingList& list) : pack(pack), list(list) {}

  void Add(FindingCode code, uint64_t number = 0, uint64_t other = 0, std::string text = {}) const {
    list.Add(
        {.code = code, .pack = pack, .text = std::move(text), .number = number, .other = other});
  }
  // A value that is larger than its place in a command.
  void Truncated(std::string_view name, uint32_t value, uint32_t largest) const {
    if (value > largest) {
      Add(FindingCode::kValueTruncated, value, value & largest, std::string(name));
    }
  }

 private:
  size_t pack;
  FindingList& list;
};

// Whether bytes say nothing, all being the same: a gap that was left on purpose.
bool IsGap(ByteView bytes) {
  return std::adjacent_find(bytes.begin(), bytes.end(), std::not_equal_to<>()) == bytes.end();
}

ByteView ImageOf(const AXUpdate& updater) {
  return {updater.image.get(), static_cast<size_t>(updater.imageLength)};
}

void FindInA1(const A1Update& updater, const Findings& findings) {
  const A1Description& flash = updater.flash;
  findings.Truncated("Chip Type", flash.mode, kLargestByte);
  // The updater has shortened it to an image that is shorter, so the first block is that long.
  if (flash.dataLength > kLongestA1Block) {
    findings.Add(FindingCode::kA1DataLengthAbove65536, flash.dataLength,
                 flash.dataLength & kLargestWord);
  }
  const uint32_t blocks = updater.StepCount() - 2;
  if (blocks > 1) findings.Add(FindingCode::kA1SeveralBlocks, blocks, flash.dataLength);
  if (flash.startAddress != 0) findings.Add(FindingCode::kA1StartAddress, flash.startAddress);
  if (uint64_t{2} * flash.startAddress > flash.chipSize) {
    findings.Add(FindingCode::kA1StartAddressWraps, flash.startAddress, flash.chipSize);
  }
}

void FindInCycles(const A2Update& updater, const Findings& findings) {
  const A2Description& flash = updater.flash;
  for (const uint32_t data : flash.eraseData) {
    findings.Truncated("Sector Erase Cycle", data, kLargestWord);
  }
  struct List {
    std::string_view section;
    const std::vector<uint32_t>& values;
  };
  for (const List& list : {List{"Program Cycle", flash.programAddrs},
                           {"Program Cycle", flash.programData},
                           {"Write Buffer Cycle", flash.writeBufferAddrs},
                           {"Write Buffer Cycle", flash.writeBufferData},
                           {"Program Buffer Cycle", flash.programBufferAddrs},
                           {"Program Buffer Cycle", flash.programBufferData}}) {
    for (const uint32_t value : list.values) findings.Truncated(list.section, value, kLargestWord);
  }
  findings.Truncated("ProgramCycles", flash.programCycleCount, kMostCycles);
  findings.Truncated("WriteBufferCycles", flash.writeBufferCycleCount, kMostCycles);
  findings.Truncated("ProgramBufferCycles", flash.programBufferCycleCount, kMostCycles);
  findings.Truncated("WriteBufferCount", flash.writeBufferCount, kLargestByte);
  findings.Truncated("WriteBufferPA1", flash.writeBufferPA1, kLargestByte);
  findings.Truncated("WriteBufferPA2", flash.writeBufferPA2, kLargestByte);
  findings.Truncated("WriteBufferSA1", flash.writeBufferSA1, kLargestByte);
  findings.Truncated("WriteBufferSA2", flash.writeBufferSA2, kLargestByte);
  findings.Truncated("ProgramBufferSA1", flash.programBufferSA1, kLargestByte);
  findings.Truncated("ProgramBufferSA2", flash.programBufferSA2, kLargestByte);
  if (flash.eraseCycleCount == 0) {
    findings.Add(FindingCode::kA2CyclesEmpty, 0, 0, "Sector Erase Cycle");
  } else if (flash.eraseAddrs.back() != 0) {
    findings.Add(FindingCode::kA2LastEraseAddress, flash.eraseAddrs.back());
  }
  const bool isBuffered = flash.writeBufferMode;
  if (!isBuffered && flash.programCycleCount == 0) {
    findings.Add(FindingCode::kA2CyclesEmpty, 0, 0, "Program Cycle");
  }
  if (isBuffered && flash.writeBufferCycleCount == 0) {
    findings.Add(FindingCode::kA2CyclesEmpty, 0, 0, "Write Buffer Cycle");
  }
  if (isBuffered && flash.programBufferCycleCount == 0) {
    findings.Add(FindingCode::kA2CyclesEmpty, 0, 0, "Program Buffer Cycle");
  }
}

// The bytes of the image that fall on reserved sectors, unless all are the same.
void FindDroppedBytes(const A2Update& updater, const Findings& findings) {
  const ByteView image = ImageOf(updater).subspan(updater.imageStart);
  uint64_t done = 0;
  for (uint32_t sector = 0; sector < updater.plannedSectors; sector++) {
    const uint64_t start = done;
    done += updater.SectorSize(sector);
    if (!updater.IsReserved(sector) || start >= image.size()) continue;
    const uint64_t size = std::min<uint64_t>(done, image.size()) - start;
    if (IsGap(image.subspan(start, size))) continue;
    findings.Add(FindingCode::kA2ReservedBytesDropped, size, updater.flash.sectorAddrs[sector]);
  }
}

// What the image has for a planned sector, in bytes: the last one gets the rest.
uint64_t BytesFor(const A2Update& updater, uint32_t sector) {
  const std::vector<uint32_t>& sectors = updater.flash.sectorAddrs;
  const uint64_t start = (uint64_t{sectors[sector]} - sectors.front()) * kWordSize;
  return std::min<uint64_t>(updater.SectorSize(sector), updater.bytesToWrite - start);
}

// Whether any sector that is written has so many words for it. Of a plan inside the image.
bool HasBlockOf(const A2Update& updater, uint32_t words) {
  for (uint32_t sector = 0; sector < updater.plannedSectors; sector++) {
    if (updater.IsReserved(sector)) continue;
    if (BytesFor(updater, sector) / kWordSize >= words) return true;
  }
  return false;
}

void FindInA2Plan(const A2Update& updater, const Findings& findings) {
  const A2Description& flash = updater.flash;
  const std::vector<uint32_t>& sectors = flash.sectorAddrs;
  const auto turn = std::adjacent_find(sectors.begin(), sectors.end(), std::greater_equal<>());
  if (turn != sectors.end()) {
    return findings.Add(FindingCode::kA2SectorsNotAscending, *turn, *(turn + 1));
  }
  if (!updater.IsPlanInsideImage()) return findings.Add(FindingCode::kA2PlanOutsideImage);
  if (updater.bytesToWrite == 0) findings.Add(FindingCode::kA2NothingToWrite, flash.fileOffset);
  if (updater.bytesToWrite % kWordSize != 0) findings.Add(FindingCode::kA2OddByteDropped);
  FindDroppedBytes(updater, findings);
  if (flash.blockSize == kBlockAnnouncedAsZero && HasBlockOf(updater, kBlockAnnouncedAsZero)) {
    findings.Add(FindingCode::kA2BlockAnnouncedAsZero);
  }
  const auto last = static_cast<uint32_t>(sectors.size() - 1);
  if (updater.plannedSectors > last && !updater.IsReserved(last)) {
    findings.Add(FindingCode::kA2LastSectorSize, sectors[last], updater.SectorSize(last));
  }
}

void FindInA2(const A2Update& updater, const Findings& findings) {
  const A2Description& flash = updater.flash;
  const std::vector<uint32_t>& sectors = flash.sectorAddrs;
  findings.Truncated("Chip Type", flash.mode, kLargestByte);
  const AddressSet starts(sectors);
  for (const uint32_t address : flash.reservedSectors) {
    if (!starts.Contains(address)) findings.Add(FindingCode::kReservedWithoutSector, address);
  }
  if (flash.erasedValue > kLargestWord) {
    findings.Add(FindingCode::kA2ErasedValue, flash.erasedValue);
  }
  if (flash.maxSectorEraseTime < kShortestEraseTime) {
    findings.Add(FindingCode::kA2EraseTimeShort, flash.maxSectorEraseTime);
  }
  if (sectors.front() == kAbsoluteCyclesStart) findings.Add(FindingCode::kA2CyclesAbsolute);
  FindInCycles(updater, findings);
  FindInA2Plan(updater, findings);
}

// Where the image leaves a gap for a reserved sector, as an A2 image must, its author expects the
// gap to be skipped.
void FindGaps(const C1Update& updater, const Findings& findings) {
  const ByteView image = ImageOf(updater);
  const uint32_t size = updater.flash.sectorSize;
  const AddressSet reserved(updater.flash.reservedSectors);
  for (uint64_t start = 0; start + size < image.size(); start += size) {
    if (!reserved.Contains(static_cast<uint32_t>(start))) continue;
    if (IsGap(image.subspan(start, size))) findings.Add(FindingCode::kC1GapNotSkipped, start);
  }
}

void FindInC1(C1Update& updater, const Findings& findings) {
  const C1Description& flash = updater.flash;
  findings.Truncated("Sector Size", flash.sectorSize, kSectorSizeEnd - 1);
  for (const uint32_t address : flash.reservedSectors) {
    if (address % flash.sectorSize != 0) {
      findings.Add(FindingCode::kReservedWithoutSector, address, flash.sectorSize);
    }
  }
  int32_t span = 0;
  if (!updater.FindSpan(updater.dataLength, span)) {
    return findings.Add(FindingCode::kC1NeverFits);
  }
  FindGaps(updater, findings);
}

}  // namespace

void FindInFlash(AXUpdate& updater, size_t pack, FindingList& findings) {
  const Findings found(pack, findings);
  if (const auto* a1 = dynamic_cast<const A1Update*>(&updater)) {
    FindInA1(*a1, found);
  } else if (const auto* a2 = dynamic_cast<const A2Update*>(&updater)) {
    FindInA2(*a2, found);
  } else if (auto* c1 = dynamic_cast<C1Update*>(&updater)) {
    FindInC1(*c1, found);
  }
}

}  // namespace hollin
