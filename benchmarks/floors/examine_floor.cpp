// SPDX-License-Identifier: MIT
// The passes that opening a package cannot do without, one each: read the file, sum its bytes,
// write the temporary files, read the image back, sum its words.
//
//   hollin_examine_floor PACKAGE DESCRIPTION-LENGTH
//
// The description's bytes stand behind the headers, the image behind the description.
#include <cstdio>

#include "benchmarks/floors/bare_passes.h"

namespace {

constexpr const char* kDescription = "/tmp/floor.ini";
constexpr const char* kImage = "/tmp/floor.bin";
constexpr size_t kHeaders = 256;  // of a package with one pack

}  // namespace

int main(int argc, char** argv) {
  using namespace hollin::floors;
  if (argc != 3) return 2;
  size_t size = 0;
  const auto file = Read(argv[1], size);
  const uint32_t sum = SumOfBytes(file.get(), size);
  const size_t description = std::strtoul(argv[2], nullptr, 10);
  Write(kDescription, file.get() + kHeaders, description);
  Write(kImage, file.get() + kHeaders + description, size - kHeaders - description);
  const auto image = Read(kImage, size);
  const uint32_t words = SumOfWords(image.get(), size);
  unlink(kDescription);
  unlink(kImage);
  std::printf("%u %u\n", sum, words);
  return 0;
}
