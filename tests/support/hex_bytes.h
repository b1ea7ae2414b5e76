// SPDX-License-Identifier: MIT
// Expected packets and replies as they stand in the tables: Hex("09 00 00 00").
#pragma once

#include <cctype>
#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>

#include "base/bytes.h"

namespace hollin {

// Two hexadecimal digits a byte; blanks between them are for the reader. Throws at an odd digit, so
// that a slip of the pen fails the case.
inline Bytes Hex(std::string_view text) {
  std::string digits;
  for (const char c : text) {
    if (std::isspace(static_cast<unsigned char>(c)) == 0) digits += c;
  }
  if (digits.size() % 2 != 0) throw std::invalid_argument("half a byte");
  Bytes bytes;
  for (size_t i = 0; i < digits.size(); i += 2) {
    bytes.push_back(static_cast<uint8_t>(std::stoul(digits.substr(i, 2), nullptr, 16)));
  }
  return bytes;
}

inline Bytes operator+(Bytes head, ByteView tail) {
  head.insert(head.end(), tail.begin(), tail.end());
  return head;
}

// `count` bytes that count up from `first`, so that a misplaced one shows.
inline Bytes Counting(size_t count, uint8_t first = 0) {
  Bytes bytes(count);
  for (uint8_t& byte : bytes) byte = first++;
  return bytes;
}

inline Bytes Filled(size_t count, uint8_t value) { return Bytes(count, value); }

inline ByteView ViewOf(std::string_view text) {
  return {reinterpret_cast<const uint8_t*>(text.data()), text.size()};
}

}  // namespace hollin
