// SPDX-License-Identifier: MIT
#include "package/finding.h"

#include <utility>

namespace hollin {
namespace {

constexpr size_t kMostOfOneCode = 5;

}  // namespace

void FindingList::Add(Finding finding) {
  if (HasRoom(finding.code, finding.pack)) all.push_back(std::move(finding));
}

bool FindingList::HasRoom(FindingCode code, std::optional<size_t> pack) {
  size_t count = 0;
  Finding* last = nullptr;
  for (Finding& other : all) {
    if (other.code != code || other.pack != pack) continue;
    count++;
    last = &other;
  }
  if (count < kMostOfOneCode) return true;
  last->more++;
  return false;
}

}  // namespace hollin
