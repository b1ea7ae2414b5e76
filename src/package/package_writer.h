// SPDX-License-Identifier: MIT
// Builds update packages. The same contents always give the same bytes. docs/package-format.md
// describes the file.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "base/bytes.h"

namespace hollin {

struct PackContents {
  std::string dataType;  // two characters: "A1", "A2" or "C1"
  ByteView description;  // both must outlive the call
  ByteView image;
};

struct PackageContents {
  std::string productModel;         // up to 16 bytes
  std::string firmwareVersion;      // up to 16 bytes
  std::array<std::string, 3> keys;  // up to 8 bytes each; empty where no button is needed
  std::vector<PackContents> packs;  // one or two
};

// What cannot be represented in a package.
enum class PackRefusal {
  kNone,
  kModelTooLong,
  kVersionTooLong,
  kKeyTooLong,
  kPackCount,
  kDataType,
  kTooLarge,  // a region would begin or end beyond what 32 bits address, or be 2^31 bytes or longer
};

// Fills `file` with the package; leaves it empty when that is refused.
[[nodiscard]] PackRefusal WritePackage(const PackageContents& contents, Bytes& file);

}  // namespace hollin
