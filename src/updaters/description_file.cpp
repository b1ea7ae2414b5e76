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

std::string_view Between(const char* begin, const char* end) {
  return {begin, static_cast<size_t>(end - begin)};
}

// Hands out the text piece by piece.
class Pieces {
 public:
  explicit Pieces(std::string_view text) : next(text.data()), end(next + text.size()) {}

  // False at the end of the text.
  bool Next() {
    if (next == end) return false;
    if (endsLine) {
      line++;
      lineStart = next;
    }
    start = next;
    Scan();
    return true;
  }

  // What counts of the piece: a line end or a NUL ends it.
  [[nodiscard]] std::string_view Piece() const { return Between(start, stop); }
  [[nodiscard]] bool IsUtf8() const { return isAscii || IsValidUtf8(Piece()); }
  [[nodiscard]] bool HasNul() const { return hasNul; }
  [[nodiscard]] std::string_view BehindNul() const { return Between(stop, next); }
  // Whether more of this line follows than the line end that stays behind 99 bytes.
  [[nodiscard]] bool IsCut() const {
    if (endsLine || next == end || *next == '\n') return false;
    return *next != '\r' || next + 1 == end || next[1] != '\n';
  }
  [[nodiscard]] size_t Line() const { return line; }
  // What stands in this line before a text that may be in it; else before another, which is.
  [[nodiscard]] std::string_view Before(std::string_view text, std::string_view otherwise) const {
    const std::less_equal<> isUpTo;
    const bool isInside = isUpTo(lineStart, text.data()) && isUpTo(text.data(), next);
    return Between(lineStart, isInside ? text.data() : otherwise.data());
  }

 private:
  // Most lines are short: one look at each byte costs less than several searches.
  void Scan() {
    const char* const limit = start + std::min<ptrdiff_t>(end - start, kPieceSize);
    const char* at = start;
    uint8_t bits = 0;
    bool anyIsNul = false;
    for (; at != limit && *at != '\n'; at++) {
      bits |= static_cast<uint8_t>(*at);
      anyIsNul |= *at == '\0';
    }
    hasNul = anyIsNul;
    endsLine = at != limit;
    next = endsLine ? at + 1 : at;
    isAscii = bits < 0x80;
    stop = hasNul ? std::find(start, at, '\0') : at;
  }

  const char* next;                 // behind the piece
  const char* const end;            // of the text
  const char* lineStart = nullptr;  // of the line that the piece is in
  const char* start = nullptr;      // of the piece
  const char* stop = nullptr;       // of what counts of it
  bool endsLine = true;
  bool isAscii = true;
  bool hasNul = false;
  size_t line = 0;
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

struct NumberAppender {
  std::vector<uint32_t>& list;

  std::optional<LineRemark> operator()(std::string_view line) const {
    return AppendNumber(line, list);
  }
};

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

bool StartsWith(std::string_view text, std::string_view start) {
  return text.front() == start.front() && text.substr(0, start.size()) == start;
}

bool IsUnknown(DescriptionRemark remark) {
  return remark == DescriptionRemark::kUnknownSection || remark == DescriptionRemark::kUnknownKey;
}

// The log hears of unknown names alone; a note of every value would take longer than the value.
bool HearsUnknownOnly(const DescriptionListener& listener) {
  const auto* const function = listener.target<void (*)(const DescriptionNote&)>();
  return function != nullptr && *function == LogUnknown;
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
        hearsUnknownOnly(HearsUnknownOnly(listener)) {}

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
    if (pieces.IsCut()) Tell(piece, {DescriptionRemark::kLongLine, {}});
    if (!pieces.IsUtf8()) return Tell(piece, {DescriptionRemark::kNotUtf8, {}});
    const std::string_view line = Trim(piece);
    if (pieces.HasNul()) Tell(line, {DescriptionRemark::kNul, pieces.BehindNul()});
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
    const size_t end = line.find(']');
    if (end == std::string_view::npos) {
      return Tell(line, {DescriptionRemark::kUnclosedHeader, line});
    }
    current = Trim(line.substr(1, end - 1));
    const auto known = std::find_if(sections.begin(), sections.end(), [this](const auto& each) {
      return EqualsIgnoringCase(each.name, current);
    });
    section = known == sections.end() ? nullptr : &*known;
    list = ListWithoutRemarks();
    const std::string_view tail = Trim(line.substr(end + 1));
    if (!tail.empty()) Tell(line, {DescriptionRemark::kHeaderTail, tail});
    return Tell(line, {DescriptionRemark::kHeader, current});
  }

  // The list that the section's numbers go to, where nobody hears of each.
  [[nodiscard]] std::vector<uint32_t>* ListWithoutRemarks() const {
    if (section == nullptr || IsHeard(DescriptionRemark::kEntry)) return nullptr;
    const auto* const appender = section->read.target<NumberAppender>();
    return appender == nullptr ? nullptr : &appender->list;
  }

  // False when the remark is the end of the reading.
  // NOLINTNEXTLINE(modernize-use-nodiscard): most remarks are told and the reading goes on.
  bool Tell(std::string_view line, const LineRemark& remark) const {
    if (IsHeard(remark.remark)) {
      listener({.remark = remark.remark,
                .line = pieces.Line(),
                .text = remark.text,
                .lineText = line,
                .before = pieces.Before(remark.text, line),
                .field = remark.field});
    }
    return !IsFatal(remark.remark);
  }

  [[nodiscard]] bool IsHeard(DescriptionRemark remark) const {
    return listener && (!hearsUnknownOnly || IsUnknown(remark));
  }

  Pieces pieces;
  const DescriptionGrammar& grammar;
  const std::vector<DescriptionSection>& sections;
  const DescriptionListener& listener;
  const bool hearsUnknownOnly;
  std::string_view current;                     // the section's name, in the text
  const DescriptionSection* section = nullptr;  // null while the name is none of the known
  std::vector<uint32_t>* list = nullptr;        // where its numbers go, if nobody hears of them
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
  if (IsUnknown(note.remark)) Log("Unknown:" + std::string(note.text));
}

LineReader WholeLine(std::string& field) {
  return [&field](std::string_view line) {
    field = line;
    return LineRemark{DescriptionRemark::kText, line, &field};
  };
}

LineReader Numbers(std::vector<uint32_t>& list) { return NumberAppender{list}; }

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
