// SPDX-License-Identifier: MIT
// What an inspection found, as JSON. docs/schemas/inspect.json is its schema.
#pragma once

#include <string>

#include "cli/json.h"
#include "package/package_inspection.h"

namespace hollin {

[[nodiscard]] Json InspectionJson(const std::string& path, const PackageInspection& inspection);

[[nodiscard]] Json FindingsJson(const FindingList& findings);

// "A1": the two characters of a data type.
[[nodiscard]] std::string NameOfDataType(uint32_t dataType);

}  // namespace hollin
