// SPDX-License-Identifier: MIT
// Words for findings: a code that stays the same for scripts, what is there and what it does, and
// how to mend it. docs/findings.md lists them all.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "package/finding.h"

namespace hollin::words {

// "number-suffix-1024".
[[nodiscard]] std::string_view CodeOf(FindingCode code);

// One sentence or two; holds bytes of the package, not escaped.
[[nodiscard]] std::string MessageOf(const Finding& finding);

[[nodiscard]] std::string_view MendOf(FindingCode code);

// "pack 1, line 7, column 13: "; empty for the package as a whole.
[[nodiscard]] std::string PlaceOf(const Finding& finding);

// Every code there is, in the order of the list.
[[nodiscard]] std::vector<FindingCode> AllFindingCodes();

}  // namespace hollin::words
