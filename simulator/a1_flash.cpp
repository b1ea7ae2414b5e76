// SPDX-License-Identifier: MIT
#include "simulator/a1_flash.h"

namespace hollin::simulator {

A1Flash::A1Flash(const A1Profile& profile)
    : FlashUnit(profile.mode, profile.size), base(profile.base) {}

// Header: 0x07, address (4), length (2, 0 means 65536), sum of the bytes (2), 0x00 (3).
bool A1Flash::Announce(ByteView header, Block& block) {
  const uint16_t length = ReadU16(header, 5);
  block = {.address = ReadU32(header, 1),
           .size = length == 0 ? size_t{65536} : length,
           .sum = ReadU16(header, 7),
           .messageSize = 64};
  if (!memory.Contains(base + block.address, block.size)) return false;
  memory.Erase(base + block.address, block.size);
  return true;
}

void A1Flash::Write(const Block& block, ByteView data, Replies& replies) {
  if ((SumBytes(data) & 0xFFFF) != block.sum) return replies.push_back(Status(kRefused));
  replies.push_back(Status(kBlockArrived));
  const bool written = memory.Program(base + block.address, data);
  replies.push_back(Status(written ? kBlockInFlash : kRefused));
}

bool A1Flash::Sum(uint32_t address, uint32_t length, uint16_t& sum) {
  if (!memory.Contains(address, length)) return false;
  sum = static_cast<uint16_t>(SumBytes(memory.Contents().subspan(address, length)));
  return true;
}

}  // namespace hollin::simulator
