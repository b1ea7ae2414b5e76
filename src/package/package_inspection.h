// SPDX-License-Identifier: MIT
// Everything that can be known about a package from its bytes alone: what is inside, why it is
// refused, and what it will do that its author will not have meant. Touches no file and no
// keyboard. Whether a package is valid is decided by the same functions as in an examination.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "base/bytes.h"
#include "package/description_findings.h"
#include "package/file_kind.h"
#include "package/finding.h"
#include "package/package_layout.h"
#include "package/update_effort.h"
#include "package/updater_loader.h"

namespace hollin {

struct PackageInspection {
  uint64_t fileLength = 0;
  bool isValid = false;
  PackageVerdict verdict;              // of the headers and sums
  LoadVerdict load;                    // of the packs, where the verdict is good
  FileKind kind = FileKind::kUnknown;  // what a file is whose headers are wrong
  uint64_t missingBytes = 0;  // at least so many are missing at the end, as the headers say

  // As far as the headers could be read; texts are UTF-8.
  PackageHeaders headers;
  std::string productModel, firmwareVersion;
  std::array<std::string, 3> keys;

  // As far as the packs were loaded. Not to be run.
  Updaters updaters;
  std::array<std::optional<FailedLine>, 2> failedLines;  // of the descriptions
  uint32_t totalSteps = 0;                               // this and the next: 0 unless valid
  UpdateEffort effort;

  FindingList findings;

  // The number of packs whose headers are known and have the right sums.
  [[nodiscard]] size_t KnownPacks() const;
};

// An empty file is refused like any other that is cut short.
[[nodiscard]] PackageInspection InspectPackage(ByteView file);

}  // namespace hollin
