// SPDX-License-Identifier: MIT
#include "updaters/c1_update.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <limits>
#include <utility>

#include "base/pause.h"
#include "device/commands.h"
#include "updaters/sector_attempts.h"

namespace hollin {
namespace {

constexpr uint32_t kMode = 3;
constexpr uint32_t kFramingSteps = 2;  // mode before the data sectors, verify behind them
constexpr uint32_t kChunkSize = 8192;
constexpr uint32_t kLineModes = 0x16;  // the bits numbered 1, 2 and 4

constexpr std::chrono::milliseconds kPollPause{20};
constexpr int kPollsInTime = 100;  // of 20 ms each; then the erase is late
constexpr int kExtraPolls = 5;

// Seconds, as Send and Receive take them.
constexpr double kCommandTimeOut = 0.1;
constexpr double kStatusTimeOut = 0.2;
constexpr double kOneChunkTimeOut = 1.0;
constexpr double kSeveralChunksTimeOut = 3.0;

}  // namespace

C1Update::C1Update(std::string configPath, std::string imagePath)
    : AXUpdate(std::move(configPath), std::move(imagePath)) {
  Reset();
}

void C1Update::Reset() {
  mode = kMode;
  flash = {};
  reserved = {};
  RestartWalk();
}

bool C1Update::LoadFiles() {
  if (!readFile(configPath, description)) return Refuse(LoadRefusal::kUnreadable);
  if (!flash.Read(description.Text(), listener)) return Refuse(LoadRefusal::kDescription);
  return CheckConfig() && LoadImage() && PlanSteps();
}

bool C1Update::CheckConfig() {
  // Deliberate: a flash without a reserved sector is refused; each keeps one out of the updater's
  // reach.
  if (flash.reservedSectors.empty()) return Refuse(LoadRefusal::kNoReservedSector);
  const bool isLineMode = flash.lineMode <= 4 && (kLineModes >> flash.lineMode & 1) != 0;
  if (!isLineMode) return Refuse(LoadRefusal::kLineMode);
  if (flash.spiNumber > 1) return Refuse(LoadRefusal::kSpiNumber);
  return flash.chipSelectNumber < 2 || Refuse(LoadRefusal::kChipSelect);
}

bool C1Update::PlanSteps() {
  if (flash.sectorSize == 0) return Refuse(LoadRefusal::kNoSectorSize);
  checksum = static_cast<uint16_t>(ImageWordSum());
  const auto length = static_cast<uint64_t>(imageLength);
  const uint64_t sectors = length / flash.sectorSize + (length % flash.sectorSize != 0 ? 1 : 0);
  if (!SetStepCount(sectors + kFramingSteps)) return false;
  dataSectorCount = static_cast<uint32_t>(sectors);
  dataStart = 0;
  dataLength = static_cast<uint32_t>(length);
  reserved = AddressSet(flash.reservedSectors);
  RestartWalk();
  return true;
}

bool C1Update::EnterUpdateMode(int32_t retries) {
  if (!Connect() || retries < 1) return false;
  if (!SwitchMode(retries)) return false;
  flashCapacity = 0;
  if (!AskCapacity(retries)) return false;
  int32_t span = 0;
  if (flashCapacity != 0 && FindSpan(dataLength, span) && flashCapacity >= span) return true;
  uint32_t firstFree = 0;
  const bool anyIsFree = FindUnreservedSector(0, firstFree);
  return Fail(anyIsFree ? UpdateFailure::kFlashTooSmall : UpdateFailure::kNoFreeSector);
}

bool C1Update::RunStep(uint32_t index) {
  if (index >= dataSectorCount) return Fail(UpdateFailure::kBeyondPlan);
  if (index == 0) {
    readPosition = 0;
    bytesDone = 0;
    RestartWalk();
  }
  uint32_t sector = 0;
  if (!FindUnreservedSector(index, sector)) return Fail(UpdateFailure::kNoFreeSector);
  if (!HasBytesLeft(BytesOfDataSector(index))) return Fail(UpdateFailure::kBeyondPlan);
  const bool isWritten = EraseAndProgram(
      readPosition, [&] { return Erase(sector); }, [&] { return ProgramSector(index, sector); });
  if (!isWritten) return false;
  bytesDone += flash.sectorSize;
  return true;
}

bool C1Update::VerifyImage() {
  readPosition = 0;
  bytesDone = 0;
  RestartWalk();
  for (uint32_t index = 0; index < dataSectorCount; index++) {
    uint32_t sector = 0;
    if (!FindUnreservedSector(index, sector)) return Fail(UpdateFailure::kNoFreeSector);
    const ByteView data = NextData(BytesOfDataSector(index));
    const auto length = static_cast<uint32_t>(data.size());
    const uint32_t sum = ByteSum(data.data(), static_cast<int32_t>(length));
    bytesDone += flash.sectorSize;
    readPosition += length;
    if (!VerifyRange(SectorAddress(sector), length, sum)) return false;
  }
  return true;
}

bool C1Update::IsReserved(uint32_t sector) const {
  return reserved.Contains(SectorAddress(sector));
}

bool C1Update::FindUnreservedSector(uint32_t index, uint32_t& sector) {
  if (place.isFound && index < place.index) RestartWalk();
  while (!place.isFound || place.index < index) {
    if (!AdvanceWalk()) return false;
  }
  sector = place.sector;
  return true;
}

// Deliberate: a span beyond a signed 32-bit number fits no flash, whatever capacity is told.
bool C1Update::FindSpan(uint32_t length, int32_t& span) {
  constexpr int64_t kLargest = std::numeric_limits<int32_t>::max();
  int64_t bytes = 0;
  RestartWalk();
  for (uint64_t covered = 0; covered < length; covered += flash.sectorSize) {
    if (!AdvanceWalk()) return false;
    bytes = (int64_t{place.sector} + 1) * flash.sectorSize;
    if (bytes > kLargest) return false;
  }
  span = static_cast<int32_t>(bytes);
  return true;
}

double C1Update::DataTimeOut(uint32_t index) const {
  return BytesOfDataSector(index) <= kChunkSize ? kOneChunkTimeOut : kSeveralChunksTimeOut;
}

void C1Update::RestartWalk() { place = {}; }

// Sector addresses wrap at 32 bits, so a run of reserved sectors that is longer than the list has
// distinct entries will never end.
bool C1Update::AdvanceWalk() {
  uint32_t sector = place.isFound ? place.sector + 1 : 0;
  for (size_t passed = 0; IsReserved(sector); sector++, passed++) {
    if (passed == reserved.Size()) return false;
  }
  place = {.index = place.isFound ? place.index + 1 : 0, .sector = sector, .isFound = true};
  return true;
}

uint32_t C1Update::BytesOfDataSector(uint32_t index) const {
  return index + 1 == dataSectorCount ? dataLength - index * flash.sectorSize : flash.sectorSize;
}

// Steps that run in order always find their bytes; one that is taken out of turn might not.
bool C1Update::HasBytesLeft(uint32_t count) const {
  return uint64_t{dataStart} + readPosition + count <= static_cast<uint64_t>(imageLength);
}

ByteView C1Update::NextData(uint32_t length) const {
  return ImageView().subspan(dataStart + readPosition, length);
}

bool C1Update::SwitchMode(int32_t& retries) {
  const Bytes command = ModeCommand(mode);
  while (!Exchange(command, std::array{kModeEntered}, kCommandTimeOut)) {
    if (retries < 2) return false;
    retries--;
  }
  return true;
}

bool C1Update::AskCapacity(int32_t retries) {
  if (!Connect()) return false;
  for (; retries > 0; retries--) {
    if (Configure()) return true;
  }
  return false;
}

bool C1Update::Configure() {
  const Bytes command =
      ConfigureCommand(flash.spiNumber, flash.chipSelectNumber, flash.lineMode, flash.sectorSize);
  // A reply may end early: what did not arrive is no acceptance, and a capacity without its last
  // byte must not pass for a small one, so it is negative.
  Bytes reply = Packet().Zeros(kConfigureCapacity).U32(0x80000000);
  if (!SendCommand(command, kCommandTimeOut) || !AwaitReply(reply, kCommandTimeOut)) return false;
  if (reply[0] != kModeEntered) {
    return Fail(UpdateFailure::kWrongReply, std::array{kModeEntered}, reply);
  }
  flashCapacity = static_cast<int32_t>(ReadU32(reply, kConfigureCapacity));
  return true;
}

bool C1Update::Erase(uint32_t sector) {
  if (!Connect()) return false;
  const uint32_t address = SectorAddress(sector);
  const Bytes command = EraseCommand(address);
  return Exchange(command, command, kCommandTimeOut) &&
         SendCommand(ErasePoll(address), kCommandTimeOut) && PollErase(address);
}

bool C1Update::PollErase(uint32_t address) {
  constexpr uint16_t kErased = 0xFFFF;
  for (int poll = 0; poll <= kPollsInTime + kExtraPolls; poll++) {
    Pause(kPollPause);
    Bytes reply(kErasePollReplySize, 0);
    if (!AwaitReply(reply, kCommandTimeOut)) return false;
    if (ReadU16(reply, kErasePollWord) == kErased) return true;
    const bool isLast = poll == kPollsInTime + kExtraPolls;
    if (!isLast && !SendCommand(ErasePoll(address), kCommandTimeOut)) return false;
  }
  return Fail(UpdateFailure::kNotErased);
}

bool C1Update::ProgramSector(uint32_t index, uint32_t sector) {
  const double dataTimeOut = DataTimeOut(index);
  uint32_t address = SectorAddress(sector);
  for (uint32_t left = BytesOfDataSector(index); left > 0;) {
    const ByteView data = NextData(std::min(left, kChunkSize));
    if (!SendChunk(address, data, dataTimeOut)) return false;
    const auto length = static_cast<uint32_t>(data.size());
    readPosition += length;
    address += length;
    left -= length;
  }
  return true;
}

bool C1Update::SendChunk(uint32_t address, ByteView data, double dataTimeOut) {
  const auto length = static_cast<uint32_t>(data.size());
  const Bytes header =
      SpiBlockHeader(address, length, ByteSum(data.data(), static_cast<int32_t>(length)));
  return ExchangePrefix(header, header, kSpiBlockHeaderEcho, kCommandTimeOut) &&
         Send(data, dataTimeOut) && AwaitStatus(kBlockReceived, kStatusTimeOut);
}

}  // namespace hollin
