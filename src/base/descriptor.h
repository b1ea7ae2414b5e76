// SPDX-License-Identifier: MIT
// A file descriptor that closes itself.
#pragma once

#include <unistd.h>

namespace hollin {

struct Descriptor {
  explicit Descriptor(int number) : number(number) {}
  ~Descriptor() {
    if (IsOpen()) close(number);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  [[nodiscard]] bool IsOpen() const { return number >= 0; }

  const int number;
};

}  // namespace hollin
