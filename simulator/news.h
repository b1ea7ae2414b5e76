// SPDX-License-Identifier: MIT
// Prints what a keyboard is asked and what becomes of it, one line each, as it happens.
#pragma once

#include <cstddef>
#include <cstdint>

#include "simulator/keyboard.h"

namespace hollin::simulator {

class News {
 public:
  // Prints nothing at all unless `wanted`.
  explicit News(bool wanted) : wanted(wanted) {}

  void Print(const char* line) const;
  // What is new since the last call.
  void Print(const Keyboard& keyboard);

 private:
  bool wanted;
  size_t commands = 0;
  uint64_t blocks = 0;
  uint64_t faults = 0;
};

}  // namespace hollin::simulator
