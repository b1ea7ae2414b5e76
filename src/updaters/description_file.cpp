// SPDX-License-Identifier: MIT
#include "updaters/description_file.h"

#include <algorithm>
#include <variant>

#include "base/log.h"
#include "base/text.h"
#include "device/ax_update.h"
#include "updaters/description_pieces.h"

namespace hollin {
namespace {

// What a way of reading says of one trimmed line.
struct LineRemark {
  DescriptionRemark remark;
  std::string_view text;
  const void* field = nullptr;
};

LineRemark ReadNumber(std::string_view text, uint32_t& field) {
  const bool isRead = AXUpdate::ParseTrimmed(text, field);
  return {isRead ? DescriptionRemark::kSetting : DescriptionRemark::kBadNumber, text, &field};
}

LineRemark AppendNumber(std::string_view text, std::vector<uint32_t>& list) {
  if (AXUpdate::ParseTrimmed(text, list.emplace_back())) {
    return {DescriptionRemark::kEntry, text, &list};
  }
  list.pop_back();
  return {DescriptionRemark::kBadNumber, text, &list};
}

struct Setting {
  std::string_view key;
  std::string_view value;
};

std::optional<Setting> SplitSetting(std::string_view line) {
  const char* const equals = std::find(line.begin(), line.end(), '=');
  if (equals == line.end()) return std::nullopt;
  return Setting{Trim(Between(line.begin(), equals)), Trim(Between(equals + 1, line.end()))};
}

LineRemark ReadField(const NamedField& field, std::string_view value) {
  if (field.number != nullptr) return ReadNumber(value, *field.number);
  *field.text = std::string(value);
  return {DescriptionRemark::kText, value, field.text};
}

const NamedField* FindField(const std::vector<NamedField>& fields, std::string_view key) {
  const auto found = std::find_if(fields.begin(), fields.end(), [key](const NamedField& field) {
    return EqualsIgnoringCase(field.key, key);
  });
  return found == fields.end() ? nullptr : &*found;
}

const LineRemark kLacksEqualsSign{DescriptionRemark::kNoEqualsSign, {}};

// Takes a line; one for each way of reading.
LineRemark Take(const WholeLine& way, std::string_view line) {
  way.field = line;
  return {DescriptionRemark::kText, line, &way.field};
}

LineRemark Take(const Numbers& way, std::string_view line) { return AppendNumber(line, way.list); }

LineRemark Take(const AnyKey& way, std::string_view line) {
  const auto setting = SplitSetting(line);
  return setting ? ReadNumber(setting->value, way.field) : kLacksEqualsSign;
}

LineRemark Take(const AnyKeyFlag& way, std::string_view line) {
  const auto setting = SplitSetting(line);
  if (!setting) return kLacksEqualsSign;
  uint32_t number = 0;
  const LineRemark remark = ReadNumber(setting->value, number);
  if (!IsFatal(remark.remark)) way.field = number != 0;
  return {remark.remark, remark.text, &way.field};
}

LineRemark Take(const NamedKeys& way, std::string_view line) {
  const auto setting = SplitSetting(line);
  if (!setting) return kLacksEqualsSign;
  if (const NamedField* field = FindField(way.fields, setting->key)) {
    return ReadField(*field, setting->value);
  }
  return {DescriptionRemark::kUnknownKey, setting->key};
}

LineRemark Take(const Cycles& way, std::string_view line) {
  const auto setting = SplitSetting(line);
  if (!setting) return kLacksEqualsSign;
  const auto& [key, value] = *setting;
  if (const NamedField* field = FindField(way.fields, key)) return ReadField(*field, value);
  if (ContainsIgnoringCase(key, "addr")) return AppendNumber(value, way.addresses);
  if (ContainsIgnoringCase(key, "data")) return AppendNumber(value, way.data);
  return {DescriptionRemark::kUnknownKey, key};
}

bool StartsWith(std::string_view text, std::string_view start) {
  return text.front() == start.front() && text.substr(0, start.size()) == start;
}

bool IsUnknown(DescriptionRemark remark) {
  return remark == DescriptionRemark::kUnknownSection || remark == DescriptionRemark::kUnknownKey;
}

constexpr uint32_t BitOf(DescriptionRemark remark) { return 1U << static_cast<uint32_t>(remark); }

// The remarks that a listener wants to hear of, one bit each. The log wants unknown names alone: a
// note of every value would take longer than the value.
uint32_t HeardBy(const DescriptionListener& listener) {
  if (!listener) return 0;
  const auto* const function = listener.target<void (*)(const DescriptionNote&)>();
  if (function == nullptr || *function != LogUnknown) return ~0U;
  return BitOf(DescriptionRemark::kUnknownSection) | BitOf(DescriptionRemark::kUnknownKey);
}

// Reads one description; one object a file.
class Reader {
 public:
  Reader(std::string_view text, const DescriptionGrammar& grammar,
         const std::vector<DescriptionSection>& sections, const DescriptionListener& listener)
      : pieces(text),
        grammar(grammar),
        sections(sections),
        listener(listener),
        heard(HeardBy(listener)) {}

  bool Read() {
    while (pieces.Next()) {
      if (!ReadPiece()) return false;
    }
    return true;
  }

 private:
  bool ReadPiece() {
    const std::string_view piece = pieces.Piece();
    if (list != nullptr && AppendDigits(piece)) return true;
    return pieces.IsPlain() ? ReadLine(Trim(piece)) : ReadOddPiece(piece);
  }

  // A NUL ends the piece.
  bool ReadOddPiece(std::string_view piece) {
    const std::string_view read =
        Between(piece.begin(), std::find(piece.begin(), piece.end(), '\0'));
    if (pieces.IsCut()) Tell(read, {DescriptionRemark::kLongLine, {}});
    if (!IsValidUtf8(read)) return Tell(read, {DescriptionRemark::kNotUtf8, {}});
    const std::string_view line = Trim(read);
    if (read.size() < piece.size()) Tell(line, {DescriptionRemark::kNul, pieces.From(read.end())});
    return ReadLine(line);
  }

  bool ReadLine(std::string_view line) {
    if (line.empty() || IsComment(line)) return true;
    if (line.front() == '[') return ReadHeader(line);
    if (section != nullptr) {
      return std::visit([&](const auto& way) { return Tell(line, Take(way, line)); },
                        section->read);
    }
    return Tell(line, {grammar.unknownSectionFails ? DescriptionRemark::kOutsideSections
                                                   : DescriptionRemark::kUnknownSection,
                       current});
  }

  // A number of decimal digits alone, for a list: nearly all lines of a long description. False,
  // with nothing done, where it is anything else.
  [[nodiscard]] bool AppendDigits(std::string_view piece) const {
    if (piece.empty()) return false;
    uint32_t value = 0;
    for (const char c : piece) {
      if (c < '0' || c > '9') return false;
      value = value * 10 + static_cast<uint32_t>(c - '0');
    }
    list->push_back(value);
    return true;
  }

  [[nodiscard]] bool IsComment(std::string_view line) const {
    return line.front() == ';' || StartsWith(line, grammar.comment);
  }

  bool ReadHeader(std::string_view line) {
    const char* const end = std::find(line.begin(), line.end(), ']');
    if (end == line.end()) return Tell(line, {DescriptionRemark::kUnclosedHeader, line});
    current = Trim(Between(line.begin() + 1, end));
    const auto known = std::find_if(sections.begin(), sections.end(), [this](const auto& each) {
      return EqualsIgnoringCase(each.name, current);
    });
    section = known == sections.end() ? nullptr : &*known;
    list = ListWithoutRemarks();
    const std::string_view tail = Trim(Between(end + 1, line.end()));
    if (!tail.empty()) Tell(line, {DescriptionRemark::kHeaderTail, tail});
    return Tell(line, {DescriptionRemark::kHeader, current});
  }

  // The list that the section's numbers go to, where nobody hears of each.
  [[nodiscard]] std::vector<uint32_t>* ListWithoutRemarks() const {
    if (section == nullptr || IsHeard(DescriptionRemark::kEntry)) return nullptr;
    const auto* const numbers = std::get_if<Numbers>(&section->read);
    return numbers == nullptr ? nullptr : &numbers->list;
  }

  // False when the remark is the end of the reading.
  // NOLINTNEXTLINE(modernize-use-nodiscard): most remarks are told and the reading goes on.
  bool Tell(std::string_view line, const LineRemark& remark) const {
    if (IsHeard(remark.remark)) CallListener(line, remark);
    return !IsFatal(remark.remark);
  }

  void CallListener(std::string_view line, const LineRemark& remark) const {
    listener({.remark = remark.remark,
              .line = pieces.Line(),
              .text = remark.text,
              .lineText = line,
              .before = pieces.Before(remark.text, line),
              .field = remark.field});
  }

  [[nodiscard]] bool IsHeard(DescriptionRemark remark) const {
    return (heard & BitOf(remark)) != 0;
  }

  DescriptionPieces pieces;
  const DescriptionGrammar& grammar;
  const std::vector<DescriptionSection>& sections;
  const DescriptionListener& listener;
  const uint32_t heard;                         // as `HeardBy` tells
  std::string_view current;                     // the section's name, in the text
  const DescriptionSection* section = nullptr;  // null while the name is none of the known
  std::vector<uint32_t>* list = nullptr;        // where its numbers go, if nobody hears of them
};

}  // namespace

bool IsFatal(DescriptionRemark remark) {
  constexpr uint32_t kFatal =
      BitOf(DescriptionRemark::kUnclosedHeader) | BitOf(DescriptionRemark::kOutsideSections) |
      BitOf(DescriptionRemark::kNoEqualsSign) | BitOf(DescriptionRemark::kBadNumber);
  return (kFatal & BitOf(remark)) != 0;
}

size_t DescriptionNote::Column() const {
  const auto isFirstOfCharacter = [](char c) { return (static_cast<uint8_t>(c) & 0xC0) != 0x80; };
  return 1 + static_cast<size_t>(std::count_if(before.begin(), before.end(), isFirstOfCharacter));
}

void LogUnknown(const DescriptionNote& note) {
  if (IsUnknown(note.remark)) Log(std::string("Unknown:").append(note.text));
}

void MakeRoom(std::vector<uint32_t>& list, std::string_view text) {
  constexpr size_t kShortestLine = 2;        // a digit and the line end
  constexpr size_t kMost = size_t{1} << 25;  // address space is not without end either
  list.reserve(std::min(text.size() / kShortestLine + 1, kMost));
}

bool ReadDescription(std::string_view text, const DescriptionGrammar& grammar,
                     const std::vector<DescriptionSection>& sections,
                     const DescriptionListener& listener) {
  return Reader(text, grammar, sections, listener).Read();
}

}  // namespace hollin
