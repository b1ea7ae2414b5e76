// SPDX-License-Identifier: MIT
// The cells of a flash chip: erasing brings every word to the chip's erased value, usually all
// ones, and programming can only move bits away from it. Offsets and lengths are in bytes from the
// start of the chip. The contents can live in a file, so that they outlast the program and can be
// compared with what should be there.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "base/bytes.h"

namespace hollin::simulator {

struct Range {
  uint64_t offset = 0;
  uint64_t length = 0;

  bool operator==(const Range&) const = default;
};

class FlashMemory {
 public:
  // An erased chip of `size` bytes, in memory.
  explicit FlashMemory(uint64_t size, uint16_t erasedWord = 0xFFFF);
  FlashMemory(const FlashMemory&) = delete;
  FlashMemory& operator=(const FlashMemory&) = delete;
  ~FlashMemory();

  // Moves the contents into a file: what a file of the chip's size holds is taken over, a new or
  // empty file receives the present contents. From then on every change is in the file at once.
  // False, with nothing changed, when the file cannot be used or has another size.
  [[nodiscard]] bool KeepIn(const std::string& path);

  [[nodiscard]] ByteView Contents() const { return cells; }
  [[nodiscard]] uint64_t Size() const { return cells.size(); }
  [[nodiscard]] bool Contains(uint64_t offset, uint64_t length) const;

  // The operations want ranges that the chip contains.
  void Erase(uint64_t offset, uint64_t length);
  // What an erase does first: a chip that loses its power in the middle of one holds the opposite
  // of erased there, usually zeros.
  void ClearBeforeErase(uint64_t offset, uint64_t length);
  // False when a programmed bit would have to be erased again; the other bits are programmed all
  // the same.
  bool Program(uint64_t offset, ByteView bytes);

  std::vector<Range> erased;      // every finished erase, in order
  std::vector<Range> programmed;  // every programming, in order

 private:
  void Fill(uint64_t offset, uint64_t length, uint16_t word);

  uint16_t erasedWord;
  std::vector<uint8_t> inMemory;
  void* mapping = nullptr;  // of the file; null while the contents are in memory
  std::span<uint8_t> cells;
};

}  // namespace hollin::simulator
