// SPDX-License-Identifier: MIT
// An erase that takes its time. The cells are cleared first, so that a chip that loses its power
// meanwhile is left with zeros, and read as erased only when the time is over.
#pragma once

#include "simulator/flash_memory.h"
#include "simulator/virtual_clock.h"

namespace hollin::simulator {

class SlowErase {
 public:
  // Memory and clock are lent.
  SlowErase(FlashMemory& memory, const VirtualClock& clock, VirtualClock::Duration length)
      : memory(memory), clock(clock), length(length) {}

  // Wants a range that the memory contains, and no erase under way.
  void Start(Range range) {
    memory.ClearBeforeErase(range.offset, range.length);
    current = range;
    busy = true;
    done = clock.Now() + length;
  }

  // Finishes an erase whose time is over.
  [[nodiscard]] bool Busy() {
    if (busy && clock.Now() >= done) {
      memory.Erase(current.offset, current.length);
      busy = false;
    }
    return busy;
  }

  void LosePower() {
    if (Busy()) busy = false;
  }

 private:
  FlashMemory& memory;
  const VirtualClock& clock;
  VirtualClock::Duration length;
  VirtualClock::Duration done{};
  Range current;
  bool busy = false;
};

}  // namespace hollin::simulator
