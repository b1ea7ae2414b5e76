// SPDX-License-Identifier: MIT
#include "simulator/flash_memory.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

namespace hollin::simulator {
namespace {

// The file's bytes, shared with every other reader of it; null when it is not a regular file of
// this size. A new or empty file is made so, and told by `isNew`.
void* MapFile(const std::string& path, size_t size, bool& isNew) {
  const int file = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NONBLOCK, 0644);
  if (file < 0) return nullptr;
  struct stat status {};
  bool usable = fstat(file, &status) == 0 && S_ISREG(status.st_mode);
  isNew = status.st_size == 0;
  if (usable && isNew) usable = ftruncate(file, static_cast<off_t>(size)) == 0;
  if (usable && !isNew) usable = static_cast<uint64_t>(status.st_size) == size;
  void* mapping = MAP_FAILED;
  if (usable) mapping = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
  close(file);
  return mapping == MAP_FAILED ? nullptr : mapping;
}

// The byte of a little-endian word that lies at this offset.
uint8_t ByteOf(uint16_t word, uint64_t offset) {
  return static_cast<uint8_t>(offset % 2 == 0 ? word : word >> 8);
}

}  // namespace

FlashMemory::FlashMemory(uint64_t size, uint16_t erasedWord)
    : erasedWord(erasedWord), inMemory(size), cells(inMemory) {
  Fill(0, size, erasedWord);
}

FlashMemory::~FlashMemory() {
  if (mapping != nullptr) munmap(mapping, cells.size());
}

bool FlashMemory::KeepIn(const std::string& path) {
  bool isNew = false;
  void* file = MapFile(path, cells.size(), isNew);
  if (file == nullptr) return false;
  const std::span<uint8_t> fileCells(static_cast<uint8_t*>(file), cells.size());
  if (isNew) std::ranges::copy(cells, fileCells.begin());
  if (mapping != nullptr) munmap(mapping, cells.size());
  mapping = file;
  cells = fileCells;
  inMemory = {};
  return true;
}

bool FlashMemory::Contains(uint64_t offset, uint64_t length) const {
  return offset <= Size() && length <= Size() - offset;
}

void FlashMemory::Erase(uint64_t offset, uint64_t length) {
  Fill(offset, length, erasedWord);
  erased.push_back({offset, length});
}

void FlashMemory::ClearBeforeErase(uint64_t offset, uint64_t length) {
  Fill(offset, length, static_cast<uint16_t>(~erasedWord));
}

void FlashMemory::Fill(uint64_t offset, uint64_t length, uint16_t word) {
  const std::span<uint8_t> range = cells.subspan(offset, length);
  if (ByteOf(word, 0) == ByteOf(word, 1)) {  // nearly always, and much quicker
    std::ranges::fill(range, ByteOf(word, 0));
    return;
  }
  for (uint64_t i = 0; i < length; i++) range[i] = ByteOf(word, offset + i);
}

bool FlashMemory::Program(uint64_t offset, ByteView bytes) {
  programmed.push_back({offset, bytes.size()});
  bool asWanted = true;
  for (uint8_t byte : bytes) {
    // Bits that still are as erased take the new ones; the others stay.
    const auto programmable = static_cast<uint8_t>(~(cells[offset] ^ ByteOf(erasedWord, offset)));
    cells[offset] = static_cast<uint8_t>((byte & programmable) | (cells[offset] & ~programmable));
    asWanted = asWanted && cells[offset] == byte;
    offset++;
  }
  return asWanted;
}

}  // namespace hollin::simulator
