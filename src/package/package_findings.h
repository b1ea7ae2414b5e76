// SPDX-License-Identifier: MIT
// What the headers of a package, and its packs together, will do that their author will not have
// meant.
#pragma once

#include "base/bytes.h"
#include "package/finding.h"
#include "package/package_layout.h"
#include "package/updater_loader.h"

namespace hollin {

// Looks at headers whose sums are right. Wants the header blocks to lie inside `file`.
void FindInHeaders(ByteView file, const PackageHeaders& headers, FindingList& findings);

// Looks at the loaded updaters of all packs.
void FindInPacks(const Updaters& updaters, FindingList& findings);

}  // namespace hollin
