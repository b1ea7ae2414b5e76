// SPDX-License-Identifier: MIT
// Bytes and their order: the one place that knows it. Packages and the wire are little-endian
// throughout.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

namespace hollin {

using Bytes = std::vector<uint8_t>;
using ByteView = std::span<const uint8_t>;

// Writes a packet field by field, in the order of its table:
//   Bytes command = Packet().U8(0x08).U32(address);
// Values wider than a field lose their upper bits, as the tables say where it matters.
class Packet {
 public:
  Packet& U8(uint32_t value) { return Append(value, 1); }
  Packet& U16(uint32_t value) { return Append(value, 2); }
  Packet& U24(uint32_t value) { return Append(value, 3); }
  Packet& U32(uint32_t value) { return Append(value, 4); }
  Packet& Zeros(size_t count) {
    bytes.insert(bytes.end(), count, uint8_t{0});
    return *this;
  }
  // NOLINTNEXTLINE(google-explicit-constructor): a finished packet is its bytes.
  operator Bytes() { return std::move(bytes); }

 private:
  Packet& Append(uint32_t value, int count) {
    for (int i = 0; i < count; i++) bytes.push_back(static_cast<uint8_t>(value >> (8 * i)));
    return *this;
  }

  Bytes bytes;
};

// Puts a number into bytes that are there already; wants the field to lie inside `bytes`.
inline void PutU32(std::span<uint8_t> bytes, size_t offset, uint32_t value) {
  for (size_t i = 0; i < 4; i++) bytes[offset + i] = static_cast<uint8_t>(value >> (8 * i));
}

// Both readers want `offset` plus the field's size to lie inside `bytes`; callers check lengths
// first.
[[nodiscard]] uint16_t ReadU16(ByteView bytes, size_t offset);
[[nodiscard]] uint32_t ReadU32(ByteView bytes, size_t offset);

// The sum of all bytes, modulo 2^32.
[[nodiscard]] uint32_t SumBytes(ByteView bytes);

// The sum of the 16-bit little-endian words, modulo 2^32; an odd last byte is left out.
[[nodiscard]] uint32_t SumWords(ByteView bytes);

}  // namespace hollin
