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
    wasStarted = true;
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

  // Whether the latest erase, finished or not, took in this byte. The status of an erase can be had
  // nowhere else.
  [[nodiscard]] bool Covers(uint64_t offset) const {
    return wasStarted && offset >= current.offset && offset - current.offset < current.length;
  }
  // Whether there was an erase since the last Forget.
  [[nodiscard]] bool WasStarted() const { return wasStarted; }
  // The host starts afresh; an erase that is under way goes on.
  void Forget() { wasStarted = false; }

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
  bool wasStarted = false;
};

}  // namespace hollin::simulator
