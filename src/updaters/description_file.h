// SPDX-License-Identifier: MIT
// The reader of all flash descriptions: the line grammar stands here once, and each kind of flash
// brings a table from section names to ways of reading a line. docs/flash-descriptions.md holds the
// syntax.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace hollin {

// What a reader noticed in a description.
enum class DescriptionRemark {
  kUnknownSection,   // a line in a section of no known name: ignored (`text` is the section)
  kUnknownKey,       // a key that its section does not know: ignored (`text` is the key)
  kUnclosedHeader,   // "[" without "]": fails
  kOutsideSections,  // a line in no known section where that is not allowed: fails (`text` is the
                     // section)
  kNoEqualsSign,     // a line without "=" where one is needed: fails
  kBadNumber,        // a value that is no number: fails (`text` is the value)
  kHeader,           // a section began (`text` is its name)
  kHeaderTail,       // something follows the "]" of a header: ignored (`text` is that)
  kSetting,          // a number was taken for a setting (`text` is the value)
  kEntry,            // a number was taken for a list (`text` is the value)
  kText,             // a text was taken for a setting (`text` is the value)
  kLongLine,         // a line is longer than a piece: its rest is read as a line of its own
  kNotUtf8,          // a piece is not UTF-8: ignored
  kNul,              // a NUL byte hides the rest of its piece (`text` is the rest)
};

// Whether a remark is the end of the reading.
[[nodiscard]] bool IsFatal(DescriptionRemark remark);

struct DescriptionNote {
  DescriptionRemark remark = DescriptionRemark::kUnknownSection;
  size_t line = 0;              // physical line of the file, from 1
  std::string_view text{};      // valid during the call only, like the next
  std::string_view lineText{};  // the trimmed line
  std::string_view before{};    // what stands in the physical line before `text`, where that is in
                                // it, or before the trimmed line
  const void* field = nullptr;  // what a value was taken for: the same for the same setting or list

  // Of `text` or the trimmed line, in characters from 1. Takes time with the length of the line.
  [[nodiscard]] size_t Column() const;
};

using DescriptionListener = std::function<void(const DescriptionNote&)>;

// The listener of an update: writes "Unknown:%@" to the system log for each unknown section or key.
void LogUnknown(const DescriptionNote& note);

// Ways of reading the lines of a section. Each keeps references to the fields it fills, and the
// last of several lines for a field wins.
struct WholeLine {  // the line itself, as text
  std::string& field;
};
struct Numbers {  // one number a line, appended
  std::vector<uint32_t>& list;
};
struct AnyKey {  // any key "=" number
  uint32_t& field;
};
struct AnyKeyFlag {  // the same; true for a number other than 0
  bool& field;
};
struct NamedField {  // a key and the field that its value goes into
  NamedField(std::string_view key, uint32_t& field) : key(key), number(&field) {}
  NamedField(std::string_view key, std::optional<std::string>& field) : key(key), text(&field) {}

  std::string_view key;  // a literal; compared without regard to case
  uint32_t* number = nullptr;
  std::optional<std::string>* text = nullptr;
};
struct NamedKeys {  // the known keys' numbers and texts; other keys are noted
  std::vector<NamedField> fields;
};
// As NamedKeys; other keys that contain "addr" go to `addresses`, those that contain "data" to
// `data`. The address test comes first, and numbers in the keys say nothing: the order of the lines
// counts.
struct Cycles {
  std::vector<NamedField> fields;
  std::vector<uint32_t>& addresses;
  std::vector<uint32_t>& data;
};
using LineReader = std::variant<WholeLine, Numbers, AnyKey, AnyKeyFlag, NamedKeys, Cycles>;

// Makes room in `list` for a number from every line of a text. A list that had to grow while it is
// read would be copied again and again; room that is not used takes no memory.
void MakeRoom(std::vector<uint32_t>& list, std::string_view text);

struct DescriptionSection {
  std::string_view name;  // a literal; compared without regard to case
  LineReader read;
};

// In what the grammars of the flash kinds differ.
struct DescriptionGrammar {
  std::string_view comment;          // marks a comment line, beside ";"
  bool unknownSectionFails = false;  // else such a line is noted and ignored
};

// Reads a description from memory. The text is taken in pieces of at most 99 bytes, as the keyboard
// maker's tools always did: a longer line counts as several. A piece that is not UTF-8 counts as
// empty and a NUL ends its piece. False at the first line that fails; fields read so far keep their
// values. `listener` may be empty.
[[nodiscard]] bool ReadDescription(std::string_view text, const DescriptionGrammar& grammar,
                                   const std::vector<DescriptionSection>& sections,
                                   const DescriptionListener& listener);

}  // namespace hollin
