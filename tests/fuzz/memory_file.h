// SPDX-License-Identifier: MIT
// A file that exists in memory alone, for what can only read files.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

#include "base/bytes.h"

namespace hollin::fuzz {

class MemoryFile {
 public:
  explicit MemoryFile(ByteView contents) : descriptor(memfd_create("fuzz", 0)) {
    const auto size = static_cast<ssize_t>(contents.size());
    if (descriptor < 0 || write(descriptor, contents.data(), contents.size()) != size) {
      std::abort();
    }
  }
  ~MemoryFile() { close(descriptor); }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  [[nodiscard]] std::string Path() const { return "/proc/self/fd/" + std::to_string(descriptor); }

 private:
  int descriptor;
};

}  // namespace hollin::fuzz
