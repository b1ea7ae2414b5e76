// SPDX-License-Identifier: MIT
// Small packages, good and bad, for the window to open.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <string>

#include "package/package_writer.h"
#include "tests/support/hex_bytes.h"

namespace hollin {

struct PackageOptions {
  std::string model = "TS30 61 keys";
  std::string version = "V1.2.3";
  std::array<std::string, 3> keys = {};
  size_t packs = 1;
  size_t imageSize = 128;
};

inline Bytes MakePackage(const PackageOptions& options = {}) {
  const std::string description =
      "[Chip Info]\nChip Size=64K\n[Transmission Info]\nData Length=64\n";
  const Bytes image(options.imageSize, 0x5A);
  const PackContents pack{.dataType = "A1", .description = ViewOf(description), .image = image};
  Bytes file;
  const PackRefusal refusal = WritePackage({.productModel = options.model,
                                            .firmwareVersion = options.version,
                                            .keys = options.keys,
                                            .packs = {options.packs, pack}},
                                           file);
  EXPECT_EQ(refusal, PackRefusal::kNone);
  return file;
}

inline Bytes BrokenPackage() {
  Bytes file = MakePackage({.model = "Other", .version = "V9"});
  file.back() ^= 0x01;
  return file;
}

}  // namespace hollin
