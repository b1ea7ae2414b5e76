// SPDX-License-Identifier: MIT
// Hands out a description piece by piece: each ends behind its line end or, in a longer line, after
// 99 bytes. Keeps a reference to the text. docs/flash-descriptions.md has the rules.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string_view>

#include "base/text.h"

namespace hollin {

class DescriptionPieces {
 public:
  explicit DescriptionPieces(std::string_view text)
      : next(text.data()), end(next + text.size()), lineStart(next) {}

  // Goes to the next piece that is not empty; false at the end of the text.
  bool Next() {
    SkipEmptyLines();
    if (next == end) return false;
    if (endsLine) {
      line++;
      lineStart = next;
    }
    start = next;
    Scan();
    return true;
  }

  // The piece without its line end.
  [[nodiscard]] std::string_view Piece() const { return Between(start, stop); }
  // The end of the piece from a place in it on, with the line end.
  [[nodiscard]] std::string_view From(const char* place) const { return Between(place, next); }
  // Whether it is a whole line of ASCII without NUL, as nearly all are.
  [[nodiscard]] bool IsPlain() const { return endsLine && !isOdd; }
  // Whether more of this line follows than the line end that stays behind 99 bytes.
  [[nodiscard]] bool IsCut() const {
    if (endsLine || next == end || *next == '\n') return false;
    return *next != '\r' || next + 1 == end || next[1] != '\n';
  }
  [[nodiscard]] size_t Line() const { return line; }  // of the text, from 1
  // What stands in this line before a text that may be in it; else before another, which is.
  [[nodiscard]] std::string_view Before(std::string_view text, std::string_view otherwise) const {
    const std::less_equal<> isUpTo;
    const bool isInside = isUpTo(lineStart, text.data()) && isUpTo(text.data(), next);
    return Between(lineStart, isInside ? text.data() : otherwise.data());
  }

 private:
  static constexpr ptrdiff_t kSize = 99;

  void SkipEmptyLines() {
    for (; next != end && *next == '\n'; next++) {
      if (endsLine) line++;
      endsLine = true;
    }
  }

  // Most lines are short: one look at each byte costs less than several searches. NUL and what is
  // not ASCII are negative or 0 as signed numbers.
  void Scan() {
    const char* const limit = start + std::min(end - start, kSize);
    const char* at = start;
    bool anyIsOdd = false;
    for (; at != limit && *at != '\n'; at++) anyIsOdd |= static_cast<int8_t>(*at) <= 0;
    isOdd = anyIsOdd;
    endsLine = at != limit;
    next = endsLine ? at + 1 : at;
    stop = at;
  }

  const char* next;             // behind the piece
  const char* const end;        // of the text
  const char* lineStart;        // of the line that the piece is in
  const char* start = nullptr;  // of the piece
  const char* stop = nullptr;   // behind it, before its line end
  bool endsLine = true;
  bool isOdd = false;
  size_t line = 0;
};

}  // namespace hollin
