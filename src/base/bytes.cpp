// SPDX-License-Identifier: MIT
#include "base/bytes.h"

#include <cassert>

namespace hollin {
namespace {

// So many bytes add up to less than 2^16. Compilers add twice as many 16-bit numbers at once as
// 32-bit ones, and a package is summed as fast as memory gives it.
constexpr size_t kPiece = 256;

// Of at most kPiece bytes; of a length that is known when this is compiled, best.
template <typename View>
uint32_t SumOfFew(const View& bytes) {
  uint16_t sum = 0;
  for (const uint8_t byte : bytes) sum = static_cast<uint16_t>(sum + byte);
  return sum;
}

// The sums of the words' low and high bytes.
struct HalfSums {
  uint32_t low = 0, high = 0;

  HalfSums& operator+=(const HalfSums& other) {
    low += other.low;
    high += other.high;
    return *this;
  }
};

// Of at most kPiece words.
template <typename View>
HalfSums SumsOfFewWords(const View& bytes) {
  uint16_t low = 0;
  uint16_t high = 0;
  for (size_t i = 0; i + 1 < bytes.size(); i += 2) {
    low = static_cast<uint16_t>(low + bytes[i]);
    high = static_cast<uint16_t>(high + bytes[i + 1]);
  }
  return {low, high};
}

}  // namespace

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
  for (; bytes.size() >= kPiece; bytes = bytes.subspan(kPiece))
    sum += SumOfFew(bytes.first<kPiece>());
  return sum + SumOfFew(bytes);
}

uint32_t SumWords(ByteView bytes) {
  HalfSums sums;
  for (; bytes.size() >= 2 * kPiece; bytes = bytes.subspan(2 * kPiece)) {
    sums += SumsOfFewWords(bytes.first<2 * kPiece>());
  }
  sums += SumsOfFewWords(bytes);
  return sums.low + (sums.high << 8);
}

}  // namespace hollin
