// SPDX-License-Identifier: MIT
#include "simulator/number.h"

#include <charconv>
#include <system_error>

namespace hollin::simulator {
namespace {

bool ParseDigits(std::string_view text, int base, uint64_t factor, uint64_t most, uint64_t& value) {
  uint64_t number = 0;
  const char* end = text.data() + text.size();
  const auto [stopped, error] = std::from_chars(text.data(), end, number, base);
  if (text.empty() || error != std::errc() || stopped != end) return false;
  if (number > most / factor) return false;
  value = number * factor;
  return true;
}

}  // namespace

bool ParseHex(std::string_view text, uint64_t most, uint64_t& value) {
  return ParseDigits(text, 16, 1, most, value);
}

bool ParseNumber(std::string_view text, uint64_t most, uint64_t& value) {
  if (text.starts_with("0x")) return ParseHex(text.substr(2), most, value);
  uint64_t factor = 1;
  if (text.ends_with('K')) factor = 1024;
  if (text.ends_with('M')) factor = uint64_t{1024} * 1024;
  if (factor > 1) text.remove_suffix(1);
  return ParseDigits(text, 10, factor, most, value);
}

}  // namespace hollin::simulator
