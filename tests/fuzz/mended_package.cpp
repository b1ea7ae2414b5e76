// SPDX-License-Identifier: MIT
#include "tests/fuzz/mended_package.h"

#include <algorithm>

namespace hollin::fuzz {
namespace {

void MendSum(Bytes& file, size_t begin, size_t length, size_t field) {
  PutU32(file, field, SumBytes(ByteView(file).subspan(begin, length)));
}

void MendRegion(Bytes& file, size_t field) {
  const uint64_t begin = ReadU32(file, field);
  const uint64_t length = ReadU32(file, field + 4);
  if (begin + length <= file.size()) MendSum(file, begin, length, field + 8);
}

}  // namespace

Bytes MendedPackage(ByteView input) {
  Bytes file(input.begin(), input.end());
  if (file.size() < 256) return file;
  file[123] = static_cast<uint8_t>(file.size() < 384 ? 1 : std::clamp<int>(file[123], 1, 2));
  for (size_t block = file[123]; block > 0; block--) {
    MendRegion(file, block * 128 + 64);
    MendRegion(file, block * 128 + 112);
    MendSum(file, block * 128, 124, block * 128 + 124);
  }
  MendSum(file, 0, 124, 124);
  return file;
}

}  // namespace hollin::fuzz
