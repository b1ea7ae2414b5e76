// SPDX-License-Identifier: MIT
// What no examination of a package can do without, as plain as can be: files read and written
// whole, bytes and words summed. Large files are read into pages of 2 MiB, as the program reads
// them: what the system's small pages cost is no merit of either. Ends the program where the system
// refuses.
#pragma once

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace hollin::floors {

inline void AskForLargePages(void* begin, size_t size) {
  const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
  if (size < 0x400000 || std::align(page, page, begin, size) == nullptr) return;
  madvise(begin, size, MADV_HUGEPAGE);
}

inline std::unique_ptr<uint8_t[]> Read(const char* path, size_t& size) {
  const int file = open(path, O_RDONLY | O_CLOEXEC);
  struct stat status = {};
  if (fstat(file, &status) != 0) std::abort();
  size = static_cast<size_t>(status.st_size);
  std::unique_ptr<uint8_t[]> bytes(new uint8_t[size]);
  AskForLargePages(bytes.get(), size);
  if (read(file, bytes.get(), size) != status.st_size) std::abort();
  close(file);
  return bytes;
}

inline void Write(const char* path, const uint8_t* bytes, size_t size) {
  const int file = open(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
  if (write(file, bytes, size) != static_cast<ssize_t>(size)) std::abort();
  close(file);
}

inline uint32_t SumOfBytes(const uint8_t* bytes, size_t size) {
  uint32_t sum = 0;
  for (size_t i = 0; i < size; i++) sum += bytes[i];
  return sum;
}

inline uint32_t SumOfWords(const uint8_t* bytes, size_t size) {
  uint32_t sum = 0;
  for (size_t i = 0; i + 1 < size; i += 2) {
    uint16_t word = 0;
    std::memcpy(&word, &bytes[i], sizeof word);
    sum += word;
  }
  return sum;
}

}  // namespace hollin::floors
