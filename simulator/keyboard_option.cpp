// SPDX-License-Identifier: MIT
#include "simulator/keyboard_option.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <functional>
#include <limits>
#include <utility>
#include <vector>

#include "base/text.h"
#include "simulator/number.h"

namespace hollin::simulator {
namespace {

constexpr uint32_t kMostSectors = 1024 * 1024;
constexpr uint32_t kLargestEraseUnit = 0xFFFFFF;  // three bytes on the wire

struct Option {
  OptionDescription description;
  bool (*set)(std::string_view value, KeyboardOptions& options);
};

template <typename Number>
bool SetNumber(std::string_view text, Number& number, uint64_t least = 0) {
  uint64_t value = 0;
  if (!ParseNumber(text, std::numeric_limits<Number>::max(), value) || value < least) return false;
  number = static_cast<Number>(value);
  return true;
}

bool SetMilliseconds(std::string_view text, VirtualClock::Duration& duration) {
  uint64_t value = 0;
  if (!ParseNumber(text, UINT32_MAX, value)) return false;
  duration = std::chrono::milliseconds(value);
  return true;
}

bool SetText(std::string_view text, std::string& to) {
  to = text;
  return true;
}

std::vector<std::string_view> Split(std::string_view text, char mark) {
  std::vector<std::string_view> parts;
  for (size_t end = 0; end != std::string_view::npos;) {
    end = text.find(mark);
    parts.push_back(Trim(text.substr(0, end)));
    if (end != std::string_view::npos) text.remove_prefix(end + 1);
  }
  return parts;
}

bool ParseNumbers(std::string_view text, char mark, uint64_t most, std::vector<uint32_t>& numbers) {
  for (std::string_view part : Split(text, mark)) {
    uint64_t value = 0;
    if (!ParseNumber(part, most, value)) return false;
    numbers.push_back(static_cast<uint32_t>(value));
  }
  return true;
}

// "ADDRESS" or "FIRST:WORDS:COUNT".
bool AppendSectors(std::string_view text, std::vector<uint32_t>& sectors) {
  std::vector<uint32_t> numbers;
  if (!ParseNumbers(text, ':', UINT32_MAX, numbers)) return false;
  if (numbers.size() == 1) numbers.insert(numbers.end(), {0, 1});
  if (numbers.size() != 3 || numbers[2] > kMostSectors) return false;
  uint64_t address = numbers[0];
  for (uint32_t i = 0; i < numbers[2]; i++, address += numbers[1]) {
    if (address > UINT32_MAX) return false;
    sectors.push_back(static_cast<uint32_t>(address));
  }
  return true;
}

bool SetSectors(std::string_view text, std::vector<uint32_t>& to) {
  std::vector<uint32_t> sectors;
  for (std::string_view part : Split(text, ',')) {
    if (!AppendSectors(part, sectors)) return false;
  }
  const auto disorder = std::ranges::adjacent_find(sectors, std::greater_equal{});
  if (sectors.size() < 2 || disorder != sectors.end()) return false;
  to = std::move(sectors);
  return true;
}

// "555:AA,2AA:55", hexadecimal without 0x; addresses up to `most`.
bool SetCycles(std::string_view text, uint32_t most, std::vector<BusCycle>& to) {
  std::vector<BusCycle> cycles;
  for (std::string_view part : Split(text, ',')) {
    const auto halves = Split(part, ':');
    uint64_t address = 0;
    uint64_t data = 0;
    if (halves.size() != 2 || !ParseHex(halves[0], most, address)) return false;
    if (!ParseHex(halves[1], UINT16_MAX, data)) return false;
    cycles.push_back({static_cast<uint32_t>(address), static_cast<uint16_t>(data)});
  }
  to = std::move(cycles);
  return true;
}

bool SetParameters(std::string_view text, Bytes& to) {
  std::vector<uint32_t> numbers;
  if (!ParseNumbers(text, ',', UINT8_MAX, numbers) || numbers.size() != to.size()) return false;
  std::ranges::transform(numbers, to.begin(), [](uint32_t n) { return static_cast<uint8_t>(n); });
  return true;
}

// "CONTROLLER:SELECT:CAPACITY"
bool SetChip(std::string_view text, C1Profile& to) {
  std::vector<uint32_t> numbers;
  if (!ParseNumbers(text, ':', UINT32_MAX, numbers) || numbers.size() != 3) return false;
  if (numbers[0] >= C1Profile::kControllers || numbers[1] >= C1Profile::kChipSelects) return false;
  to.capacities[numbers[0]][numbers[1]] = numbers[2];
  return true;
}

bool SetEraseUnits(std::string_view text, std::vector<uint32_t>& to) {
  std::vector<uint32_t> units;
  if (!ParseNumbers(text, ',', kLargestEraseUnit, units) ||
      std::ranges::count(units, uint32_t{0}) > 0) {
    return false;
  }
  to = std::move(units);
  return true;
}

const Option kOptions[] = {
    {{"a1.mode", "NUMBER", "the mode number that selects the A1 flash (2)"},
     [](std::string_view value, KeyboardOptions& to) { return SetNumber(value, to.a1.mode); }},
    {{"a1.size", "BYTES", "its size (1M)"},
     [](std::string_view value, KeyboardOptions& to) { return SetNumber(value, to.a1.size, 1); }},
    {{"a1.base", "ADDRESS", "where the window begins that it is written through (0)"},
     [](std::string_view value, KeyboardOptions& to) { return SetNumber(value, to.a1.base); }},
    {{"a1.file", "PATH", "keeps its contents"},
     [](std::string_view value, KeyboardOptions& to) { return SetText(value, to.a1.file); }},
    {{"a2.mode", "NUMBER", "the mode number that selects the A2 flash (1)"},
     [](std::string_view value, KeyboardOptions& to) { return SetNumber(value, to.a2.mode); }},
    {{"a2.sectors", "LIST",
      "where its sectors begin, in words: addresses and FIRST:WORDS:COUNT, separated by commas; "
      "the last is as long as the one before (0:0x8000:16)"},
     [](std::string_view value, KeyboardOptions& to) { return SetSectors(value, to.a2.sectors); }},
    {{"a2.erase", "CYCLES",
      "its erase command, ADDRESS:DATA in hexadecimal, separated by commas; the last goes to the "
      "sector (555:AA,2AA:55,555:80,555:AA,2AA:55,0:30)"},
     [](std::string_view value, KeyboardOptions& to) {
       return SetCycles(value, UINT32_MAX, to.a2.erase);
     }},
    {{"a2.program", "CYCLES", "its word program command (555:AA,2AA:55,555:A0)"},
     [](std::string_view value, KeyboardOptions& to) {
       return SetCycles(value, UINT16_MAX, to.a2.program);
     }},
    {{"a2.write-buffer", "CYCLES", "its write buffer command (555:AA,2AA:55,0:25,0:0F)"},
     [](std::string_view value, KeyboardOptions& to) {
       return SetCycles(value, UINT16_MAX, to.a2.writeBuffer.cycles);
     }},
    {{"a2.write-buffer-parameters", "LIST", "count, PA1, PA2, SA1, SA2 (15,3,0xFF,4,0xFF)"},
     [](std::string_view value, KeyboardOptions& to) {
       return SetParameters(value, to.a2.writeBuffer.parameters);
     }},
    {{"a2.program-buffer", "CYCLES", "its program buffer command (0:29)"},
     [](std::string_view value, KeyboardOptions& to) {
       return SetCycles(value, UINT16_MAX, to.a2.programBuffer.cycles);
     }},
    {{"a2.program-buffer-parameters", "LIST", "SA1, SA2 (1,0xFF)"},
     [](std::string_view value, KeyboardOptions& to) {
       return SetParameters(value, to.a2.programBuffer.parameters);
     }},
    {{"a2.erase-time", "MILLISECONDS", "how long one sector takes (500)"},
     [](std::string_view value, KeyboardOptions& to) {
       return SetMilliseconds(value, to.a2.eraseTime);
     }},
    {{"a2.erased", "WORD", "what an erased word reads (0xFFFF)"},
     [](std::string_view value, KeyboardOptions& to) {
       return SetNumber(value, to.a2.erasedWord);
     }},
    {{"a2.file", "PATH", "keeps its contents"},
     [](std::string_view value, KeyboardOptions& to) { return SetText(value, to.a2.file); }},
    {{"c1.mode", "NUMBER", "the mode number that selects the C1 flash (3)"},
     [](std::string_view value, KeyboardOptions& to) { return SetNumber(value, to.c1.mode); }},
    {{"c1.chip", "CONTROLLER:SELECT:BYTES",
      "a chip and its capacity, 0 for none; may be given for all four (0:0:1M)"},
     [](std::string_view value, KeyboardOptions& to) { return SetChip(value, to.c1); }},
    {{"c1.erase-units", "LIST", "the sizes that the chips can erase (4K,64K)"},
     [](std::string_view value, KeyboardOptions& to) {
       return SetEraseUnits(value, to.c1.eraseUnits);
     }},
    {{"c1.lines", "NUMBER", "the most data lines that are connected: 1, 2 or 4 (4)"},
     [](std::string_view value, KeyboardOptions& to) {
       return (value == "1" || value == "2" || value == "4") && SetNumber(value, to.c1.lines, 1);
     }},
    {{"c1.buffer", "BYTES", "the most that it takes at once (8K)"},
     [](std::string_view value, KeyboardOptions& to) {
       return SetNumber(value, to.c1.bufferSize, 1);
     }},
    {{"c1.erase-time", "MILLISECONDS", "how long one unit takes (60)"},
     [](std::string_view value, KeyboardOptions& to) {
       return SetMilliseconds(value, to.c1.eraseTime);
     }},
    {{"c1.file", "PATH", "keeps the contents of all its chips, one after another"},
     [](std::string_view value, KeyboardOptions& to) { return SetText(value, to.c1.file); }},
};

}  // namespace

std::span<const OptionDescription> OptionDescriptions() {
  static const auto descriptions = [] {
    std::vector<OptionDescription> all;
    for (const Option& option : kOptions) all.push_back(option.description);
    return all;
  }();
  return descriptions;
}

bool SetOption(std::string_view text, KeyboardOptions& options) {
  const size_t equals = text.find('=');
  if (equals == std::string_view::npos) return false;
  const std::string_view name = Trim(text.substr(0, equals));
  const auto* option = std::ranges::find(
      kOptions, name, [](const Option& each) { return std::string_view(each.description.name); });
  return option != std::end(kOptions) && option->set(Trim(text.substr(equals + 1)), options);
}

bool SetOptions(std::string_view text, KeyboardOptions& options, std::string& badLine) {
  while (!text.empty()) {
    const size_t end = std::min(text.find('\n'), text.size());
    const std::string_view line = Trim(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
    if (line.empty() || line.starts_with('#')) continue;
    if (SetOption(line, options)) continue;
    badLine = line;
    return false;
  }
  return true;
}

}  // namespace hollin::simulator
