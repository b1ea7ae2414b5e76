// SPDX-License-Identifier: MIT
// Words for why a package is refused: a code that stays the same for scripts, and what is wrong as
// precisely as it can be known. docs/findings.md lists the codes.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "package/package_inspection.h"

namespace hollin::words {

struct Refusal {
  std::string_view code;  // "image-sum"
  std::string message;    // holds bytes of the package, not escaped
  std::string hint{};  // what the file may be instead, or what to do; empty where nothing is known
};

// Of a package that is not valid.
[[nodiscard]] Refusal OfInvalid(const PackageInspection& inspection);

// Every code that OfInvalid may answer.
[[nodiscard]] std::vector<std::string_view> AllRefusalCodes();

}  // namespace hollin::words
