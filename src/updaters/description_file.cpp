// SPDX-License-Identifier: MIT
#include "updaters/description_file.h"

#include <algorithm>
#include <functional>
#include <utility>

#include "base/log.h"
#include "base/text.h"
#include "device/ax_update.h"

namespace hollin {
namespace {

constexpr size_t kPieceSize = 99;

// Hands out the text piece by piece.
class Pieces {
 public:
  explicit Pieces(std::string_view text) : rest(text) {}

  // False at the end of the text.
  bool Next() {
    if (rest.empty()) return false;
    if (endsLine) {
      line++;
      lineStart = rest.data();
    }
    const std::string_view window = rest.substr(0, kPieceSize);
    const size_t newline = window.find('\n');
    endsLine = newline != std::string_view::npos;
    whole = endsLine ? window.substr(0, newline + 1) : window;
    rest.remove_prefix(whole.size());
    return true;
  }

  // What counts of the piece: a NUL ends it.
  [[nodiscard]] std::string_view Piece() const { return whole.substr(0, whole.find('\0')); }
  [[nodiscard]] std::string_view BehindNul() const { return whole.substr(Piece().size()); }
  // Whether more of this line follows than the line end that stays behind 99 bytes.
  [[nodiscard]] bool IsCut() const {
    return !endsLine && !rest.empty() && rest[0] != '\n' && rest.substr(0, 2) != "\r\n";
  }
  [[nodiscard]] size_t Line() const { return line; }
  // What stands in this line before a text that may be in it; else before `piece`, which is.
  [[nodiscard]] std::string_view Before(std::string_view text, std::string_view piece) const {
    const std::less_equal<> isUpTo;
    const char* const end = whole.data() + whole.size();
    const bool isInside = isUpTo(lineStart, text.data()) && isUpTo(text.data(), end);
    const char* const place = isInside ? text.data() : piece.data();
    return {lineStart, static_cast<size_t>(place - lineStart)};
  }

 private:
  std::string_view rest;
  std::string_view whole;
  const char* lineStart = nullptr;
  bool endsLine = true;
  size_t line = 0;
};

LineRemark ReadNumber(std::string_view text, uint32_t& field) {
  const bool isRead = AXUpdate::ParseNumber(text, field);
  return {isRead ? DescriptionRemark::kSetting : DescriptionRemark::kBadNumber, text, &field};
}

LineRemark AppendNumber(std::string_view text, std::vector<uint32_t>& list) {
  uint32_t number = 0;
  if (!AXUpdate::ParseNumber(text, number)) return {DescriptionRemark::kBadNumber, text, &list};
  list.push_back(number);
  return {DescriptionRemark::kEntry, text, &list};
}

struct Setting {
  std::string_view key;
  std::string_view value;
};

std::optional<Setting> SplitSetting(std::string_view line) {
  const size_t equals = line.find('=');
  if (equals == std::string_view::npos) return std::nullopt;
  return Setting{Trim(line.substr(0, equals)), Trim(line.substr(equals + 1))};
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

// Reads one description; one object a file.
class Reader {
 public:
  Reader(std::string_view text, const DescriptionGrammar& grammar,
         const std::vector<DescriptionSection>& sections, const DescriptionListener& listener)
      : pieces(text), grammar(grammar), sections(sections), listener(listener) {}

  bool Read() {
    while (pieces.Next()) {
      if (!ReadPiece()) return false;
    }
    return true;
  }

 private:
  bool ReadPiece() {
    const std::string_view piece = pieces.Piece();
    if (pieces.IsCut()) Tell(piece, {DescriptionRemark::kLongLine, {}});
    if (!IsValidUtf8(piece)) return Tell(piece, {DescriptionRemark::kNotUtf8, {}});
    const std::string_view line = Trim(piece);
    if (!pieces.BehindNul().empty()) Tell(line, {DescriptionRemark::kNul, pieces.BehindNul()});
    if (line.empty() || IsComment(line)) return true;
    if (line.front() == '[') return ReadHeader(line);
    if (section != nullptr) {
      const auto remark = section->read(line);
      return !remark || Tell(line, *remark);
    }
    return Tell(line, {grammar.unknownSectionFails ? DescriptionRemark::kOutsideSections
                                                   : DescriptionRemark::kUnknownSection,
                       current});
  }

  [[nodiscard]] bool IsComment(std::string_view line) const {
    return line.front() == ';' || line.substr(0, grammar.comment.size()) == grammar.comment;
  }

  bool ReadHeader(std::string_view line) {
    const size_t end = line.find(']');
    if (end == std::string_view::npos) {
      return Tell(line, {DescriptionRemark::kUnclosedHeader, line});
    }
    current = Trim(line.substr(1, end - 1));
    const auto known = std::find_if(sections.begin(), sections.end(), [this](const auto& each) {
      return EqualsIgnoringCase(each.name, current);
    });
    section = known == sections.end() ? nullptr : &*known;
    const std::string_view tail = Trim(line.substr(end + 1));
    if (!tail.empty()) Tell(line, {DescriptionRemark::kHeaderTail, tail});
    return Tell(line, {DescriptionRemark::kHeader, current});
  }

  // False when the remark is the end of the reading.
  // NOLINTNEXTLINE(modernize-use-nodiscard): most remarks are told and the reading goes on.
  bool Tell(std::string_view line, const LineRemark& remark) const {
    if (listener) {
      listener({.remark = remark.remark,
                .line = pieces.Line(),
                .text = remark.text,
                .lineText = line,
                .before = pieces.Before(remark.text, line),
                .field = remark.field});
    }
    return !IsFatal(remark.remark);
  }

  Pieces pieces;
  const DescriptionGrammar& grammar;
  const std::vector<DescriptionSection>& sections;
  const DescriptionListener& listener;
  std::string_view current;                     // the section's name, in the text
  const DescriptionSection* section = nullptr;  // null while the name is none of the known
};

}  // namespace

bool IsFatal(DescriptionRemark remark) {
  switch (remark) {
    case DescriptionRemark::kUnclosedHeader:
    case DescriptionRemark::kOutsideSections:
    case DescriptionRemark::kNoEqualsSign:
    case DescriptionRemark::kBadNumber:
      return true;
    default:
      return false;
  }
}

size_t DescriptionNote::Column() const {
  const auto isFirstOfCharacter = [](char c) { return (static_cast<uint8_t>(c) & 0xC0) != 0x80; };
  return 1 + static_cast<size_t>(std::count_if(before.begin(), before.end(), isFirstOfCharacter));
}

void LogUnknown(const DescriptionNote& note) {
  const bool isUnknown = note.remark == DescriptionRemark::kUnknownSection ||
                         note.remark == DescriptionRemark::kUnknownKey;
  if (isUnknown) Log("Unknown:" + std::string(note.text));
}

LineReader WholeLine(std::string& field) {
  return [&field](std::string_view line) {
    field = line;
    return LineRemark{DescriptionRemark::kText, line, &field};
  };
}

LineReader Numbers(std::vector<uint32_t>& list) {
  return [&list](std::string_view line) { return AppendNumber(line, list); };
}

LineReader AnyKey(uint32_t& field) {
  return [&field](std::string_view line) {
    const auto setting = SplitSetting(line);
    return setting ? ReadNumber(setting->value, field) : kLacksEqualsSign;
  };
}

LineReader AnyKeyFlag(bool& field) {
  return [&field](std::string_view line) {
    const auto setting = SplitSetting(line);
    if (!setting) return kLacksEqualsSign;
    uint32_t number = 0;
    const LineRemark remark = ReadNumber(setting->value, number);
    if (!IsFatal(remark.remark)) field = number != 0;
    return LineRemark{remark.remark, remark.text, &field};
  };
}

LineReader NamedKeys(std::initializer_list<NamedField> fields) {
  return [known = std::vector(fields)](std::string_view line) {
    const auto setting = SplitSetting(line);
    if (!setting) return kLacksEqualsSign;
    if (const NamedField* field = FindField(known, setting->key)) {
      return ReadField(*field, setting->value);
    }
    return LineRemark{DescriptionRemark::kUnknownKey, setting->key};
  };
}

LineReader Cycles(std::initializer_list<NamedField> fields, std::vector<uint32_t>& addresses,
                  std::vector<uint32_t>& data) {
  return [known = std::vector(fields), &addresses, &data](std::string_view line) {
    const auto setting = SplitSetting(line);
    if (!setting) return kLacksEqualsSign;
    const auto& [key, value] = *setting;
    if (const NamedField* field = FindField(known, key)) return ReadField(*field, value);
    if (ContainsIgnoringCase(key, "addr")) return AppendNumber(value, addresses);
    if (ContainsIgnoringCase(key, "data")) return AppendNumber(value, data);
    return LineRemark{DescriptionRemark::kUnknownKey, key};
  };
}

bool ReadDescription(std::string_view text, const DescriptionGrammar& grammar,
                     const std::vector<DescriptionSection>& sections,
                     const DescriptionListener& listener) {
  return Reader(text, grammar, sections, listener).Read();
}

}  // namespace hollin
