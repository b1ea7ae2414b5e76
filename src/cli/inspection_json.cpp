// SPDX-License-Identifier: MIT
#include "cli/inspection_json.h"

#include "cli/description_json.h"
#include "cli/finding_words.h"
#include "cli/refusal_words.h"

namespace hollin {
namespace {

Json PackJson(const PackageInspection& inspection, size_t pack) {
  const PackHeader& header = inspection.headers.packs[pack];
  Json json = {{"dataType", NameOfDataType(header.dataType)},
               {"cnfgAddr", header.config.address},
               {"cnfgLength", header.config.length},
               {"cnfgSum", header.config.sum},
               {"dataAddr", header.data.address},
               {"dataLength", header.data.length},
               {"dataSum", header.data.sum},
               {"steps", 0},
               {"plan", nullptr},
               {"description", nullptr}};
  const AXUpdate* const updater = inspection.updaters[pack].get();
  if (updater == nullptr) return json;
  json["description"] = DescriptionJson(*updater);
  if (updater->StepCount() == 0) return json;
  json["steps"] = updater->StepCount();
  json["plan"] = PlanJson(*updater);
  return json;
}

Json PacksJson(const PackageInspection& inspection) {
  Json packs = Json::array();
  for (size_t i = 0; i < inspection.KnownPacks(); i++) packs.push_back(PackJson(inspection, i));
  return packs;
}

Json RefusalJson(const PackageInspection& inspection) {
  if (inspection.isValid) return nullptr;
  const words::Refusal refusal = words::OfInvalid(inspection);
  Json json = {{"code", refusal.code}, {"message", refusal.message}};
  if (!refusal.hint.empty()) json["hint"] = refusal.hint;
  const PackageVerdict& verdict = inspection.verdict;
  if (verdict.stored != verdict.computed) {
    json["stored"] = verdict.stored;
    json["computed"] = verdict.computed;
  }
  if (inspection.missingBytes > 0) json["missingBytes"] = inspection.missingBytes;
  const size_t pack = verdict.IsGood() ? inspection.load.pack : verdict.pack;
  const bool isOfPack =
      inspection.KnownPacks() > 0 || verdict.defect == PackageDefect::kPackHeaderSum;
  if (isOfPack) json["pack"] = pack + 1;
  if (const auto& failed = inspection.failedLines[pack]) {
    json["line"] = failed->line;
    json["column"] = failed->column;
  }
  return json;
}

}  // namespace

std::string NameOfDataType(uint32_t dataType) {
  return {static_cast<char>(dataType & 0xFF), static_cast<char>(dataType >> 8 & 0xFF)};
}

Json InspectionJson(const std::string& path, const PackageInspection& inspection) {
  return {{"file", path},
          {"fileLength", inspection.fileLength},
          {"valid", inspection.isValid},
          {"refusal", RefusalJson(inspection)},
          {"productModel", inspection.productModel},
          {"firmwareVersion", inspection.firmwareVersion},
          {"keys", inspection.keys},
          {"totalSteps", inspection.totalSteps},
          {"shortestDuration",
           {{"milliseconds", inspection.effort.Milliseconds()},
            {"pauses", inspection.effort.pauses},
            {"reports", inspection.effort.reports}}},
          {"packs", PacksJson(inspection)},
          {"findings", FindingsJson(inspection.findings)}};
}

Json FindingsJson(const FindingList& findings) {
  Json list = Json::array();
  for (const Finding& finding : findings.All()) {
    Json json = {{"code", words::CodeOf(finding.code)},
                 {"message", words::MessageOf(finding)},
                 {"mend", words::MendOf(finding.code)}};
    if (finding.pack) json["pack"] = *finding.pack + 1;
    if (finding.line > 0) {
      json["line"] = finding.line;
      json["column"] = finding.column;
    }
    if (finding.more > 0) json["more"] = finding.more;
    list.push_back(std::move(json));
  }
  return list;
}

}  // namespace hollin
