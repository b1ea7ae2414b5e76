// SPDX-License-Identifier: MIT
// Packages that are found out at every point of an examination, after a good one of one pack or
// two.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "tests/package/literal_packages.h"

namespace hollin {

struct PackageFault {
  const char* name;
  size_t pack;  // 0: of the file, 1 and 2: of that pack
  std::function<void(Bytes& package)> spoil;
};

inline PackageFault WrongSum(const char* name, size_t pack, size_t offset) {
  return {name, pack, [offset](Bytes& package) {
            package[offset]++;
            if (offset % 128 != 124) RepairHeaderSum(package, offset / 128);
          }};
}

inline PackageFault UnknownType(size_t pack) {
  return {"type", pack, [pack](Bytes& package) {
            PatchText(package, 128 * pack + 44, "ZZ");
            RepairHeaderSum(package, pack);
          }};
}

// The packages begin with the packs' shared description in the file header.
inline PackageFault NotLoading() {
  return {"description", 0, [](Bytes& package) {
            PatchText(package, 1, "X");
            RepairHeaderSum(package, 0);
            for (size_t pack = 1; pack <= package[123]; pack++) {
              PatchU32(package, 128 * pack + 72, 0x07EA + 'X' - 'C');
              RepairHeaderSum(package, pack);
            }
          }};
}

// An image that none can be loaded from.
inline PackageFault EmptyImage(size_t pack) {
  return {"image", pack, [pack](Bytes& package) {
            PatchU32(package, 128 * pack + 116, 0);
            PatchU32(package, 128 * pack + 120, 0);
            RepairHeaderSum(package, pack);
          }};
}

inline const PackageFault kPackageFaults[] = {
    {"missing", 0, [](Bytes& package) { package.clear(); }},
    {"cut", 0, [](Bytes& package) { package.pop_back(); }},
    {"count", 0,
     [](Bytes& package) {
       package[123] = 3;
       RepairHeaderSum(package, 0);
     }},
    WrongSum("headerSum", 0, 124),
    WrongSum("headerSum", 1, 252),
    WrongSum("cnfgSum", 1, 200),
    WrongSum("dataSum", 1, 248),
    UnknownType(1),
    NotLoading(),
    EmptyImage(1),
    WrongSum("headerSum", 2, 380),
    WrongSum("cnfgSum", 2, 328),
    WrongSum("dataSum", 2, 376),
    UnknownType(2),
    EmptyImage(2),
};

struct BadPackage {
  size_t packsBefore;
  size_t packs;
  PackageFault fault;

  [[nodiscard]] Bytes Before() const {
    return packsBefore == 1 ? OnePackPackage() : TwoPackPackage();
  }
  [[nodiscard]] Bytes After() const {
    Bytes package = packs == 1 ? SmallestOnePackPackage() : SmallestTwoPackPackage();
    fault.spoil(package);
    return package;
  }
};

inline void PrintTo(const BadPackage& package, std::ostream* out) { *out << package.fault.name; }

// A package of one pack has no second one to be wrong.
inline std::vector<BadPackage> BadPackages() {
  std::vector<BadPackage> packages;
  for (const size_t before : {1U, 2U}) {
    for (const size_t after : {1U, 2U}) {
      for (const PackageFault& fault : kPackageFaults) {
        if (fault.pack <= after) packages.push_back({before, after, fault});
      }
    }
  }
  return packages;
}

inline std::string NameOfBadPackage(const ::testing::TestParamInfo<BadPackage>& info) {
  const auto& [before, packs, fault] = info.param;
  return fault.name + std::to_string(fault.pack) + "_" + std::to_string(before) + "to" +
         std::to_string(packs);
}

}  // namespace hollin
