// SPDX-License-Identifier: MIT
// Regular files, read whole. Paths are UTF-8 as the user gave them; nothing here throws, and a
// failed allocation is a failed read.
#pragma once

#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <string_view>

#include "base/bytes.h"

namespace hollin {

// The contents of a file. Owns its bytes; `bytes` is null until something was read.
struct FileContents {
  std::unique_ptr<uint8_t[]> bytes;
  size_t size = 0;

  [[nodiscard]] ByteView View() const { return {bytes.get(), size}; }
  [[nodiscard]] std::string_view Text() const {
    return {reinterpret_cast<const char*>(bytes.get()), size};
  }
};

// Reads a whole file. Only regular files are read (links to one are followed): a FIFO would block
// for ever and a folder claims absurd lengths. A file that shrinks meanwhile leaves zeros at the
// end, never old memory. False, with `contents` empty, when it cannot be opened or read, is
// something else, or is larger than `maxSize`.
[[nodiscard]] bool ReadWholeFile(const std::string& path, FileContents& contents,
                                 uint64_t maxSize = std::numeric_limits<int64_t>::max());

}  // namespace hollin
