// SPDX-License-Identifier: MIT
// Writes a sample image: bytes without meaning, always the same for the same seed and size.
//
//   ts30-sample-image SEED SIZE FILE
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>

namespace {

// A linear congruential generator: every byte value occurs, and a block that lands in the wrong
// place shows.
class Noise {
 public:
  explicit Noise(uint32_t seed) : state(seed) {}
  char Next() {
    state = state * 1664525 + 1013904223;  // modulo 2^32
    return static_cast<char>(state >> 24);
  }

 private:
  uint32_t state;
};

}  // namespace

int main(int argc, char* argv[]) {
  if (argc != 4) {
    std::fprintf(stderr, "usage: ts30-sample-image SEED SIZE FILE\n");
    return 2;
  }
  Noise noise(static_cast<uint32_t>(std::strtoul(argv[1], nullptr, 10)));
  std::ofstream file(argv[3], std::ios::binary | std::ios::trunc);
  for (unsigned long left = std::strtoul(argv[2], nullptr, 10); left > 0; left--) {
    file.put(noise.Next());
  }
  file.close();
  if (!file) std::fprintf(stderr, "ts30-sample-image: cannot write %s\n", argv[3]);
  return file ? 0 : 1;
}
