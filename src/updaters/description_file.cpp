// SPDX-License-Identifier: MIT
#include "updaters/description_file.h"

#include <algorithm>
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
  bool Next(std::string_view& piece) {
    if (rest.empty()) return false;
    if (endsLine) line++;
    const std::string_view window = rest.substr(0, kPieceSize);
    const size_t newline = window.find('\n');
    endsLine = newline != std::string_view::npos;
    const std::string_view taken = endsLine ? window.substr(0, newline + 1) : window;
    rest.remove_prefix(taken.size());
    piece = taken.substr(0, taken.find('\0'));
    return true;
  }

  [[nodiscard]] size_t Line() const { return line; }

 private:
  std::string_view rest;
  bool endsLine = true;
  size_t line = 0;
};

std::optional<LineProblem> ReadNumber(std::string_view text, uint32_t& field) {
  if (AXUpdate::ParseNumber(text, field)) return std::nullopt;
  return LineProblem{DescriptionRemark::kBadNumber, text};
}

std::optional<LineProblem> AppendNumber(std::string_view text, std::vector<uint32_t>& list) {
  uint32_t number = 0;
  const auto problem = ReadNumber(text, number);
  if (!problem) list.push_back(number);
  return problem;
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

std::optional<LineProblem> ReadField(const NamedField& field, std::string_view value) {
  if (field.number != nullptr) return ReadNumber(value, *field.number);
  *field.text = std::string(value);
  return std::nullopt;
}

const NamedField* FindField(const std::vector<NamedField>& fields, std::string_view key) {
  const auto found = std::find_if(fields.begin(), fields.end(), [key](const NamedField& field) {
    return EqualsIgnoringCase(field.key, key);
  });
  return found == fields.end() ? nullptr : &*found;
}

const LineProblem kLacksEqualsSign{DescriptionRemark::kNoEqualsSign, {}};

bool IsFatal(DescriptionRemark remark) {
  return remark != DescriptionRemark::kUnknownSection && remark != DescriptionRemark::kUnknownKey;
}

// Reads one description; one object a file.
class Reader {
 public:
  Reader(const DescriptionGrammar& grammar, const std::vector<DescriptionSection>& sections)
      : grammar(grammar), sections(sections) {}

  std::optional<LineProblem> ReadPiece(std::string_view piece) {
    if (!IsValidUtf8(piece)) return std::nullopt;
    const std::string_view line = Trim(piece);
    if (line.empty() || IsComment(line)) return std::nullopt;
    if (line.front() == '[') return ReadHeader(line);
    const auto section = std::find_if(sections.begin(), sections.end(), [this](const auto& known) {
      return EqualsIgnoringCase(known.name, current);
    });
    if (section != sections.end()) return section->read(line);
    return LineProblem{grammar.unknownSectionFails ? DescriptionRemark::kOutsideSections
                                                   : DescriptionRemark::kUnknownSection,
                       current};
  }

 private:
  [[nodiscard]] bool IsComment(std::string_view line) const {
    return line.front() == ';' || line.substr(0, grammar.comment.size()) == grammar.comment;
  }

  std::optional<LineProblem> ReadHeader(std::string_view line) {
    const size_t end = line.find(']');
    if (end == std::string_view::npos) {
      return LineProblem{DescriptionRemark::kUnclosedHeader, line};
    }
    current = Trim(line.substr(1, end - 1));
    return std::nullopt;
  }

  const DescriptionGrammar& grammar;
  const std::vector<DescriptionSection>& sections;
  std::string_view current;  // the section's name, in the text
};

}  // namespace

void LogUnknown(const DescriptionNote& note) {
  if (!IsFatal(note.remark)) Log("Unknown:" + std::string(note.text));
}

LineReader WholeLine(std::string& field) {
  return [&field](std::string_view line) -> std::optional<LineProblem> {
    field = line;
    return std::nullopt;
  };
}

LineReader Numbers(std::vector<uint32_t>& list) {
  return [&list](std::string_view line) { return AppendNumber(line, list); };
}

LineReader AnyKey(uint32_t& field) {
  return [&field](std::string_view line) -> std::optional<LineProblem> {
    const auto setting = SplitSetting(line);
    return setting ? ReadNumber(setting->value, field) : kLacksEqualsSign;
  };
}

LineReader AnyKeyFlag(bool& field) {
  return [&field](std::string_view line) {
    uint32_t number = 0;
    const auto problem = AnyKey(number)(line);
    if (!problem) field = number != 0;
    return problem;
  };
}

LineReader NamedKeys(std::initializer_list<NamedField> fields) {
  return [known = std::vector(fields)](std::string_view line) -> std::optional<LineProblem> {
    const auto setting = SplitSetting(line);
    if (!setting) return kLacksEqualsSign;
    if (const NamedField* field = FindField(known, setting->key)) {
      return ReadField(*field, setting->value);
    }
    return LineProblem{DescriptionRemark::kUnknownKey, setting->key};
  };
}

LineReader Cycles(std::initializer_list<NamedField> fields, std::vector<uint32_t>& addresses,
                  std::vector<uint32_t>& data) {
  return [known = std::vector(fields), &addresses,
          &data](std::string_view line) -> std::optional<LineProblem> {
    const auto setting = SplitSetting(line);
    if (!setting) return kLacksEqualsSign;
    const auto& [key, value] = *setting;
    if (const NamedField* field = FindField(known, key)) return ReadField(*field, value);
    if (ContainsIgnoringCase(key, "addr")) return AppendNumber(value, addresses);
    if (ContainsIgnoringCase(key, "data")) return AppendNumber(value, data);
    return LineProblem{DescriptionRemark::kUnknownKey, key};
  };
}

bool ReadDescription(std::string_view text, const DescriptionGrammar& grammar,
                     const std::vector<DescriptionSection>& sections,
                     const DescriptionListener& listener) {
  Pieces pieces(text);
  Reader reader(grammar, sections);
  std::string_view piece;
  while (pieces.Next(piece)) {
    const auto problem = reader.ReadPiece(piece);
    if (!problem) continue;
    if (listener) listener({problem->remark, pieces.Line(), problem->text});
    if (IsFatal(problem->remark)) return false;
  }
  return true;
}

}  // namespace hollin
