// SPDX-License-Identifier: MIT
// The C1 flash: serial NOR chips behind two SPI controllers with two chip selects each. A configure
// command chooses one, with its data lines and its erase unit, and tells its capacity.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "simulator/flash_unit.h"
#include "simulator/slow_erase.h"
#include "simulator/virtual_clock.h"

namespace hollin::simulator {

struct C1Profile {
  static constexpr size_t kControllers = 2;
  static constexpr size_t kChipSelects = 2;

  uint8_t mode = 3;
  // In bytes, by controller and chip select; 0 where there is no chip.
  std::array<std::array<uint32_t, kChipSelects>, kControllers> capacities{{{1024 * 1024, 0}, {}}};
  std::vector<uint32_t> eraseUnits = {4096, 65536};  // that the chips can erase, in bytes
  uint32_t lines = 4;                                // most data lines: 1, 2 or 4
  uint32_t bufferSize = 8192;                        // the most bytes that the loader takes at once
  VirtualClock::Duration eraseTime = std::chrono::milliseconds(60);  // of one unit
  std::string file = {};  // keeps the contents of all chips, one after another
};

class C1Flash : public FlashUnit {
 public:
  static constexpr size_t kPageSize = 256;

  // What the configure command chose.
  struct Configuration {
    Range chip;  // its place in the memory
    uint32_t sectorSize = 0;
    uint8_t lineMode = 0;
  };

  // The clock is lent.
  C1Flash(C1Profile profile, const VirtualClock& clock);

  void Reset() override { configuration = {}; }
  void LosePower() override { eraser.LosePower(); }
  bool Execute(ByteView command, Replies& replies) override;
  bool Announce(ByteView header, Block& block) override;
  void Write(const Block& block, ByteView data, Replies& replies) override;
  bool Sum(uint32_t address, uint32_t length, uint16_t& sum) override;

  [[nodiscard]] const Configuration& Configured() const { return configuration; }
  // One chip's place in the memory; of length 0 where there is none.
  [[nodiscard]] Range ChipRange(size_t controller, size_t chipSelect) const;

 private:
  [[nodiscard]] bool Locate(uint32_t address, uint64_t length, Range& range) const;
  [[nodiscard]] bool Suits(ByteView configure) const;
  bool Configure(ByteView command, Replies& replies);
  bool Erase(ByteView command, Replies& replies);
  bool EraseStatus(ByteView command, Replies& replies);

  C1Profile profile;
  SlowErase eraser;
  Configuration configuration;  // empty before the configure command
};

}  // namespace hollin::simulator
