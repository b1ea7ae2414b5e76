// SPDX-License-Identifier: MIT
#include "cli/inspection_text.h"

#include <fmt/format.h>

#include <algorithm>

#include "cli/description_json.h"
#include "cli/finding_words.h"
#include "cli/inspection_json.h"
#include "cli/progress_bar.h"
#include "cli/refusal_words.h"

namespace hollin {
namespace {

using Lines = std::vector<std::string>;

constexpr size_t kMostEntries = 8;

void Append(Lines& lines, const Lines& more) {
  lines.insert(lines.end(), more.begin(), more.end());
}

std::string OrNone(const std::string& text) { return text.empty() ? "none" : text; }

std::string Keys(const PackageInspection& inspection) {
  std::string text;
  for (const std::string& key : inspection.keys) {
    if (!key.empty()) text += (text.empty() ? "" : ", ") + key;
  }
  return OrNone(text);
}

std::string Number(const Json& json) {
  const auto value = json.get<uint32_t>();
  return value < 10 ? fmt::format("{}", value) : fmt::format("{} (0x{:X})", value, value);
}

std::string Value(const Json& json) {
  if (json.is_null()) return "none";
  if (json.is_string()) return OrNone(json.get<std::string>());
  if (json.is_boolean()) return json.get<bool>() ? "yes" : "no";
  if (!json.is_array()) return Number(json);
  if (json.empty()) return "none";
  std::string text;
  for (size_t i = 0; i < std::min(json.size(), kMostEntries); i++) {
    text += fmt::format("{}0x{:X}", text.empty() ? "" : ", ", json[i].get<uint32_t>());
  }
  if (json.size() > kMostEntries) text += fmt::format(", ... ({} in all)", json.size());
  return text;
}

std::string Region(const PackageRegion& region) {
  return fmt::format("{} bytes at {}, sum 0x{:08X}", region.length, region.address, region.sum);
}

std::string Plan(const AXUpdate& updater) {
  const Json plan = PlanJson(updater);
  const auto count = plan["count"].get<uint32_t>();
  const auto reserved = plan["reserved"].get<uint32_t>();
  std::string text = fmt::format("{}: enter update mode, write {} {}{}", updater.StepCount(), count,
                                 plan["unit"].get<std::string>(), count == 1 ? "" : "s");
  if (reserved > 0) text += fmt::format(" ({} of them reserved: skipped)", reserved);
  return text + ", verify";
}

Lines PackText(const PackageInspection& inspection, size_t pack) {
  const PackHeader& header = inspection.headers.packs[pack];
  Lines lines = {fmt::format("Pack {}: {}", pack + 1, NameOfDataType(header.dataType)),
                 fmt::format("  Description: {}", Region(header.config)),
                 fmt::format("  Image: {}", Region(header.data))};
  const AXUpdate* const updater = inspection.updaters[pack].get();
  if (updater == nullptr) return lines;
  if (updater->StepCount() > 0) lines.push_back(fmt::format("  Steps: {}", Plan(*updater)));
  const Json description = DescriptionJson(*updater);
  lines.emplace_back("  Described:");
  for (const auto& [name, value] : description.items()) {
    lines.push_back(fmt::format("    {}: {}", name, Value(value)));
  }
  return lines;
}

std::string Duration(const UpdateEffort& effort) {
  const std::chrono::milliseconds length(effort.Milliseconds());
  const auto seconds = std::chrono::ceil<std::chrono::seconds>(length);
  const bool hasHours = seconds >= std::chrono::hours(1);
  return FormatDuration(seconds) + (hasHours ? " (hours:minutes:seconds)" : " (minutes:seconds)");
}

Lines Verdict(const std::string& path, const PackageInspection& inspection) {
  if (inspection.isValid) {
    return {fmt::format("{}: valid package, {} bytes", path, inspection.fileLength)};
  }
  const words::Refusal refusal = words::OfInvalid(inspection);
  Lines lines = {fmt::format("{}: not a valid package, {} bytes", path, inspection.fileLength),
                 fmt::format("Reason: {}: {}", refusal.code, refusal.message)};
  if (!refusal.hint.empty()) lines.push_back(refusal.hint);
  return lines;
}

}  // namespace

Lines InspectionText(const std::string& path, const PackageInspection& inspection) {
  Lines lines = Verdict(path, inspection);
  if (inspection.KnownPacks() == 0) return lines;
  lines.push_back("Product model: " + OrNone(inspection.productModel));
  lines.push_back("Firmware version: " + OrNone(inspection.firmwareVersion));
  lines.push_back("Buttons to hold: " + Keys(inspection));
  if (inspection.isValid) {
    lines.push_back(fmt::format("Steps: {}, which take at least {}", inspection.totalSteps,
                                Duration(inspection.effort)));
  }
  for (size_t i = 0; i < inspection.KnownPacks(); i++) Append(lines, PackText(inspection, i));
  // Nobody has looked into the packs of a package whose sums are wrong.
  if (inspection.verdict.IsGood()) Append(lines, FindingsText(inspection.findings));
  return lines;
}

Lines FindingsText(const FindingList& findings) {
  if (findings.Empty()) return {"Findings: none"};
  Lines lines = {fmt::format("Findings: {}", findings.All().size())};
  for (const Finding& finding : findings.All()) {
    lines.push_back(fmt::format("  {}: {}{}", words::CodeOf(finding.code), words::PlaceOf(finding),
                                words::MessageOf(finding)));
    lines.push_back(fmt::format("    To mend: {}", words::MendOf(finding.code)));
  }
  return lines;
}

}  // namespace hollin
