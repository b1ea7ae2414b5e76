// SPDX-License-Identifier: MIT
#include "simulator/a2_flash.h"

#include <algorithm>
#include <utility>

namespace hollin::simulator {
namespace {

constexpr uint16_t kToggleBits = 0x0044;

uint32_t LastSectorWords(const std::vector<uint32_t>& sectors) {
  return sectors.size() < 2 ? 0 : sectors.back() - sectors[sectors.size() - 2];
}

uint64_t ChipBytes(const std::vector<uint32_t>& sectors) {
  if (sectors.size() < 2) return 0;
  return (uint64_t{sectors.back()} - sectors.front() + LastSectorWords(sectors)) * 2;
}

// A command with cycles: code, twice the number of cycles (1), parameters, then address (2) and
// data (2) of each. False when its size is another.
bool ReadCycles(ByteView command, size_t parameterCount, BufferCommand& read) {
  if (command.size() < 2 + parameterCount) return false;
  const ByteView cycles = command.subspan(2 + parameterCount);
  if (cycles.size() % 4 != 0 || command[1] != static_cast<uint8_t>(cycles.size() / 2)) return false;
  read.parameters.assign(command.begin() + 2, command.end() - static_cast<long>(cycles.size()));
  for (size_t i = 0; i < cycles.size(); i += 4) {
    read.cycles.push_back({ReadU16(cycles, i), ReadU16(cycles, i + 2)});
  }
  return true;
}

}  // namespace

A2Flash::A2Flash(A2Profile profile, const VirtualClock& clock)
    : FlashUnit(profile.mode, ChipBytes(profile.sectors), profile.erasedWord),
      profile(std::move(profile)),
      eraser(memory, clock, this->profile.eraseTime) {}

void A2Flash::Reset() {
  seen.clear();
  armed = Armed::kNothing;
  eraser.Forget();
}

bool A2Flash::Execute(ByteView command, Replies& replies) {
  switch (command[0]) {
    case 0x02:
      return EraseCycle(command, replies);
    case 0x03:
      return Poll(command, replies);
    case 0x04:
      return Program(command, replies);
    case 0x05:
      return WriteBuffer(command, replies);
    case 0x06:
      return ProgramBuffer(command, replies);
    default:
      return false;
  }
}

bool A2Flash::IsSector(uint32_t address) const {
  return std::ranges::binary_search(profile.sectors, address);
}

Range A2Flash::SectorRange(uint32_t address) const {
  const auto next = std::ranges::upper_bound(profile.sectors, address);
  const uint32_t words =
      next == profile.sectors.end() ? LastSectorWords(profile.sectors) : *next - address;
  return {(uint64_t{address} - profile.sectors.front()) * 2, uint64_t{words} * 2};
}

bool A2Flash::Locate(uint32_t address, uint64_t words, Range& range) const {
  if (profile.sectors.empty() || address < profile.sectors.front()) return false;
  range = {(uint64_t{address} - profile.sectors.front()) * 2, words * 2};
  return memory.Contains(range.offset, range.length);
}

// Erase cycle: 0x02, address (4), data (2). The reply is its echo.
bool A2Flash::EraseCycle(ByteView command, Replies& replies) {
  if (command.size() != 7) return false;
  armed = Armed::kNothing;
  OnBus({ReadU32(command, 1), ReadU16(command, 5)});
  replies.push_back(Echo(command));
  return true;
}

// A wrong cycle makes the chip forget what it saw, but may be the first of the next command. While
// it erases it does not listen.
void A2Flash::OnBus(BusCycle cycle) {
  if (eraser.Busy()) return;
  seen.push_back(cycle);
  if (!SpellsErase()) seen.erase(seen.begin(), seen.end() - 1);
  if (!SpellsErase()) seen.clear();
  if (seen.size() < profile.erase.size() || seen.empty()) return;
  eraser.Start(SectorRange(cycle.address));
  seen.clear();
}

// Whether the cycles seen are an erase command or the beginning of one.
bool A2Flash::SpellsErase() const {
  if (seen.size() > profile.erase.size() || profile.sectors.empty()) return false;
  const bool absolute = profile.sectors.front() == A2Profile::kAbsoluteStart;
  const uint32_t sector = absolute ? 0 : seen[0].address - profile.erase[0].address;
  for (size_t i = 0; i < seen.size(); i++) {
    if (seen[i].data != profile.erase[i].data) return false;
    if (i + 1 == profile.erase.size()) {
      return IsSector(seen[i].address) && (absolute || i == 0 || seen[i].address == sector);
    }
    if (seen[i].address != profile.erase[i].address + sector) return false;
    if (!absolute && !IsSector(sector)) return false;
  }
  return true;
}

// Erase poll: 0x03, address (4). The reply is its echo and the word at the address (2). While the
// chip erases it tells its status everywhere; once it is done, the loader tells the end of the
// erase in the erased sector alone, and a host that polls another waits for ever.
bool A2Flash::Poll(ByteView command, Replies& replies) {
  if (command.size() != 5) return false;
  Range range;
  const bool isInChip = Locate(ReadU32(command, 1), 1, range);
  const bool isBusy = eraser.Busy();
  uint16_t word = 0;
  if (isBusy || (eraser.WasStarted() && !(isInChip && eraser.Covers(range.offset)))) {
    word = busyStatus ^= kToggleBits;
  } else if (isInChip) {
    word = ReadU16(memory.Contents(), range.offset);
  }
  Reply reply{ReplyKind::kWord, Bytes(command.begin(), command.end())};
  reply.bytes.push_back(static_cast<uint8_t>(word));
  reply.bytes.push_back(static_cast<uint8_t>(word >> 8));
  replies.push_back(std::move(reply));
  return true;
}

// Word program: 0x04, cycles. The reply is its echo.
bool A2Flash::Program(ByteView command, Replies& replies) {
  BufferCommand read;
  if (!ReadCycles(command, 0, read)) return false;
  const bool valid = read.cycles == profile.program && !eraser.Busy();
  armed = valid ? Armed::kWordProgram : Armed::kNothing;
  replies.push_back(Echo(command));
  return true;
}

// Write buffer: 0x05, cycles behind five parameters. The reply is its echo.
bool A2Flash::WriteBuffer(ByteView command, Replies& replies) {
  BufferCommand read;
  if (!ReadCycles(command, 5, read)) return false;
  const bool valid = read == profile.writeBuffer && !eraser.Busy();
  armed = valid ? Armed::kWriteBuffer : Armed::kNothing;
  replies.push_back(Echo(command));
  return true;
}

// Program buffer: 0x06, cycles behind two parameters. The reply is its echo. It wants the buffer
// command before it, or itself: a host that did not get the echo sends it again.
bool A2Flash::ProgramBuffer(ByteView command, Replies& replies) {
  BufferCommand read;
  if (!ReadCycles(command, 2, read)) return false;
  const bool isInTurn = armed == Armed::kWriteBuffer || armed == Armed::kProgramBuffer;
  const bool valid = read == profile.programBuffer && isInTurn;
  armed = valid ? Armed::kProgramBuffer : Armed::kNothing;
  replies.push_back(Echo(command));
  return true;
}

// Header: 0x07, address in words (4), number of words (2, 0 means 65536), sum of the words (2),
// 0x00 (3). The data comes as one message.
bool A2Flash::Announce(ByteView header, Block& block) {
  const uint16_t words = ReadU16(header, 5);
  Range range;
  if (!Locate(ReadU32(header, 1), words == 0 ? 65536 : words, range)) return false;
  block = {.address = ReadU32(header, 1),
           .size = range.length,
           .sum = ReadU16(header, 7),
           .messageSize = range.length};
  return true;
}

bool A2Flash::TakesBlocks() const {
  return armed == Armed::kWordProgram || armed == Armed::kProgramBuffer;
}

void A2Flash::Write(const Block& block, ByteView data, Replies& replies) {
  Range range;
  if (!TakesBlocks() || eraser.Busy()) {
    armed = Armed::kNothing;  // what is no command breaks one off
    return replies.push_back(Status(kRefused));
  }
  const bool sound = (SumWords(data) & 0xFFFF) == block.sum;
  if (!sound || !Locate(block.address, block.size / 2, range)) {
    return replies.push_back(Status(kRefused));
  }
  replies.push_back(Status(kBlockArrived));
  const bool written = memory.Program(range.offset, data);
  replies.push_back(Status(written ? kBlockInFlash : kRefused));
}

// Address and length in words.
bool A2Flash::Sum(uint32_t address, uint32_t length, uint16_t& sum) {
  Range range;
  if (eraser.Busy() || !Locate(address, length, range)) return false;
  sum = static_cast<uint16_t>(SumWords(memory.Contents().subspan(range.offset, range.length)));
  return true;
}

}  // namespace hollin::simulator
