// SPDX-License-Identifier: MIT
// Small packages with one thing wrong each: for every reason to refuse a package, and for every
// finding. Each is made from a sound one, so that the change is all there is to see.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "base/bytes.h"

namespace hollin {

struct PackageRecipe {
  std::string code;  // of the refusal or finding that it is for; "sound-..." for none
  Bytes package;
  std::string variant{};  // where there are several of a code

  [[nodiscard]] std::string Name() const { return variant.empty() ? code : code + "-" + variant; }
};

// The sound packages first, then those that are refused, then those with findings.
std::vector<PackageRecipe> SoundPackages();
std::vector<PackageRecipe> RefusedPackages();
std::vector<PackageRecipe> PackagesWithFindings();

}  // namespace hollin
