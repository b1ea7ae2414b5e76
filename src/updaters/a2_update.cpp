// SPDX-License-Identifier: MIT
#include "updaters/a2_update.h"

#include <algorithm>
#include <functional>
#include <utility>

#include "base/pause.h"
#include "device/commands.h"
#include "updaters/a2_erase_timer.h"
#include "updaters/description_file.h"
#include "updaters/sector_attempts.h"

namespace hollin {
namespace {

constexpr uint32_t kWordSize = 2;
constexpr uint32_t kFramingSteps = 2;  // mode before the sectors, verify behind them
constexpr uint32_t kLargestBlock = 0x10000;

// Deliberate: in a flash whose first sector begins here, erase cycles go to their addresses as
// listed.
constexpr uint32_t kAbsoluteCyclesStart = 0x1400;

constexpr int kMatchesWanted = 2;
constexpr int kMostReErases = 5;
constexpr int kProgramResends = 10;
constexpr int kBufferResends = 5;

// Seconds, as Send and Receive take them.
constexpr double kCommandTimeOut = 0.1;
constexpr double kCyclesTimeOut = 0.2;
constexpr double kStatusTimeOut = 0.2;
constexpr double kSingleBlockTimeOut = 1.0;
constexpr double kSeveralBlocksTimeOut = 3.0;

bool HasCycles(uint32_t count, const std::vector<uint32_t>& addresses,
               const std::vector<uint32_t>& data) {
  return addresses.size() == count && data.size() == count;
}

}  // namespace

A2Update::A2Update(std::string configPath, std::string imagePath)
    : AXUpdate(std::move(configPath), std::move(imagePath)) {
  mode = flash.mode;
}

bool A2Update::LoadFiles() {
  if (!readFile(configPath, description)) return Refuse(LoadRefusal::kUnreadable);
  const bool isRead = flash.Read(description.Text(), listener);
  mode = flash.mode;
  if (!isRead) return Refuse(LoadRefusal::kDescription);
  return CheckConfig() && LoadImage() && PlanSteps();
}

// The cycles of both ways of programming are checked, whichever is used.
bool A2Update::CheckConfig() {
  if (flash.flashModel.empty()) return Refuse(LoadRefusal::kNoFlashModel);
  if (flash.reservedSectors.empty()) return Refuse(LoadRefusal::kNoReservedSector);
  if (flash.blockSize == 0 || flash.blockSize > kLargestBlock || flash.blockSize % 2 != 0) {
    return Refuse(LoadRefusal::kBlockSize);
  }
  if (flash.maxWriteBack == 0) return Refuse(LoadRefusal::kNoWriteBackTime);
  if (flash.maxSectorEraseTime == 0) return Refuse(LoadRefusal::kNoEraseTime);
  if (!HasCycles(flash.eraseCycleCount, flash.eraseAddrs, flash.eraseData)) {
    return Refuse(LoadRefusal::kEraseCycles);
  }
  if (!HasCycles(flash.programCycleCount, flash.programAddrs, flash.programData)) {
    return Refuse(LoadRefusal::kProgramCycles);
  }
  if (!HasCycles(flash.writeBufferCycleCount, flash.writeBufferAddrs, flash.writeBufferData)) {
    return Refuse(LoadRefusal::kWriteBufferCycles);
  }
  if (!HasCycles(flash.programBufferCycleCount, flash.programBufferAddrs,
                 flash.programBufferData)) {
    return Refuse(LoadRefusal::kProgramBufferCycles);
  }
  return !flash.sectorAddrs.empty() || Refuse(LoadRefusal::kNoSectors);
}

bool A2Update::PlanSteps() {
  checksum = static_cast<uint16_t>(ImageWordSum());
  // Deliberate: the length is doubled and the offset, which counts words, is not.
  if (imageLength * 2 < int64_t{flash.fileOffset}) return Refuse(LoadRefusal::kFileOffset);
  imageStart = flash.fileOffset * kWordSize;
  bytesToWrite = static_cast<uint32_t>(imageLength) - imageStart;
  plannedSectors = 0;
  const std::vector<uint32_t>& sectors = flash.sectorAddrs;
  const auto count = static_cast<uint32_t>(sectors.size());
  if (count < 2)
    return Refuse(LoadRefusal::kOneSector);  // the only sector has no neighbour to tell its size
  const uint32_t capacity = (sectors.back() - sectors.front()) * kWordSize + SectorSize(count - 1);
  if (static_cast<int32_t>(capacity) < static_cast<int32_t>(bytesToWrite)) {
    return Refuse(LoadRefusal::kImageTooLong);
  }
  const auto end = std::find_if(sectors.begin() + 1, sectors.end(), [&](uint32_t address) {
    return (address - sectors.front()) * kWordSize >= bytesToWrite;
  });
  plannedSectors = static_cast<uint32_t>(end - sectors.begin());
  reserved = AddressSet(flash.reservedSectors);
  isPlanInsideImage = PlanLiesInImage();
  return SetStepCount(uint64_t{plannedSectors} + kFramingSteps);
}

bool A2Update::RunStep(uint32_t index) {
  // Deliberate: a plan that reaches outside the image, or whose sectors are out of order, loads,
  // and fails here, before the first erase.
  if (index >= plannedSectors || !isPlanInsideImage) return Fail(UpdateFailure::kBeyondPlan);
  if (index == 0) {
    readPos = 0;
    bytesDone = 0;
  }
  if (IsReserved(index)) {
    SkipSector(index);
    return true;
  }
  if (!HasBytesLeft(BytesOfSector(index))) return Fail(UpdateFailure::kBeyondPlan);
  const bool isWritten = EraseAndProgram(
      readPos, [&] { return EraseSector(index); }, [&] { return ProgramSector(index); });
  if (!isWritten) return false;
  bytesDone += SectorSize(index);
  return true;
}

bool A2Update::VerifyImage() {
  if (plannedSectors > 0 && !isPlanInsideImage) return Fail(UpdateFailure::kBeyondPlan);
  readPos = 0;
  bytesDone = 0;
  for (uint32_t sector = 0; sector < plannedSectors; sector++) {
    if (IsReserved(sector)) {
      SkipSector(sector);
      continue;
    }
    const uint32_t bytes = BytesOfSector(sector);
    const ByteView data = ImageView().subspan(imageStart + readPos, bytes);
    const uint32_t sum = WordSum(data.data(), static_cast<int32_t>(data.size()));
    bytesDone += SectorSize(sector);
    readPos += bytes;
    if (!VerifyRange(flash.sectorAddrs[sector], bytes / kWordSize, sum)) return false;
  }
  return true;
}

double A2Update::DataTimeOut(uint32_t sector) const {
  return WordsOfSector(sector) <= flash.blockSize ? kSingleBlockTimeOut : kSeveralBlocksTimeOut;
}

// In bytes, modulo 2^32. The last sector of the list is as large as the one before it.
uint32_t A2Update::SectorSize(uint32_t sector) const {
  return static_cast<uint32_t>(WholeSectorSize(sector));
}

// The same without the modulus; of a list that ascends.
uint64_t A2Update::WholeSectorSize(uint32_t sector) const {
  const std::vector<uint32_t>& sectors = flash.sectorAddrs;
  const size_t first = std::min<size_t>(sector, sectors.size() - 2);
  return (uint64_t{sectors[first + 1]} - sectors[first]) * kWordSize;
}

// What the image has for a sector, with `bytesDone` at its start: the last planned one gets the
// rest.
uint32_t A2Update::BytesOfSector(uint32_t sector) const {
  return sector + 1 == plannedSectors ? bytesToWrite - bytesDone : SectorSize(sector);
}

// An odd byte is dropped.
uint32_t A2Update::WordsOfSector(uint32_t sector) const {
  return BytesOfSector(sector) / kWordSize;
}

bool A2Update::IsReserved(uint32_t sector) const {
  return reserved.Contains(flash.sectorAddrs[sector]);
}

// Steps that run in order always find their bytes; one that is taken out of turn might not.
bool A2Update::HasBytesLeft(uint32_t count) const {
  return uint64_t{imageStart} + readPos + count <= static_cast<uint64_t>(imageLength);
}

// Looks at the whole plan in 64 bits, reserved sectors included. In a list that ascends throughout
// every planned range ends where the next begins, so all of them lie in the image when the last one
// begins there; and the last one must not take more than it holds.
bool A2Update::PlanLiesInImage() const {
  const std::vector<uint32_t>& sectors = flash.sectorAddrs;
  const auto disorder = std::adjacent_find(sectors.begin(), sectors.end(), std::greater_equal{});
  if (disorder != sectors.end()) return false;
  const uint64_t rest = static_cast<uint64_t>(imageLength) - uint64_t{flash.fileOffset} * kWordSize;
  if (rest != bytesToWrite) return false;  // the offset lies behind the image, or 32 bits overflow
  const uint32_t last = plannedSectors - 1;
  const uint64_t begin = (uint64_t{sectors[last]} - sectors.front()) * kWordSize;
  return begin <= rest && rest - begin <= WholeSectorSize(last);
}

// The image's bytes for a reserved sector are dropped, not written elsewhere.
void A2Update::SkipSector(uint32_t sector) {
  readPos += SectorSize(sector);
  bytesDone += SectorSize(sector);
}

bool A2Update::EraseSector(uint32_t sector) {
  int reErases = 0;
  return Erase(sector, reErases);
}

// Deliberate: `reErases` is one counter for the sector, those that run inside a re-erase included:
// so it always ends.
bool A2Update::Erase(uint32_t sector, int& reErases) {
  return Connect() && SendEraseCycles(sector) &&
         SendCommand(ErasePoll(flash.sectorAddrs[sector]), kCommandTimeOut) &&
         PollErase(sector, reErases);
}

bool A2Update::SendEraseCycles(uint32_t sector) {
  const uint32_t start = flash.sectorAddrs[sector];
  const uint32_t base = flash.sectorAddrs.front() == kAbsoluteCyclesStart ? 0 : start;
  for (uint32_t cycle = 0; cycle < flash.eraseCycleCount; cycle++) {
    const bool isLast = cycle + 1 == flash.eraseCycleCount;
    const uint32_t address = isLast ? start : flash.eraseAddrs[cycle] + base;
    const Bytes command = EraseCycle(address, flash.eraseData[cycle]);
    if (!Exchange(command, command, kCommandTimeOut)) return false;
  }
  return true;
}

bool A2Update::PollErase(uint32_t sector, int& reErases) {
  A2EraseTimer timer;
  int matches = 0;
  while (true) {
    Pause(timer.NextPause());
    bool isErased = false;
    if (!AwaitErasedWord(isErased)) return false;
    matches = isErased ? matches + 1 : 0;
    if (matches == kMatchesWanted) return true;
    timer.CountPause();
    // Deliberate: elapsed time is never reset, so that every later poll without success erases
    // again.
    if (timer.IsLate(flash.maxSectorEraseTime)) {
      if (reErases == kMostReErases) return Fail(UpdateFailure::kNotErased);
      reErases++;
      static_cast<void>(Erase(sector, reErases));
    }
    if (!SendCommand(ErasePoll(flash.sectorAddrs[sector]), kCommandTimeOut)) return false;
  }
}

// Deliberate: the 16-bit word is compared with all 32 bits of the erased value.
bool A2Update::AwaitErasedWord(bool& isErased) {
  Bytes reply = Packet().Zeros(kErasePollWord).U16(~flash.erasedValue);
  if (!AwaitReply(reply, kCommandTimeOut)) return false;
  isErased = ReadU16(reply, kErasePollWord) == flash.erasedValue;
  return true;
}

bool A2Update::ProgramSector(uint32_t sector) {
  const bool isStarted = flash.writeBufferMode ? StartWriteBuffer() : StartWordProgram();
  return isStarted && SendBlocks(sector);
}

bool A2Update::StartWordProgram() {
  return SendUntilEchoed(ProgramCycles({flash.programAddrs, flash.programData}), kProgramResends,
                         kCyclesTimeOut);
}

bool A2Update::StartWriteBuffer() {
  const WriteBufferParameters parameters{
      .count = flash.writeBufferCount,
      .pa1 = flash.writeBufferPA1,
      .pa2 = flash.writeBufferPA2,
      .sa1 = flash.writeBufferSA1,
      .sa2 = flash.writeBufferSA2,
  };
  return SendUntilEchoed(
             WriteBufferCycles(parameters, {flash.writeBufferAddrs, flash.writeBufferData}),
             kBufferResends, kCyclesTimeOut) &&
         SendUntilEchoed(ProgramBufferCycles(flash.programBufferSA1, flash.programBufferSA2,
                                             {flash.programBufferAddrs, flash.programBufferData}),
                         kBufferResends, kCyclesTimeOut);
}

bool A2Update::SendBlocks(uint32_t sector) {
  const double dataTimeOut = DataTimeOut(sector);
  uint32_t address = flash.sectorAddrs[sector];
  for (uint32_t left = WordsOfSector(sector); left > 0;) {
    const uint32_t count = std::min(left, flash.blockSize);
    if (!SendBlock(address, count, dataTimeOut)) return false;
    address += count;
    left -= count;
  }
  return true;
}

bool A2Update::SendBlock(uint32_t address, uint32_t words, double dataTimeOut) {
  const ByteView data = ImageView().subspan(imageStart + readPos, size_t{words} * kWordSize);
  const uint32_t sum = WordSum(data.data(), static_cast<int32_t>(data.size()));
  const Bytes header = BlockHeader(address, words, sum);
  if (!ExchangePrefix(header, header, kHeaderEcho, kCommandTimeOut)) return false;
  if (!Send(data, dataTimeOut)) return false;
  if (!AwaitStatus(kBlockReceived, kStatusTimeOut)) return false;
  if (!AwaitStatus(kBlockWritten, kStatusTimeOut)) return false;
  readPos += static_cast<uint32_t>(data.size());
  return true;
}

}  // namespace hollin
