// SPDX-License-Identifier: MIT
#include "base/bytes.h"

#include <cassert>

namespace hollin {

uint16_t ReadU16(ByteView bytes, size_t offset) {
  assert(offset <= bytes.size() && bytes.size() - offset >= 2);
  return static_cast<uint16_t>(bytes[offset] | bytes[offset + 1] << 8);
}

uint32_t ReadU32(ByteView bytes, size_t offset) {
  assert(offset <= bytes.size() && bytes.size() - offset >= 4);
  return ReadU16(bytes, offset) | uint32_t{ReadU16(bytes, offset + 2)} << 16;
}

uint32_t SumBytes(ByteView bytes) {
  uint32_t sum = 0;
  for (const uint8_t byte : bytes) sum += byte;
  return sum;
}

uint32_t SumWords(ByteView bytes) {
  uint32_t sum = 0;
  for (size_t i = 0; i + 1 < bytes.size(); i += 2) sum += bytes[i] | uint32_t{bytes[i + 1]} << 8;
  return sum;
}

}  // namespace hollin
