// SPDX-License-Identifier: MIT
#include "cli/update_plan.h"

#include <fmt/format.h>

#include "package/dat_file_examine.h"

namespace hollin {
namespace {

std::string NameOfDataType(uint32_t dataType) {
  return {static_cast<char>(dataType & 0xFF), static_cast<char>(dataType >> 8 & 0xFF)};
}

UpdatePlan::Pack PackOf(uint32_t dataType, const AXUpdate& updater) {
  return {.dataType = NameOfDataType(dataType), .steps = static_cast<int32_t>(updater.StepCount())};
}

// A step by its number within its pack.
std::string NameInPack(const UpdatePlan::Pack& pack, int32_t step) {
  if (step == 0) return "enter update mode";
  if (step == pack.steps - 1) return "verify";
  const char* const unit = pack.dataType == "A1" ? "block" : "sector";
  return fmt::format("write {} {} of {}", unit, step, pack.steps - 2);
}

}  // namespace

int32_t UpdatePlan::TotalSteps() const {
  int32_t total = 0;
  for (const Pack& pack : packs) total += pack.steps;
  return total;
}

std::string UpdatePlan::StepName(int32_t step) const {
  for (size_t i = 0; i < packs.size(); i++) {
    if (step >= packs[i].steps) {
      step -= packs[i].steps;
      continue;
    }
    const std::string name = NameInPack(packs[i], step);
    return packs.size() == 1 ? name : fmt::format("{} (pack {})", name, i + 1);
  }
  return "";
}

UpdatePlan PlanOf(const DatFileExamine& datFile) {
  UpdatePlan plan{.productModel = datFile.ProductModelText(),
                  .firmwareVersion = datFile.FirmwareVersionText(),
                  .packs = {}};
  if (datFile.Update1) plan.packs.push_back(PackOf(datFile.dataType1, *datFile.Update1));
  if (datFile.Update2) plan.packs.push_back(PackOf(datFile.dataType2, *datFile.Update2));
  return plan;
}

}  // namespace hollin
