// SPDX-License-Identifier: MIT
// What a C1 flash is: an SPI flash behind one of the keyboard's controllers. Addresses and sizes
// count bytes. docs/flash-descriptions.md describes the file.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "updaters/description_file.h"

namespace hollin {

struct C1Description {
  std::vector<uint32_t> reservedSectors;  // start addresses: never erased, programmed or verified
  uint32_t lineMode = 1;                  // data lines: 1, 2 or 4
  uint32_t spiNumber = 0;                 // controller: 0 or 1
  uint32_t chipSelectNumber = 0;          // chip-select line of the controller: 0 or 1
  uint32_t sectorSize = 65536;            // erase unit

  // Reads the text of a description. False at the first line that fails; fields read so far keep
  // their values.
  [[nodiscard]] bool Read(std::string_view text, const DescriptionListener& listener);
};

}  // namespace hollin
