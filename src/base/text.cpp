// SPDX-License-Identifier: MIT
#include "base/text.h"

#include <fmt/format.h>
#include <utf8.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iterator>

namespace hollin {
namespace {

bool IsBlank(char32_t c) {
  return (c >= 0x09 && c <= 0x0D) || c == 0x20 || c == 0x85 || c == 0xA0 || c == 0x1680 ||
         (c >= 0x2000 && c <= 0x200A) || c == 0x2028 || c == 0x2029 || c == 0x202F || c == 0x205F ||
         c == 0x3000;
}

bool IsAsciiBlank(char c) { return (c >= 0x09 && c <= 0x0D) || c == 0x20; }

std::string_view TrimDecoded(const char* begin, const char* end) {
  for (const char* next = begin; begin != end && IsBlank(utf8::unchecked::next(next));) {
    begin = next;
  }
  for (const char* previous = end; begin != end && IsBlank(utf8::unchecked::prior(previous));) {
    end = previous;
  }
  return Between(begin, end);
}

// C0, DEL, C1 and the two separators that a terminal or a log reader may take for a line end.
bool IsControl(char32_t c) {
  return c < 0x20 || (c >= 0x7F && c <= 0x9F) || c == 0x2028 || c == 0x2029;
}

char LowerAscii(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; }

bool SameLetter(char a, char b) { return LowerAscii(a) == LowerAscii(b); }

// Whether all of a text is printable ASCII, which nothing needs to be done to.
bool IsPlain(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return c >= 0x20 && c < 0x7F; });
}

// Eight bytes at a time.
bool IsAscii(std::string_view text) {
  constexpr uint64_t kHighBits = 0x8080808080808080;
  uint64_t bits = 0;
  for (; text.size() >= sizeof(bits); text.remove_prefix(sizeof(bits))) {
    uint64_t word = 0;
    std::memcpy(&word, text.data(), sizeof(word));
    bits |= word;
  }
  for (const char c : text) bits |= static_cast<uint8_t>(c);
  return (bits & kHighBits) == 0;
}

std::string ReplaceInvalidUtf8(std::string_view text) {
  std::string valid;
  utf8::replace_invalid(text.begin(), text.end(), std::back_inserter(valid));
  return valid;
}

}  // namespace

// Nearly every text is ASCII, which is told faster.
bool IsValidUtf8(std::string_view text) {
  return IsAscii(text) || utf8::is_valid(text.begin(), text.end());
}

std::string_view TrimBlanks(std::string_view text) {
  const char* begin = text.data();
  const char* end = begin + text.size();
  while (begin != end && IsAsciiBlank(*begin)) begin++;
  while (begin != end && IsAsciiBlank(end[-1])) end--;
  const bool isDone =
      begin == end || (static_cast<uint8_t>(*begin) < 0x80 && static_cast<uint8_t>(end[-1]) < 0x80);
  return isDone ? Between(begin, end) : TrimDecoded(begin, end);
}

bool HasSameLetters(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), SameLetter);
}

bool ContainsIgnoringCase(std::string_view text, std::string_view word) {
  return std::search(text.begin(), text.end(), word.begin(), word.end(), SameLetter) != text.end();
}

std::string EscapeControlCharacters(std::string_view text) {
  if (IsPlain(text)) return std::string(text);
  const std::string valid = ReplaceInvalidUtf8(text);
  std::string escaped;
  for (const char* at = valid.data(); at != valid.data() + valid.size();) {
    const char* const start = at;
    const char32_t c = utf8::unchecked::next(at);
    if (IsControl(c)) {
      escaped += fmt::format("\\x{:02X}", static_cast<uint32_t>(c));
    } else {
      escaped.append(start, at);
    }
  }
  return escaped;
}

std::string TextOfField(std::string_view field) {
  return ReplaceInvalidUtf8(field.substr(0, field.find('\0')));
}

}  // namespace hollin
