// SPDX-License-Identifier: MIT
// The A2 flash: a parallel NOR chip of 16-bit words, addressed in words, with the part of the
// loader that runs the bus. The loader puts every cycle it is sent on the bus and echoes it, valid
// or not; it is the chip that erases only when the cycles spell its erase command, and that takes
// blocks only after its programming command.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "simulator/flash_unit.h"
#include "simulator/slow_erase.h"
#include "simulator/virtual_clock.h"

namespace hollin::simulator {

struct BusCycle {
  uint32_t address = 0;  // of a word
  uint16_t data = 0;

  bool operator==(const BusCycle&) const = default;
};

// A command with the parameters that go before its cycles.
struct BufferCommand {
  Bytes parameters;
  std::vector<BusCycle> cycles;

  bool operator==(const BufferCommand&) const = default;
};

struct A2Profile {
  // A chip whose sectors begin here wants the erase command at its own addresses; any other wants
  // it at those addresses counted from the sector.
  static constexpr uint32_t kAbsoluteStart = 0x1400;

  uint8_t mode = 1;
  // Where sectors begin, ascending, at least two; the last is as long as the one before it.
  std::vector<uint32_t> sectors = {0x00000, 0x08000, 0x10000, 0x18000, 0x20000, 0x28000,
                                   0x30000, 0x38000, 0x40000, 0x48000, 0x50000, 0x58000,
                                   0x60000, 0x68000, 0x70000, 0x78000};
  // The last cycle's address is the sector's, whatever stands here.
  std::vector<BusCycle> erase = {{0x555, 0xAA}, {0x2AA, 0x55}, {0x555, 0x80},
                                 {0x555, 0xAA}, {0x2AA, 0x55}, {0x000, 0x30}};
  std::vector<BusCycle> program = {{0x555, 0xAA}, {0x2AA, 0x55}, {0x555, 0xA0}};
  // Parameters: count, PA1, PA2, SA1, SA2.
  BufferCommand writeBuffer = {{0x0F, 3, 0xFF, 4, 0xFF},
                               {{0x555, 0xAA}, {0x2AA, 0x55}, {0x000, 0x25}, {0x000, 0x0F}}};
  // Parameters: SA1, SA2.
  BufferCommand programBuffer = {{1, 0xFF}, {{0x000, 0x29}}};
  VirtualClock::Duration eraseTime = std::chrono::milliseconds(500);  // of one sector
  uint16_t erasedWord = 0xFFFF;                                       // what an erased word reads
  std::string file = {};
};

class A2Flash : public FlashUnit {
 public:
  // The clock is lent.
  A2Flash(A2Profile profile, const VirtualClock& clock);

  void Reset() override;
  void LosePower() override { eraser.LosePower(); }
  bool Execute(ByteView command, Replies& replies) override;
  bool Announce(ByteView header, Block& block) override;
  void Write(const Block& block, ByteView data, Replies& replies) override;
  bool Sum(uint32_t address, uint32_t length, uint16_t& sum) override;

 private:
  // What the programming commands so far have prepared; blocks want one of the last two.
  enum class Armed { kNothing, kWriteBuffer, kWordProgram, kProgramBuffer };

  [[nodiscard]] bool IsSector(uint32_t address) const;
  [[nodiscard]] Range SectorRange(uint32_t address) const;
  // In bytes from the start of the chip; false outside it.
  [[nodiscard]] bool Locate(uint32_t address, uint64_t words, Range& range) const;
  [[nodiscard]] bool TakesBlocks() const;

  bool EraseCycle(ByteView command, Replies& replies);
  void OnBus(BusCycle cycle);
  [[nodiscard]] bool SpellsErase() const;
  bool Poll(ByteView command, Replies& replies);
  bool Program(ByteView command, Replies& replies);
  bool WriteBuffer(ByteView command, Replies& replies);
  bool ProgramBuffer(ByteView command, Replies& replies);

  A2Profile profile;
  SlowErase eraser;
  std::vector<BusCycle> seen;  // of an erase command so far
  Armed armed = Armed::kNothing;
  uint16_t busyStatus = 0;  // toggles while the chip erases
};

}  // namespace hollin::simulator
