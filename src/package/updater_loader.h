// SPDX-License-Identifier: MIT
// Makes the updaters of a package and has each load its description and image. The one place that
// decides whether the packs of a package can be used: an examination takes the files from the disk,
// an inspection from memory, and both get the same verdict.
#pragma once

#include <array>
#include <memory>
#include <string>

#include "base/bytes.h"
#include "device/ax_update.h"
#include "package/package_layout.h"
#include "updaters/description_file.h"

namespace hollin {

// Where the updater of one pack finds its files, and who is told what it notices.
struct PackSetup {
  std::string cnfgPath, dataPath;
  DescriptionListener listener = LogUnknown;
};

struct LoadSetup {
  std::array<PackSetup, 2> packs;
  UpdateObserver* observer = nullptr;  // lent by the caller
  FileReader readFile{};               // empty: the disk
};

enum class LoadDefect {
  kNone,
  kDataType,      // none that is known
  kRefused,       // by the updater; `refusal` says why
  kExchanged,     // what was read is not what the package holds
  kTooManySteps,  // of all packs together
};

struct LoadVerdict {
  LoadDefect defect = LoadDefect::kNone;
  size_t pack = 0;  // the pack concerned, 0 or 1
  LoadRefusal refusal = LoadRefusal::kNone;

  [[nodiscard]] bool IsGood() const { return defect == LoadDefect::kNone; }
};

// One for each pack, null behind the last.
using Updaters = std::array<std::unique_ptr<AXUpdate>, 2>;

// Loads the packs of a package whose headers and sums are right. Ends at the first defect; then
// `updaters` holds what was made until there, and nothing of it must be run.
[[nodiscard]] LoadVerdict LoadUpdaters(ByteView file, const PackageHeaders& headers,
                                       const LoadSetup& setup, Updaters& updaters);

}  // namespace hollin
