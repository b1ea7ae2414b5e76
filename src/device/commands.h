// SPDX-License-Identifier: MIT
// Every packet that is sent to the keyboard, and the replies that are compared with it: one
// function a packet, under its table. Offsets and sizes are in bytes, numbers little-endian;
// docs/protocol.md describes the whole exchange.
#pragma once

#include <cstdint>
#include <span>

#include "base/bytes.h"

namespace hollin {

// Status bytes, each a reply of one byte.
inline constexpr uint8_t kModeEntered = 0xF1;    // the keyboard is in update mode
inline constexpr uint8_t kBlockReceived = 0xF4;  // a block's bytes arrived with the announced sum
inline constexpr uint8_t kBlockWritten = 0xD4;   // the block is in the flash

// Mode: 0x01, 0x0A, "M", mode (1). The reply is kModeEntered.
inline Bytes ModeCommand(uint32_t mode) { return Packet().U8(0x01).U8(0x0A).U8('M').U8(mode); }

// Bus cycles of a chip's command: address and data, 16 bits each. Both lists have the same length.
struct CycleList {
  std::span<const uint32_t> addresses;
  std::span<const uint32_t> data;
};

// Appends all cycles of a list: address (2), data (2) each, low 16 bits.
inline Bytes WithCycles(Packet packet, const CycleList& cycles) {
  for (size_t i = 0; i < cycles.addresses.size(); i++) {
    packet.U16(cycles.addresses[i]).U16(cycles.data[i]);
  }
  return packet;
}

// The byte that announces a list: twice its length, low 8 bits.
inline uint32_t CycleWords(const CycleList& cycles) {
  return static_cast<uint32_t>(cycles.addresses.size() * 2);
}

// Erase cycle of a parallel flash: 0x02, address (4), data (2). The reply echoes it.
inline Bytes EraseCycle(uint32_t address, uint32_t data) {
  return Packet().U8(0x02).U32(address).U16(data);
}

// Erase of an SPI flash: 0x02, sector address (4). The reply echoes it.
inline Bytes EraseCommand(uint32_t address) { return Packet().U8(0x02).U32(address); }

// Erase poll: 0x03, sector address (4). The reply has 7 bytes, of which bytes 5-6 are the word read
// there.
inline Bytes ErasePoll(uint32_t address) { return Packet().U8(0x03).U32(address); }
inline constexpr size_t kErasePollReplySize = 7;
inline constexpr size_t kErasePollWord = 5;

// Word-program cycles: 0x04, twice the number of cycles (1), the cycles. The reply echoes it.
inline Bytes ProgramCycles(const CycleList& cycles) {
  return WithCycles(Packet().U8(0x04).U8(CycleWords(cycles)), cycles);
}

// Write-buffer cycles: 0x05, twice the number of cycles (1), count (1), PA1 (1), PA2 (1), SA1 (1),
// SA2 (1), the cycles. The reply echoes it.
struct WriteBufferParameters {
  uint32_t count, pa1, pa2, sa1, sa2;
};
inline Bytes WriteBufferCycles(const WriteBufferParameters& parameters, const CycleList& cycles) {
  const auto& [count, pa1, pa2, sa1, sa2] = parameters;
  return WithCycles(
      Packet().U8(0x05).U8(CycleWords(cycles)).U8(count).U8(pa1).U8(pa2).U8(sa1).U8(sa2), cycles);
}

// Program-buffer cycles: 0x06, twice the number of cycles (1), SA1 (1), SA2 (1), the cycles. The
// reply echoes it.
inline Bytes ProgramBufferCycles(uint32_t sa1, uint32_t sa2, const CycleList& cycles) {
  return WithCycles(Packet().U8(0x06).U8(CycleWords(cycles)).U8(sa1).U8(sa2), cycles);
}

// Configure the SPI controller: 0x0B, controller (1), chip select (1), data lines (1), sector size
// (3). The reply has 5 bytes: kModeEntered, then the flash capacity in bytes (4).
inline Bytes ConfigureCommand(uint32_t spi, uint32_t chipSelect, uint32_t lines, uint32_t size) {
  return Packet().U8(0x0B).U8(spi).U8(chipSelect).U8(lines).U24(size);
}
inline constexpr size_t kConfigureCapacity = 1;

// Block header: 0x07, address (4), length (2), sum of the block (2), 0x00 (3). The reply echoes it.
// A length of 65536 is sent as 0. The unit of address and length, and the kind of sum, are the
// flash kind's own.
inline Bytes BlockHeader(uint32_t address, uint32_t length, uint32_t sum) {
  return Packet().U8(0x07).U32(address).U16(length).U16(sum).Zeros(3);
}
// A2 compares the bytes that mean something: code, address, length and sum. Its keyboards may put
// anything in place of the three zeros, so a longer comparison would fail good ones. A1 compares
// all twelve.
inline constexpr size_t kHeaderEcho = 9;

// Block header of an SPI flash: 0x07, flash address (4), length in bytes (4), sum of the bytes (2),
// 0x00. The reply echoes its first 11 bytes.
inline Bytes SpiBlockHeader(uint32_t address, uint32_t length, uint32_t sum) {
  return Packet().U8(0x07).U32(address).U32(length).U16(sum).U8(0x00);
}
inline constexpr size_t kSpiBlockHeaderEcho = 11;

// Verify: 0x08, flash address (4), length (4), 0x00. The reply is VerifyReply.
inline Bytes VerifyCommand(uint32_t address, uint32_t length) {
  return Packet().U8(0x08).U32(address).U32(length).U8(0x00);
}

// Verify's reply: bytes 0-8 of the command, then the low 16 bits of the range's sum (2).
inline Bytes VerifyReply(uint32_t address, uint32_t length, uint32_t sum) {
  return Packet().U8(0x08).U32(address).U32(length).U16(sum);
}

// End: 0x09, 0x00 for a finished update or 0x01 for a failed one, 0x0000 (2). The reply echoes it.
inline Bytes EndCommand(bool success) { return Packet().U8(0x09).U8(success ? 0 : 1).U16(0); }

}  // namespace hollin
