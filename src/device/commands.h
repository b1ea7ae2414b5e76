// SPDX-License-Identifier: MIT
// Every packet that is sent to the keyboard, and the replies that are compared with it: one
// function a packet, under its table. Offsets and sizes are in bytes, numbers little-endian;
// docs/protocol.md describes the whole exchange.
#pragma once

#include <cstdint>

#include "base/bytes.h"

namespace hollin {

// Status bytes, each a reply of one byte.
inline constexpr uint8_t kModeEntered = 0xF1;    // the keyboard is in update mode
inline constexpr uint8_t kBlockReceived = 0xF4;  // a block's bytes arrived with the announced sum
inline constexpr uint8_t kBlockWritten = 0xD4;   // the block is in the flash

// Mode: 0x01, 0x0A, "M", mode (1). The reply is kModeEntered.
inline Bytes ModeCommand(uint32_t mode) { return Packet().U8(0x01).U8(0x0A).U8('M').U8(mode); }

// Block header: 0x07, address (4), length (2), sum of the block (2), 0x00 (3). The reply echoes it.
// A length of 65536 is sent as 0. The unit of address and length, and the kind of sum, are the
// flash kind's own.
inline Bytes BlockHeader(uint32_t address, uint32_t length, uint32_t sum) {
  return Packet().U8(0x07).U32(address).U16(length).U16(sum).Zeros(3);
}

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
