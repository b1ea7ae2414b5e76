// SPDX-License-Identifier: MIT
// The layout of an update package (".dat"): three header blocks of 128 bytes, the third only with
// two packs, and regions anywhere behind them. Numbers are 32-bit little-endian, offsets count from
// the start of the file, and every block and region is protected by the sum of its bytes.
// docs/package-format.md describes it for people who write packages.
#pragma once

#include <array>
#include <cstdint>

#include "base/bytes.h"

namespace hollin {

namespace package_layout {

inline constexpr size_t kBlockSize = 128;       // of each header block
inline constexpr size_t kBlockSumOffset = 124;  // in each block: the sum of the bytes before it

// In the file header block.
inline constexpr size_t kProductModel = 32;
inline constexpr size_t kFirmwareVersion = 48;
inline constexpr size_t kTextSize = 16;
inline constexpr std::array<size_t, 3> kKeys = {80, 88, 96};
inline constexpr size_t kKeySize = 8;
inline constexpr size_t kPackCount = 123;

// In a pack header block.
inline constexpr size_t kDataType = 44;
inline constexpr size_t kCnfgAddr = 64;
inline constexpr size_t kCnfgLength = 68;
inline constexpr size_t kCnfgSum = 72;
inline constexpr size_t kDataAddr = 112;
inline constexpr size_t kDataLength = 116;
inline constexpr size_t kDataSum = 120;

// Data types: the low 16 bits of the field, two ASCII characters in file order.
inline constexpr uint16_t kTypeA1 = 0x3141;
inline constexpr uint16_t kTypeA2 = 0x3241;
inline constexpr uint16_t kTypeC1 = 0x3143;

}  // namespace package_layout

// One region of a package and the sum that its header states.
struct PackageRegion {
  uint32_t address = 0;
  uint32_t length = 0;
  uint32_t sum = 0;
};

struct PackHeader {
  uint32_t dataType = 0;  // only the low 16 bits select
  PackageRegion config;   // the flash description
  PackageRegion data;     // the image
};

struct PackageHeaders {
  uint8_t packCount = 0;
  std::array<PackHeader, 2> packs;
};

// The first thing that is wrong with a package, in the order of the checks.
enum class PackageDefect {
  kNone,
  kCutShort,   // the file ends inside its header blocks
  kPackCount,  // neither 1 nor 2
  kFileHeaderSum,
  kPackHeaderSum,
  kRegionOutside,  // a region does not lie inside the file
  kConfigSum,
  kDataSum,
};

struct PackageVerdict {
  PackageDefect defect = PackageDefect::kNone;
  size_t pack = 0;        // the pack concerned, 0 or 1
  bool isImage = false;   // the region concerned: the image, else the description
  uint32_t stored = 0;    // the sum in the file, where a sum is wrong
  uint32_t computed = 0;  // the sum of the bytes

  [[nodiscard]] bool IsGood() const { return defect == PackageDefect::kNone; }
};

// The sum of a block or region, modulo 2^32. Deliberate: the length counts as signed, so from 2^31
// on the sum is 0.
[[nodiscard]] uint32_t PackageSum(ByteView bytes);

// Checks a whole package and fills `headers` as far as it got. Reads nothing outside `file`.
[[nodiscard]] PackageVerdict CheckPackage(ByteView file, PackageHeaders& headers);

// The region's bytes. Wants a region that lies inside `file`.
[[nodiscard]] ByteView RegionBytes(ByteView file, uint32_t address, uint32_t length);
[[nodiscard]] bool LiesInside(ByteView file, uint32_t address, uint32_t length);

}  // namespace hollin
