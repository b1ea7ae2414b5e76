// SPDX-License-Identifier: MIT
// One kind of flash with its part of the loader: what the keyboard does with the commands that only
// this kind knows, with announced blocks, and with a range that is to be summed. The keyboard owns
// its units, selects one by the mode command and speaks the commands that all kinds share.
#pragma once

#include <cstdint>
#include <vector>

#include "base/bytes.h"
#include "simulator/flash_memory.h"

namespace hollin::simulator {

// What a reply is, for the faults that spoil one sort only.
enum class ReplyKind { kEcho, kStatus, kSum, kWord, kCapacity };

struct Reply {
  ReplyKind kind = ReplyKind::kStatus;
  Bytes bytes;
};
using Replies = std::vector<Reply>;

inline constexpr uint8_t kAccepted = 0xF1;
inline constexpr uint8_t kBlockArrived = 0xF4;
inline constexpr uint8_t kBlockInFlash = 0xD4;
inline constexpr uint8_t kRefused = 0xF0;  // this keyboard's answer to what it will not do

inline Reply Status(uint8_t status) { return {ReplyKind::kStatus, {status}}; }
inline Reply Echo(ByteView command) {
  return {ReplyKind::kEcho, Bytes(command.begin(), command.end())};
}

// A block that a header announced and whose data is to follow.
struct Block {
  uint32_t address = 0;    // in the unit's own units
  size_t size = 0;         // in bytes
  uint16_t sum = 0;        // as announced
  size_t messageSize = 0;  // the data comes in messages of this many bytes, the last may be shorter
};

class FlashUnit {
 public:
  FlashUnit(uint8_t mode, uint64_t size, uint16_t erasedWord = 0xFFFF)
      : mode(mode), memory(size, erasedWord) {}
  FlashUnit(const FlashUnit&) = delete;
  FlashUnit& operator=(const FlashUnit&) = delete;
  virtual ~FlashUnit() = default;

  // The mode command chose this unit: the loader starts afresh. The chip goes on with what it does.
  virtual void Reset() {}
  // The plug was pulled: what the chip was doing ends half-done.
  virtual void LosePower() {}
  // A command that only this kind knows. False refuses it.
  virtual bool Execute(ByteView /*command*/, Replies& /*replies*/) { return false; }
  // A block header of 12 bytes. False refuses it; otherwise it is echoed and the data awaited.
  virtual bool Announce(ByteView header, Block& block) = 0;
  // All of an announced block's data arrived.
  virtual void Write(const Block& block, ByteView data, Replies& replies) = 0;
  // The sum of a range of the flash, address and length in the unit's own units. False refuses.
  virtual bool Sum(uint32_t address, uint32_t length, uint16_t& sum) = 0;

  const uint8_t mode;  // the number by which the mode command selects it
  FlashMemory memory;
};

}  // namespace hollin::simulator
