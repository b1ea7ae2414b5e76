// SPDX-License-Identifier: MIT
// What a file that is no package may be instead, from its first bytes: downloads go wrong in a few
// well-known ways.
#pragma once

#include "base/bytes.h"

namespace hollin {

enum class FileKind {
  kUnknown,
  kWebPage,
  kZip,
  kGzip,
  kSevenZip,
  kRar,
  kPdf,
  kProgram,
  kPicture,
  kText,
  kZeros,  // nothing but zero bytes
};

[[nodiscard]] FileKind GuessFileKind(ByteView file);

}  // namespace hollin
