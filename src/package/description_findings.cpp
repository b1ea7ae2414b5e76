// SPDX-License-Identifier: MIT
#include "package/description_findings.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <limits>

#include "base/text.h"
#include "device/ax_update.h"
#include "package/package_layout.h"

namespace hollin {
namespace {

using namespace package_layout;

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view kDigits = "0123456789";
constexpr uint64_t kLargest = std::numeric_limits<uint32_t>::max();

bool StartsWith(std::string_view text, std::string_view start) {
  return text.substr(0, start.size()) == start;
}

// What stands before "=" in a line; empty where there is none.
std::string_view KeyOf(std::string_view line) {
  const size_t equals = line.find('=');
  return equals == std::string_view::npos ? std::string_view() : Trim(line.substr(0, equals));
}

// The number that a text says; where it is beyond `kLargest`, any that is.
uint64_t SaidBy(std::string_view digits, uint32_t base) {
  uint64_t value = 0;
  for (const char c : digits) {
    const char lower = static_cast<char>(c | 0x20);
    value = value * base + static_cast<uint64_t>(lower >= 'a' ? lower - 'a' + 10 : c - '0');
    if (value > kLargest) return kLargest + 1;
  }
  return value;
}

// What may surprise in a number that was taken; nothing for most.
std::optional<FindingCode> SurpriseIn(std::string_view text) {
  if (text.find(';') != std::string_view::npos) return FindingCode::kCommentBehindValue;
  const bool hasPrefix = EqualsIgnoringCase(text.substr(0, 2), "0x");
  const bool hasSuffix = EqualsIgnoringCase(text.substr(text.size() - 1), "H");
  if (hasPrefix || hasSuffix) {
    if (hasPrefix) text.remove_prefix(2);
    if (hasSuffix) text.remove_suffix(1);
    return SaidBy(text, 16) > kLargest ? std::optional(FindingCode::kNumberWraps) : std::nullopt;
  }
  const size_t suffix = text.find_first_of("KkMm");
  const bool isScaled = suffix != std::string_view::npos;
  const std::string_view digits = isScaled ? text.substr(0, text.size() - 1) : text;
  const bool isSuffixLast = !isScaled || suffix + 1 == text.size();
  if (!isSuffixLast || digits.empty() ||
      digits.find_first_not_of(kDigits) != std::string_view::npos) {
    return FindingCode::kNumberNotDigits;
  }
  if (SaidBy(digits, 10) > kLargest / (isScaled ? 1024 : 1)) return FindingCode::kNumberWraps;
  const bool isMega = isScaled && (text.back() | 0x20) == 'm';
  return isMega ? std::optional(FindingCode::kNumberSuffix1024) : std::nullopt;
}

// The digits at the end of a key: "EraseAddr3" has 3.
std::optional<uint64_t> NumberOfKey(std::string_view key) {
  const size_t last = key.find_last_not_of(kDigits);
  const std::string_view digits = key.substr(last == std::string_view::npos ? 0 : last + 1);
  if (digits.empty()) return std::nullopt;
  return SaidBy(digits, 10);
}

// Sections in which what stands before "=" is not read.
constexpr std::array<std::string_view, 8> kAnyKeySections = {
    "Chip Type", "Write Modle", "Block Size",         "Data",
    "Line Mode", "SPI Number",  "Chip Select Number", "Sector Size"};

// Keys that other sections read.
constexpr std::array<std::string_view, 9> kNamedKeys = {
    "FileOffset",  "MaxWriteBack",  "MaxSectorEraseTime", "ResetAddr",          "ResetData",
    "EraseCycles", "ProgramCycles", "WriteBufferCycles",  "ProgramBufferCycles"};

// Settings that are read and kept, and nothing more.
struct UnusedSetting {
  uint16_t type;
  std::string_view section, key;
  uint32_t usual;
  bool isZeroRefused;
};
constexpr std::array<UnusedSetting, 4> kUnusedSettings = {
    {{kTypeA1, "Transmission Info", "Time Over", 0, false},
     {kTypeA2, "Time", "MaxWriteBack", 1000, true},
     {kTypeA2, "Flash Reset", "ResetAddr", 0x3000, false},
     {kTypeA2, "Flash Reset", "ResetData", 0xF0, false}}};

std::string WithoutBlanks(std::string_view text) {
  std::string squeezed;
  std::copy_if(text.begin(), text.end(), std::back_inserter(squeezed),
               [](char c) { return c != ' ' && c != '\t'; });
  return squeezed;
}

template <size_t kSize>
bool IsAmong(const std::array<std::string_view, kSize>& names, std::string_view text) {
  return std::any_of(names.begin(), names.end(), [&](std::string_view name) {
    return EqualsIgnoringCase(WithoutBlanks(name), WithoutBlanks(text));
  });
}

bool IsPadding(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return c >= 0 && c <= ' '; });
}

}  // namespace

DescriptionFindings::DescriptionFindings(uint32_t dataType, size_t pack, FindingList& findings)
    : type(static_cast<uint16_t>(dataType)), pack(pack), findings(findings) {}

void DescriptionFindings::Take(const DescriptionNote& note) {
  if (IsFatal(note.remark)) {
    failed = {note.remark, note.line, note.Column(), std::string(note.text),
              std::string(note.lineText)};
  }
  if (note.line == 1 && note.before.empty() && StartsWith(note.lineText, kByteOrderMark)) {
    return Add(FindingCode::kByteOrderMark, note, {});
  }
  switch (note.remark) {
    case DescriptionRemark::kLongLine:
      return TakeOnce(FindingCode::kLineTooLong, note);
    case DescriptionRemark::kNotUtf8:
      return Add(FindingCode::kLineNotUtf8, note, {});
    case DescriptionRemark::kNul:
      if (!IsPadding(note.text)) Add(FindingCode::kLineHasNul, note, {});
      return;
    case DescriptionRemark::kHeader:
      return TakeHeader(note);
    case DescriptionRemark::kHeaderTail:
      if (!BeginsComment(note.text)) Add(FindingCode::kHeaderTail, note, note.text);
      return;
    default:
      break;
  }
  if (HasForeignMark(note.lineText)) return Add(FindingCode::kCommentMark, note, note.lineText);
  switch (note.remark) {
    case DescriptionRemark::kUnknownSection:
      return TakeUnknownSection(note);
    case DescriptionRemark::kUnknownKey:
      return Add(FindingCode::kKeyUnknown, note, note.text);
    case DescriptionRemark::kSetting:
      TakeSetting(note);
      LookAtKey(note);
      return TakeNumber(note);
    case DescriptionRemark::kEntry:
      if (isInReserved) reservedEntries++;
      if (!KeyOf(note.lineText).empty() && type == kTypeA2) TakeCycle(note);
      return TakeNumber(note);
    case DescriptionRemark::kText:
      TakeSetting(note);
      if (note.text.find(';') == std::string_view::npos) return;
      return Add(FindingCode::kCommentBehindText, note, note.text);
    default:
      return;
  }
}

void DescriptionFindings::Finish() {
  const bool hasReserved = type == kTypeA2 || type == kTypeC1;
  if (!hasReserved || failed || reservedEntries > 0) return;
  findings.Add({.code = FindingCode::kReservedListEmpty, .pack = pack});
}

void DescriptionFindings::Add(FindingCode code, const DescriptionNote& note, std::string_view text,
                              uint64_t number, uint64_t other) {
  if (!findings.HasRoom(code, pack)) return;  // a column takes time to count
  findings.Add({.code = code,
                .pack = pack,
                .line = note.line,
                .column = note.Column(),
                .text = std::string(text),
                .number = number,
                .other = other});
}

// A long line may be noted piece by piece.
void DescriptionFindings::TakeOnce(FindingCode code, const DescriptionNote& note) {
  if (note.line == longLine) return;
  longLine = note.line;
  Add(code, note, {});
}

void DescriptionFindings::TakeHeader(const DescriptionNote& note) {
  isSectionTold = false;
  section = note.text;
  isInReserved = EqualsIgnoringCase(note.text, "Reserved Sector");
  const bool isMisspelled =
      EqualsIgnoringCase(note.text, "Flash Model") || EqualsIgnoringCase(note.text, "Write Model");
  if (type != kTypeA2 || !isMisspelled) return;
  Add(FindingCode::kSectionSpelling, note, note.text);
  isSectionTold = true;
}

// Once for all lines of the section.
void DescriptionFindings::TakeUnknownSection(const DescriptionNote& note) {
  if (isSectionTold) return;
  isSectionTold = true;
  const bool isBefore = note.text.empty();
  Add(isBefore ? FindingCode::kLineBeforeSections : FindingCode::kSectionUnknown, note,
      isBefore ? note.lineText : note.text);
}

void DescriptionFindings::TakeSetting(const DescriptionNote& note) {
  const auto [known, isFirst] = settingLines.try_emplace(note.field, note.line);
  if (!isFirst) Add(FindingCode::kSettingRepeated, note, note.lineText, known->second);
  known->second = note.line;
}

void DescriptionFindings::TakeNumber(const DescriptionNote& note) {
  uint32_t value = 0;
  if (!AXUpdate::ParseNumber(note.text, value)) return;
  if (const auto code = SurpriseIn(note.text)) Add(*code, note, note.text, value);
  if (note.remark == DescriptionRemark::kSetting) LookAtEffect(note, value);
  if (type != kTypeA1 || !EqualsIgnoringCase(KeyOf(note.lineText), "Data Length")) return;
  if (value == 0) Add(FindingCode::kA1DataLengthZero, note, {});
}

void DescriptionFindings::LookAtKey(const DescriptionNote& note) {
  if (type == kTypeA1 || !IsAmong(kAnyKeySections, section)) return;
  const std::string_view key = KeyOf(note.lineText);
  if (EqualsIgnoringCase(WithoutBlanks(key), WithoutBlanks(section))) return;
  if (IsAmong(kAnyKeySections, key) || IsAmong(kNamedKeys, key)) {
    Add(FindingCode::kKeyOfOtherSection, note, key);
  }
}

void DescriptionFindings::LookAtEffect(const DescriptionNote& note, uint32_t value) {
  for (const UnusedSetting& setting : kUnusedSettings) {
    if (type != setting.type || !EqualsIgnoringCase(section, setting.section) ||
        !EqualsIgnoringCase(KeyOf(note.lineText), setting.key)) {
      continue;
    }
    if (value == setting.usual || (value == 0 && setting.isZeroRefused)) return;
    return Add(FindingCode::kSettingWithoutEffect, note, setting.key, value);
  }
}

void DescriptionFindings::TakeCycle(const DescriptionNote& note) {
  const std::string_view key = KeyOf(note.lineText);
  if (ContainsIgnoringCase(key, "addr") && ContainsIgnoringCase(key, "data")) {
    Add(FindingCode::kA2CycleKeyBoth, note, key);
  }
  const auto digits = NumberOfKey(key);
  if (!digits) return;
  LastCycle& last = lastCycles[note.field];
  if (last.isKnown && *digits <= last.digits) {
    Add(FindingCode::kA2CycleOrder, note, key, *digits, last.digits);
  }
  last = {.digits = *digits, .isKnown = true};
}

bool DescriptionFindings::BeginsComment(std::string_view text) const {
  return StartsWith(text, ";") || StartsWith(text, type == kTypeA1 ? "--" : "//");
}

bool DescriptionFindings::HasForeignMark(std::string_view line) const {
  return StartsWith(line, type == kTypeA1 ? "//" : "--") || StartsWith(line, "#");
}

}  // namespace hollin
