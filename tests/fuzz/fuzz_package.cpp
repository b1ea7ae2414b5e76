// SPDX-License-Identifier: MIT
// The check of a package, held against a second one that was written from docs/package-format.md.
#include "package/package_layout.h"
#include "tests/fuzz/fuzz_targets.h"
#include "tests/fuzz/mended_package.h"

namespace hollin::fuzz {
namespace {

uint64_t At(ByteView file, size_t offset) {
  return file[offset] + 256ULL * file[offset + 1] + 65536ULL * file[offset + 2] +
         16777216ULL * file[offset + 3];
}

uint64_t Sum(ByteView file, uint64_t begin, uint64_t length) {
  uint64_t sum = 0;
  for (uint64_t i = begin; i < begin + length; i++) sum += file[i];
  return sum % 4294967296ULL;
}

bool IsBlockGood(ByteView file, size_t block) {
  const size_t begin = block * 128;
  return file.size() >= begin + 128 && Sum(file, begin, 124) == At(file, begin + 124);
}

// Offset, length and sum stand one behind the other.
bool IsRegionGood(ByteView file, size_t field) {
  const uint64_t begin = At(file, field);
  const uint64_t length = At(file, field + 4);
  return begin + length <= file.size() && Sum(file, begin, length) == At(file, field + 8);
}

bool IsPackageGood(ByteView file) {
  if (file.size() < 128 || file[123] < 1 || file[123] > 2) return false;
  const size_t packs = file[123];
  for (size_t block = 0; block <= packs; block++) {
    if (!IsBlockGood(file, block)) return false;
  }
  for (size_t block = 1; block <= packs; block++) {
    if (!IsRegionGood(file, block * 128 + 64) || !IsRegionGood(file, block * 128 + 112)) {
      return false;
    }
  }
  return true;
}

void Compare(ByteView file) {
  PackageHeaders headers;
  const PackageVerdict verdict = CheckPackage(file, headers);
  Require(verdict.IsGood() == IsPackageGood(file), "both checks agree");
  if (!verdict.IsGood()) return;
  for (size_t i = 0; i < headers.packCount; i++) {
    const PackHeader& pack = headers.packs[i];
    Require(pack.data.address == At(file, 128 * (i + 1) + 112), "the image's place");
    Require(LiesInside(file, pack.data.address, pack.data.length), "the image is inside");
    Require(LiesInside(file, pack.config.address, pack.config.length), "the text is inside");
  }
}

}  // namespace

void Package(ByteView input) {
  Compare(input);
  Compare(MendedPackage(input));
}

}  // namespace hollin::fuzz
