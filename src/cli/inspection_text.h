// SPDX-License-Identifier: MIT
// What an inspection found, as lines for people.
#pragma once

#include <string>
#include <vector>

#include "package/package_inspection.h"

namespace hollin {

// Lines hold bytes of the package, not escaped.
[[nodiscard]] std::vector<std::string> InspectionText(const std::string& path,
                                                      const PackageInspection& inspection);

[[nodiscard]] std::vector<std::string> FindingsText(const FindingList& findings);

}  // namespace hollin
