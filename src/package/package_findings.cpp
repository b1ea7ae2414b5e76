// SPDX-License-Identifier: MIT
#include "package/package_findings.h"

#include <algorithm>
#include <array>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "base/text.h"
#include "updaters/a1_update.h"
#include "updaters/a2_update.h"
#include "updaters/c1_update.h"

namespace hollin {
namespace {

using namespace package_layout;

struct NamedRegion {
  std::string name;
  size_t pack;
  PackageRegion region;

  [[nodiscard]] uint64_t End() const { return uint64_t{region.address} + region.length; }
};

std::vector<NamedRegion> RegionsOf(const PackageHeaders& headers) {
  std::vector<NamedRegion> regions;
  for (size_t i = 0; i < headers.packCount; i++) {
    const std::string suffix = " of pack " + std::to_string(i + 1);
    regions.push_back({"description" + suffix, i, headers.packs[i].config});
    regions.push_back({"image" + suffix, i, headers.packs[i].data});
  }
  return regions;
}

std::string_view FieldOf(ByteView file, size_t offset, size_t size) {
  return {reinterpret_cast<const char*>(file.data()) + offset, size};
}

bool IsPrintable(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c <= '~'; });
}

void FindInText(std::string_view field, const std::string& name, bool mayBeEmpty,
                FindingList& findings) {
  const std::string_view text = field.substr(0, field.find('\0'));
  const std::string_view rest = field.substr(text.size());
  if (text.empty() && !mayBeEmpty) {
    findings.Add({.code = FindingCode::kTextEmpty, .text = name});
  }
  const bool isBlank = !text.empty() && text.find_first_not_of(' ') == std::string_view::npos;
  if (isBlank) findings.Add({.code = FindingCode::kTextBlank, .text = name});
  if (!IsPrintable(text)) findings.Add({.code = FindingCode::kTextNotAscii, .text = name});
  if (rest.find_first_not_of('\0') != std::string_view::npos) {
    findings.Add({.code = FindingCode::kTextBehindNul, .text = name});
  }
}

// Two buttons of one name, as users read it.
void FindEqualKeys(ByteView file, FindingList& findings) {
  std::array<std::string, kKeys.size()> names;
  for (size_t i = 0; i < kKeys.size(); i++) {
    names[i] = Trim(TextOfField(FieldOf(file, kKeys[i], kKeySize)));
    if (names[i].empty()) continue;
    const auto* const same = std::find(names.begin(), names.begin() + i, names[i]);
    if (same == names.begin() + i) continue;
    const auto first = static_cast<uint64_t>(same - names.begin());
    findings.Add(
        {.code = FindingCode::kKeyRepeated, .text = names[i], .number = first + 1, .other = i + 1});
  }
}

void FindInTexts(ByteView file, FindingList& findings) {
  FindInText(FieldOf(file, kProductModel, kTextSize), "product model", false, findings);
  FindInText(FieldOf(file, kFirmwareVersion, kTextSize), "firmware version", false, findings);
  std::array<bool, kKeys.size()> isNamed{};
  for (size_t i = 0; i < kKeys.size(); i++) {
    const std::string_view field = FieldOf(file, kKeys[i], kKeySize);
    isNamed[i] = field[0] != '\0';
    FindInText(field, "name of button " + std::to_string(i + 1), true, findings);
  }
  FindEqualKeys(file, findings);
  for (size_t i = kKeys.size() - 1; i > 0; i--) {
    const auto* const empty = std::find(isNamed.begin(), isNamed.begin() + i, false);
    if (!isNamed[i] || empty == isNamed.begin() + i) continue;
    const auto missing = static_cast<uint64_t>(empty - isNamed.begin());
    findings.Add({.code = FindingCode::kKeyGap, .number = i + 1, .other = missing + 1});
    return;
  }
}

void FindInRegions(const PackageHeaders& headers, FindingList& findings) {
  const std::vector<NamedRegion> regions = RegionsOf(headers);
  const uint64_t headersEnd = kBlockSize * (size_t{1} + headers.packCount);
  for (const NamedRegion& region : regions) {
    if (region.region.length == 0) continue;
    if (region.region.address < headersEnd) {
      findings.Add({.code = FindingCode::kRegionOverlapsHeaders,
                    .pack = region.pack,
                    .text = region.name,
                    .number = region.region.address,
                    .other = headersEnd});
    }
    if (region.region.length > static_cast<uint32_t>(std::numeric_limits<int32_t>::max())) {
      findings.Add({.code = FindingCode::kRegionUnsummed,
                    .pack = region.pack,
                    .text = region.name,
                    .number = region.region.length});
    }
  }
}

// Two packs may share a whole description or image; anything else is a mistake.
void FindOverlaps(const PackageHeaders& headers, FindingList& findings) {
  const std::vector<NamedRegion> regions = RegionsOf(headers);
  for (size_t i = 0; i < regions.size(); i++) {
    for (size_t k = i + 1; k < regions.size(); k++) {
      const NamedRegion& a = regions[i];
      const NamedRegion& b = regions[k];
      const uint64_t start = std::max(a.region.address, b.region.address);
      const uint64_t end = std::min(a.End(), b.End());
      const bool isShared =
          a.region.address == b.region.address && a.End() == b.End() && i % 2 == k % 2;
      if (start >= end || isShared) continue;
      findings.Add({.code = FindingCode::kRegionsOverlap,
                    .text = a.name + " and " + b.name,
                    .number = end - start});
    }
  }
}

void FindInDataTypes(ByteView file, const PackageHeaders& headers, FindingList& findings) {
  for (size_t i = 0; i < headers.packCount; i++) {
    const uint32_t upper = headers.packs[i].dataType >> 16;
    if (upper == 0) continue;
    findings.Add({.code = FindingCode::kDataTypeUpperBits, .pack = i, .number = upper});
  }
  // A second pack header that nobody reads.
  if (headers.packCount != 1 || file.size() < 3 * kBlockSize) return;
  const ByteView block = file.subspan(2 * kBlockSize, kBlockSize);
  const auto type = static_cast<uint16_t>(ReadU32(block, kDataType));
  const bool isKnown = type == kTypeA1 || type == kTypeA2 || type == kTypeC1;
  if (!isKnown || PackageSum(block.first(kBlockSumOffset)) != ReadU32(block, kBlockSumOffset)) {
    return;
  }
  findings.Add({.code = FindingCode::kSecondPackIgnored});
}

bool WriteSameFlash(const A2Update& first, const A2Update& second) {
  const auto end = [](const A2Update& updater) {
    return updater.flash.sectorAddrs[updater.plannedSectors - 1];
  };
  return (first.mode & 0xFF) == (second.mode & 0xFF) &&
         first.flash.sectorAddrs.front() <= end(second) &&
         second.flash.sectorAddrs.front() <= end(first);
}

bool WriteSameFlash(const AXUpdate& first, const AXUpdate& second) {
  if (dynamic_cast<const A1Update*>(&first) != nullptr) {
    const bool isSameKind = dynamic_cast<const A1Update*>(&second) != nullptr;
    return isSameKind && (first.mode & 0xFF) == (second.mode & 0xFF);
  }
  if (const auto* a2 = dynamic_cast<const A2Update*>(&first)) {
    const auto* other = dynamic_cast<const A2Update*>(&second);
    return other != nullptr && WriteSameFlash(*a2, *other);
  }
  const auto* c1 = dynamic_cast<const C1Update*>(&first);
  const auto* other = dynamic_cast<const C1Update*>(&second);
  return c1 != nullptr && other != nullptr && c1->flash.spiNumber == other->flash.spiNumber &&
         c1->flash.chipSelectNumber == other->flash.chipSelectNumber;
}

}  // namespace

void FindInHeaders(ByteView file, const PackageHeaders& headers, FindingList& findings) {
  FindInTexts(file, findings);
  FindInDataTypes(file, headers, findings);
  FindInRegions(headers, findings);
  FindOverlaps(headers, findings);
}

void FindInPacks(const Updaters& updaters, FindingList& findings) {
  if (updaters[0] && updaters[1] && WriteSameFlash(*updaters[0], *updaters[1])) {
    findings.Add({.code = FindingCode::kPacksSameFlash});
  }
}

}  // namespace hollin
