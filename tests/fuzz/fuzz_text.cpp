// SPDX-License-Identifier: MIT
// Texts that come from outside: numbers, the configuration, flash descriptions. The lines of a
// description are held against fgets, numbers and settings against a second reader.
#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "app/bundle.h"
#include "app/ini_config.h"
#include "base/text.h"
#include "device/ax_update.h"
#include "tests/fuzz/fuzz_targets.h"
#include "tests/fuzz/memory_file.h"
#include "updaters/a1_description.h"
#include "updaters/a2_description.h"
#include "updaters/c1_description.h"
#include "updaters/description_file.h"

namespace hollin::fuzz {
namespace {

std::string_view TextOf(ByteView input) {
  return {reinterpret_cast<const char*>(input.data()), input.size()};
}

// Valid UTF-8, as numbers.
std::vector<uint32_t> Characters(std::string_view text) {
  std::vector<uint32_t> characters;
  for (size_t i = 0; i < text.size();) {
    const auto first = static_cast<unsigned char>(text[i]);
    const size_t size = first < 0x80 ? 1 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
    uint32_t character = size == 1 ? first : first & (0x7FU >> size);
    for (size_t k = 1; k < size; k++) {
      character = character * 64 + (static_cast<unsigned char>(text[i + k]) & 0x3FU);
    }
    characters.push_back(character);
    i += size;
  }
  return characters;
}

bool IsLetter(uint32_t character, char lower) {
  return character == static_cast<uint32_t>(lower) ||
         character == static_cast<uint32_t>(lower) - 32;
}

std::optional<uint32_t> HexNumber(const std::vector<uint32_t>& digits) {
  if (digits.empty()) return std::nullopt;
  uint64_t value = 0;
  for (const uint32_t digit : digits) {
    if (digit > 'f') return std::nullopt;
    const auto place =
        std::string_view("0123456789abcdef0123456789ABCDEF").find(static_cast<char>(digit));
    if (digit == 0 || place == std::string_view::npos) return std::nullopt;
    value = (value * 16 + place % 16) % 4294967296ULL;
  }
  return static_cast<uint32_t>(value);
}

uint32_t DecimalNumber(std::vector<uint32_t> digits) {
  bool isScaled = false;
  for (const uint32_t digit : digits) {
    isScaled = isScaled || IsLetter(digit, 'k') || IsLetter(digit, 'm');
  }
  if (isScaled) digits.pop_back();
  uint64_t value = 0;
  for (const uint32_t digit : digits) {
    value = (value * 10 + digit + 4294967296ULL - 48) % 4294967296ULL;
  }
  return static_cast<uint32_t>(isScaled ? value * 1024 : value);
}

// The rules of docs/flash-descriptions.md, one after the other.
std::optional<uint32_t> NumberOf(std::string_view text) {
  if (text.empty() || !IsValidUtf8(text)) return std::nullopt;
  const std::vector<uint32_t> whole = Characters(text);
  if (whole.size() == 1) {
    return whole[0] >= '0' && whole[0] <= '9' ? std::optional(whole[0] - '0') : std::nullopt;
  }
  std::vector<uint32_t> digits = Characters(Trim(text));
  if (digits.size() < 2) return std::nullopt;
  const bool hasPrefix = digits[0] == '0' && IsLetter(digits[1], 'x');
  const bool hasSuffix = IsLetter(digits.back(), 'h');
  if (!hasPrefix && !hasSuffix) return DecimalNumber(digits);
  if (hasPrefix) digits.erase(digits.begin(), digits.begin() + 2);
  if (hasSuffix && !digits.empty()) digits.pop_back();
  return HexNumber(digits);
}

std::map<std::string, std::string> SettingsOf(std::string_view text) {
  std::map<std::string, std::string> settings;
  std::string line;
  const auto take = [&] {
    std::string setting(Trim(line));
    line.clear();
    if (const size_t comment = setting.find(';'); comment != std::string::npos) {
      setting.resize(comment);
    }
    const size_t equals = setting.find('=');
    if (equals == std::string::npos || equals == 0 || equals == setting.size() - 1) return;
    settings[std::string(Trim(std::string_view(setting).substr(0, equals)))] =
        Trim(std::string_view(setting).substr(equals + 1));
  };
  for (const char c : text) {
    if (c == '\n') {
      take();
    } else {
      line += c;
    }
  }
  take();
  return settings;
}

// What a C program reads of a file into 100 bytes, piece by piece, up to the first header that is
// not closed.
std::vector<std::string> LinesByStandardLibrary(ByteView input, bool& isGood) {
  std::vector<std::string> lines;
  isGood = true;
  FILE* file = fmemopen(const_cast<uint8_t*>(input.data()), input.size(), "r");
  std::string section;
  char piece[100];
  while (isGood && std::fgets(piece, sizeof piece, file) != nullptr) {
    const std::string_view text = piece;
    if (!IsValidUtf8(text)) continue;
    const std::string line(Trim(text));
    if (line.empty() || line[0] == ';' || line.substr(0, 2) == "--") continue;
    if (line[0] != '[') {
      lines.push_back(section);
      lines.back().append("\n").append(line);
      continue;
    }
    const size_t end = line.find(']');
    isGood = end != std::string::npos;
    if (isGood) section = Trim(std::string_view(line).substr(1, end - 1));
  }
  std::fclose(file);
  return lines;
}

bool HoldSameLists(const A1Description& /*a*/, const A1Description& /*b*/) { return true; }
bool HoldSameLists(const A2Description& a, const A2Description& b) {
  return a.reservedSectors == b.reservedSectors && a.sectorAddrs == b.sectorAddrs;
}
bool HoldSameLists(const C1Description& a, const C1Description& b) {
  return a.reservedSectors == b.reservedSectors;
}

template <typename Description>
bool ReadTwice(std::string_view text) {
  Description first;
  Description second;
  std::vector<std::string> notes;
  const bool isRead = first.Read(text, [&](const DescriptionNote& note) {
    Require(note.line >= 1, "lines count from 1");
    Require(note.Column() >= 1, "columns count from 1");
    notes.emplace_back(note.text);
  });
  Require(second.Read(text, {}) == isRead, "the verdict does not depend on who listens");
  Require(HoldSameLists(first, second), "neither do the lists");
  return isRead;
}

void RequireNumber(bool isNumber, uint32_t value, std::string_view text) {
  const std::optional<uint32_t> expected = NumberOf(text);
  Require(isNumber == expected.has_value(), "both know a number");
  Require(!isNumber || value == *expected, "both read the same number");
}

}  // namespace

void Number(ByteView input) {
  const std::string_view text = TextOf(input);
  uint32_t value = 0;
  const bool isNumber = AXUpdate::ParseNumber(text, value);
  RequireNumber(isNumber, value, text);
  if (!IsValidUtf8(text)) return;
  const std::string_view trimmed = Trim(text);
  const bool isTrimmedNumber = AXUpdate::ParseTrimmed(trimmed, value);
  RequireNumber(isTrimmedNumber, value, trimmed);
}

// The program's path to that of its configuration: never outside of the folders on the way.
void ConfigPath(std::string_view text) {
  const std::string executable(text.substr(0, text.find('\0')));
  const std::string bundle = BundlePathOf(executable);
  const std::string path = ConfigPathOf(bundle);
  Require(executable.starts_with(bundle), "the bundle lies on the way to the program");
  Require(path.empty() != executable.starts_with('/'), "an absolute path leads to one");
  if (path.empty()) return;
  Require(path.starts_with('/') && path.ends_with("Config.ini"), "it is that file's, and absolute");
  const size_t name = bundle.size() - bundle.rfind('/') - 1;
  Require(path.size() == bundle.size() - name + std::string_view("Config.ini").size(),
          "the bundle's name has gone once");
}

void Config(ByteView input) {
  ConfigPath(TextOf(input));
  const MemoryFile file(input);
  const IniConfig config(file.Path());
  const bool isText = IsValidUtf8(TextOf(input));
  const auto settings = isText ? SettingsOf(TextOf(input)) : std::map<std::string, std::string>();
  for (const auto& [key, value] : settings) {
    Require(config._getValueByKey(key, value + "?") == value, "every setting is found");
  }
  for (const char* key : {"IDC_VID", "IDC_PID", "IDS_STRING_CAPTION", ""}) {
    const auto found = settings.find(key);
    Require(config._getValueByKey(key, "default") ==
                (found == settings.end() ? "default" : found->second),
            "what is not set has its default");
  }
}

// All lines of a section "x", since the reader hands out those of known sections alone; the other
// sections' names come with the notes.
void Lines(ByteView input) {
  if (input.empty()) return;
  std::vector<std::string> lines;
  const auto keep = [&](const DescriptionNote& note) {
    const bool isKnown = note.remark == DescriptionRemark::kText;
    if (!isKnown && note.remark != DescriptionRemark::kUnknownSection) return;
    const std::string_view section = isKnown ? "x" : note.text;
    lines.push_back(std::string(section) + "\n" + std::string(note.lineText));
  };
  std::string last;
  const bool isRead =
      ReadDescription(TextOf(input), {.comment = "--", .unknownSectionFails = false},
                      {{"x", WholeLine{last}}}, keep);
  bool isGood = false;
  std::vector<std::string> expected = LinesByStandardLibrary(input, isGood);
  for (std::string& line : expected) {
    if (line.substr(0, 2) == "X\n") line[0] = 'x';
  }
  Require(isRead == isGood, "both end alike");
  Require(lines == expected, "the lines are those that fgets gives");
}

void A1Text(ByteView input) { ReadTwice<A1Description>(TextOf(input)); }
void A2Text(ByteView input) { ReadTwice<A2Description>(TextOf(input)); }
void C1Text(ByteView input) { ReadTwice<C1Description>(TextOf(input)); }

}  // namespace hollin::fuzz
