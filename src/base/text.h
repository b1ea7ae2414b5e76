// SPDX-License-Identifier: MIT
// Text is UTF-8 in std::string. What comes from a package or a file may be anything: these
// functions bear it.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace hollin {

// The text from `begin` up to `end`, which are places in one text.
[[nodiscard]] inline std::string_view Between(const char* begin, const char* end) {
  return {begin, static_cast<size_t>(end - begin)};
}

[[nodiscard]] bool IsValidUtf8(std::string_view text);

// The text without the white space and line ends at both ends: U+0009 to U+000D, U+0085 and
// Unicode's separators. Wants valid UTF-8. The answer points into `text`.
[[nodiscard]] std::string_view TrimBlanks(std::string_view text);
[[nodiscard]] inline std::string_view Trim(std::string_view text) {
  // Nearly every text begins and ends with printable ASCII, which is told at once.
  const auto isInk = [](char c) { return c > ' ' && c <= '~'; };
  if (text.empty() || (isInk(text.front()) && isInk(text.back()))) return text;
  return TrimBlanks(text);
}

// Letters compare without regard to case in ASCII only: no other letter is folded onto one of a
// keyword.
[[nodiscard]] bool HasSameLetters(std::string_view a, std::string_view b);  // of the same length
[[nodiscard]] inline bool EqualsIgnoringCase(std::string_view a, std::string_view b) {
  return a.size() == b.size() && HasSameLetters(a, b);
}
[[nodiscard]] bool ContainsIgnoringCase(std::string_view text, std::string_view word);

// The text for a log line or a terminal: one line without control characters (they become \xNN);
// what is not UTF-8 becomes U+FFFD.
[[nodiscard]] std::string EscapeControlCharacters(std::string_view text);

// The text of a NUL-padded field, up to its first NUL; what is not UTF-8 becomes U+FFFD.
[[nodiscard]] std::string TextOfField(std::string_view field);

}  // namespace hollin
