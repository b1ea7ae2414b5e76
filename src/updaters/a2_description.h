// SPDX-License-Identifier: MIT
// What an A2 flash is: a parallel flash of 16-bit words, its sectors and its command cycles.
// Addresses and sizes count words. docs/flash-descriptions.md describes the file.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "updaters/description_file.h"

namespace hollin {

struct A2Description {
  uint32_t mode = 1;  // the number of the mode command
  std::string flashModel;
  bool writeBufferMode = false;           // program through the chip's write buffer
  std::vector<uint32_t> reservedSectors;  // start addresses: never erased, written or verified
  uint32_t blockSize = 4096;              // words a block
  uint32_t fileOffset = 0;                // words of the image file to skip
  uint32_t maxWriteBack = 1000;           // must not be 0; not used otherwise
  uint32_t maxSectorEraseTime = 2000;     // milliseconds
  uint32_t erasedValue = 0xFFFF;          // the word that an erased sector reads back
  uint32_t resetAddr = 0x3000;            // kept, not used
  uint32_t resetData = 0xF0;              // kept, not used
  uint32_t eraseCycleCount = 6;
  std::vector<uint32_t> eraseAddrs, eraseData;
  uint32_t programCycleCount = 3;
  std::vector<uint32_t> programAddrs, programData;
  uint32_t writeBufferCycleCount = 4;
  uint32_t writeBufferCount = 0;  // this and the next four: one byte each on the wire
  uint32_t writeBufferPA1 = 3, writeBufferPA2 = 0xFF;
  uint32_t writeBufferSA1 = 4, writeBufferSA2 = 0xFF;
  std::vector<uint32_t> writeBufferAddrs, writeBufferData;
  uint32_t programBufferCycleCount = 1;
  uint32_t programBufferSA1 = 1, programBufferSA2 = 0xFF;  // one byte each on the wire
  std::vector<uint32_t> programBufferAddrs, programBufferData;
  std::vector<uint32_t> sectorAddrs;  // the start of every sector, ascending in a good description

  // Reads the text of a description. False at the first line that fails; fields read so far keep
  // their values.
  [[nodiscard]] bool Read(std::string_view text, const DescriptionListener& listener);
};

}  // namespace hollin
