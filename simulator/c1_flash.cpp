// SPDX-License-Identifier: MIT
#include "simulator/c1_flash.h"

#include <algorithm>
#include <utility>

namespace hollin::simulator {
namespace {

uint64_t AllBytes(const C1Profile& profile) {
  uint64_t total = 0;
  for (const auto& controller : profile.capacities) {
    for (uint32_t capacity : controller) total += capacity;
  }
  return total;
}

uint32_t ReadU24(ByteView bytes, size_t offset) {
  return ReadU16(bytes, offset) | uint32_t{bytes[offset + 2]} << 16;
}

}  // namespace

C1Flash::C1Flash(C1Profile profile, const VirtualClock& clock)
    : FlashUnit(profile.mode, AllBytes(profile)),
      profile(std::move(profile)),
      eraser(memory, clock, this->profile.eraseTime) {}

bool C1Flash::Execute(ByteView command, Replies& replies) {
  switch (command[0]) {
    case 0x02:
      return Erase(command, replies);
    case 0x03:
      return EraseStatus(command, replies);
    case 0x0B:
      return Configure(command, replies);
    default:
      return false;
  }
}

Range C1Flash::ChipRange(size_t controller, size_t chipSelect) const {
  uint64_t offset = 0;
  for (size_t i = 0; i < C1Profile::kControllers; i++) {
    for (size_t j = 0; j < C1Profile::kChipSelects; j++) {
      const uint32_t capacity = profile.capacities[i][j];
      if (i == controller && j == chipSelect) return {offset, capacity};
      offset += capacity;
    }
  }
  return {};
}

bool C1Flash::Locate(uint32_t address, uint64_t length, Range& range) const {
  const Range& chip = configuration.chip;
  if (address > chip.length || length > chip.length - address) return false;
  range = {chip.offset + address, length};
  return true;
}

bool C1Flash::Suits(ByteView configure) const {
  const uint8_t lineMode = configure[3];
  if (configure[1] >= C1Profile::kControllers || configure[2] >= C1Profile::kChipSelects) {
    return false;
  }
  if (lineMode != 1 && lineMode != 2 && lineMode != 4) return false;
  return lineMode <= profile.lines &&
         std::ranges::count(profile.eraseUnits, ReadU24(configure, 4)) > 0;
}

// Configure: 0x0B, controller, chip select, data lines, sector size (3). The reply is 0xF1 and the
// chip's capacity (4), which is 0 where there is no chip.
bool C1Flash::Configure(ByteView command, Replies& replies) {
  if (command.size() != 7) return false;
  configuration = {};
  uint8_t status = kRefused;
  if (Suits(command)) {
    status = kAccepted;
    configuration = {.chip = ChipRange(command[1], command[2]),
                     .sectorSize = ReadU24(command, 4),
                     .lineMode = command[3]};
  }
  const auto capacity = static_cast<uint32_t>(configuration.chip.length);
  replies.push_back({ReplyKind::kCapacity, Packet().U8(status).U32(capacity)});
  return true;
}

// Erase: 0x02, address (4). The reply is its echo.
bool C1Flash::Erase(ByteView command, Replies& replies) {
  Range range;
  if (command.size() != 5 || configuration.sectorSize == 0 || eraser.Busy()) return false;
  const uint32_t address = ReadU32(command, 1);
  if (address % configuration.sectorSize != 0) return false;
  if (!Locate(address, configuration.sectorSize, range)) return false;
  eraser.Start(range);
  replies.push_back(Echo(command));
  return true;
}

// Erase status: 0x03, address (4). The reply is its echo and 0xFFFF once the sector there was
// erased. Before that, while an erase is under way, and anywhere else it is 0: a host that asks for
// another sector waits for ever.
bool C1Flash::EraseStatus(ByteView command, Replies& replies) {
  if (command.size() != 5 || configuration.sectorSize == 0) return false;
  Range range;
  const bool isThere = Locate(ReadU32(command, 1), 1, range) && eraser.Covers(range.offset);
  Reply reply{ReplyKind::kWord, Bytes(command.begin(), command.end())};
  reply.bytes.resize(7, eraser.Busy() || !isThere ? 0x00 : 0xFF);
  replies.push_back(std::move(reply));
  return true;
}

// Header: 0x07, address (4), length (4), sum of the bytes (2), 0x00. The data comes as one message.
bool C1Flash::Announce(ByteView header, Block& block) {
  const uint32_t length = ReadU32(header, 5);
  Range range;
  if (length == 0 || length > profile.bufferSize || eraser.Busy()) return false;
  if (!Locate(ReadU32(header, 1), length, range)) return false;
  block = {.address = ReadU32(header, 1),
           .size = length,
           .sum = ReadU16(header, 9),
           .messageSize = length};
  return true;
}

// A page program writes within one page, so the loader cuts the data at their borders. Like its
// chips, it does not look whether the cells were erased: the sum tells.
void C1Flash::Write(const Block& block, ByteView data, Replies& replies) {
  if ((SumBytes(data) & 0xFFFF) != block.sum) return replies.push_back(Status(kRefused));
  uint64_t address = block.address;
  while (!data.empty()) {
    const size_t size = std::min<size_t>(data.size(), kPageSize - address % kPageSize);
    memory.Program(configuration.chip.offset + address, data.first(size));
    address += size;
    data = data.subspan(size);
  }
  replies.push_back(Status(kBlockArrived));
}

bool C1Flash::Sum(uint32_t address, uint32_t length, uint16_t& sum) {
  Range range;
  if (configuration.sectorSize == 0 || eraser.Busy() || !Locate(address, length, range)) {
    return false;
  }
  sum = static_cast<uint16_t>(SumBytes(memory.Contents().subspan(range.offset, range.length)));
  return true;
}

}  // namespace hollin::simulator
