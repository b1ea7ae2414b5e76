// SPDX-License-Identifier: MIT
// The A1 flash: bytes, written through one window. There is no erase command: a block header erases
// what it announces.
#pragma once

#include <cstdint>
#include <string>

#include "simulator/flash_unit.h"

namespace hollin::simulator {

struct A1Profile {
  uint8_t mode = 2;
  uint32_t size = 1024 * 1024;  // in bytes
  uint32_t base = 0;  // where the window begins: header addresses count from here, verify's do not
  std::string file = {};  // keeps the contents; empty for none
};

class A1Flash : public FlashUnit {
 public:
  explicit A1Flash(const A1Profile& profile);

  bool Announce(ByteView header, Block& block) override;
  void Write(const Block& block, ByteView data, Replies& replies) override;
  bool Sum(uint32_t address, uint32_t length, uint16_t& sum) override;

 private:
  uint64_t base;
};

}  // namespace hollin::simulator
