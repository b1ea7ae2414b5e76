// SPDX-License-Identifier: MIT
// Writes an image into a C1 flash, sector by sector: configures the keyboard's SPI controller,
// checks that the image fits, erases and programs every sector that is not reserved, and at the end
// has each summed. The i-th piece of the image ("data sector i") goes to the i-th sector that is
// not reserved. docs/protocol.md holds the packets.
#pragma once

#include <cstdint>
#include <string>

#include "device/ax_update.h"
#include "updaters/address_set.h"
#include "updaters/c1_description.h"

namespace hollin {

class C1Update final : public AXUpdate {
 public:
  C1Update(std::string configPath, std::string imagePath);

  [[nodiscard]] bool LoadFiles() override;
  [[nodiscard]] bool CheckConfig() override;
  [[nodiscard]] bool PlanSteps() override;
  [[nodiscard]] bool RunStep(uint32_t index) override;  // writes data sector `index`
  [[nodiscard]] bool VerifyImage() override;
  // Also configures the SPI controller and checks the capacity that the keyboard reports; the
  // attempts at both count together.
  [[nodiscard]] bool EnterUpdateMode(int32_t retries) override;

  // Brings the mode number and the description back to their defaults.
  void Reset();

  [[nodiscard]] uint32_t SectorAddress(uint32_t sector) const { return sector * flash.sectorSize; }
  [[nodiscard]] uint32_t SectorSize() const { return flash.sectorSize; }
  [[nodiscard]] bool IsReserved(uint32_t sector) const;
  // The sector that takes data sector `index`. False when every sector is reserved. Asked in
  // ascending order it walks every sector once.
  [[nodiscard]] bool FindUnreservedSector(uint32_t index, uint32_t& sector);
  // The bytes of flash, from its start, that so many bytes of data take: reserved sectors between
  // them count. False when every sector is reserved or the span is beyond 2^31 - 1, which no flash
  // here has.
  [[nodiscard]] bool FindSpan(uint32_t length, int32_t& span);

  // Seconds to send the data of a chunk of this data sector.
  [[nodiscard]] double DataTimeOut(uint32_t index) const;

  C1Description flash;
  DescriptionListener listener = LogUnknown;  // told of each remark on the description
  uint32_t dataSectorCount = 0;               // sectors that the image fills
  uint32_t dataStart = 0;     // offset of the first byte to write in the image: always 0
  uint32_t dataLength = 0;    // bytes to write
  uint32_t readPosition = 0;  // bytes sent, or verified, so far
  uint32_t bytesDone = 0;     // a sector size for each finished data sector
  int32_t flashCapacity = 0;  // bytes, as the keyboard reported it

 private:
  // A place in the walk over the sectors that are not reserved.
  struct Place {
    uint32_t index = 0;   // of the data sector
    uint32_t sector = 0;  // where it goes
    bool isFound = false;
  };

  void RestartWalk();
  [[nodiscard]] bool AdvanceWalk();
  [[nodiscard]] uint32_t BytesOfDataSector(uint32_t index) const;
  [[nodiscard]] bool HasBytesLeft(uint32_t count) const;
  [[nodiscard]] ByteView NextData(uint32_t length) const;
  [[nodiscard]] bool SwitchMode(int32_t& retries);
  [[nodiscard]] bool AskCapacity(int32_t retries);
  [[nodiscard]] bool Configure();
  [[nodiscard]] bool Erase(uint32_t sector);
  [[nodiscard]] bool PollErase(uint32_t address);
  [[nodiscard]] bool ProgramSector(uint32_t index, uint32_t sector);
  [[nodiscard]] bool SendChunk(uint32_t address, ByteView data, double dataTimeOut);

  AddressSet reserved;  // of the description, for look-ups
  Place place;
};

}  // namespace hollin
