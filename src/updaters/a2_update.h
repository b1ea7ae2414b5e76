// SPDX-License-Identifier: MIT
// Writes an image into an A2 flash, sector by sector: sends the chip's own command cycles, erases
// and polls, streams the blocks, and at the end has every written sector summed. Addresses count
// 16-bit words, positions in the image bytes. docs/protocol.md holds the packets.
#pragma once

#include <cstdint>
#include <string>

#include "device/ax_update.h"
#include "updaters/a2_description.h"
#include "updaters/address_set.h"

namespace hollin {

class A2Update final : public AXUpdate {
 public:
  A2Update(std::string configPath, std::string imagePath);

  [[nodiscard]] bool LoadFiles() override;
  [[nodiscard]] bool CheckConfig() override;
  [[nodiscard]] bool PlanSteps() override;
  // Erases and programs sector `index`, or skips it.
  [[nodiscard]] bool RunStep(uint32_t index) override;
  [[nodiscard]] bool VerifyImage() override;

  // Seconds to send the data of a block of this sector; `bytesDone` is at its start.
  [[nodiscard]] double DataTimeOut(uint32_t sector) const;

  // Of a loaded updater. The last sector of the list is as large as the one before it.
  [[nodiscard]] uint32_t SectorSize(uint32_t sector) const;  // bytes
  [[nodiscard]] bool IsReserved(uint32_t sector) const;
  // Whether sectors ascend and all planned ones lie in the image; where not, no step writes.
  [[nodiscard]] bool IsPlanInsideImage() const { return isPlanInsideImage; }

  A2Description flash;
  DescriptionListener listener = LogUnknown;  // told of each remark on the description
  uint32_t plannedSectors = 0;  // sectors, from the first of the list, that the image reaches
  uint32_t imageStart = 0;      // where the image proper begins in the image buffer
  uint32_t bytesToWrite = 0;    // of the image proper
  uint32_t readPos = 0;         // bytes of the image proper sent or skipped so far
  uint32_t bytesDone = 0;       // sum of the sizes of the sectors handled so far

 private:
  [[nodiscard]] uint64_t WholeSectorSize(uint32_t sector) const;
  [[nodiscard]] uint32_t BytesOfSector(uint32_t sector) const;
  [[nodiscard]] uint32_t WordsOfSector(uint32_t sector) const;
  [[nodiscard]] bool PlanLiesInImage() const;
  [[nodiscard]] bool HasBytesLeft(uint32_t count) const;
  void SkipSector(uint32_t sector);

  [[nodiscard]] bool EraseSector(uint32_t sector);
  [[nodiscard]] bool Erase(uint32_t sector, int& reErases);
  [[nodiscard]] bool SendEraseCycles(uint32_t sector);
  [[nodiscard]] bool PollErase(uint32_t sector, int& reErases);
  [[nodiscard]] bool AwaitErasedWord(bool& isErased);
  [[nodiscard]] bool ProgramSector(uint32_t sector);
  [[nodiscard]] bool StartWordProgram();
  [[nodiscard]] bool StartWriteBuffer();
  [[nodiscard]] bool SendBlocks(uint32_t sector);
  [[nodiscard]] bool SendBlock(uint32_t address, uint32_t words, double dataTimeOut);

  AddressSet reserved;  // of the description, for look-ups
  bool isPlanInsideImage = false;
};

}  // namespace hollin
