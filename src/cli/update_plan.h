// SPDX-License-Identifier: MIT
// What an update is going to do, as a person wants to read it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace hollin {

class DatFileExamine;

struct UpdatePlan {
  struct Pack {
    std::string dataType;  // "A1", "A2" or "C1"
    int32_t steps = 0;     // the first (mode) and the last (verify) included
  };

  std::string productModel;  // as the package has it, not escaped
  std::string firmwareVersion;
  std::vector<Pack> packs;

  [[nodiscard]] int32_t TotalSteps() const;
  // What step `step`, counted over all packs from 0, does: "write block 2 of 7 (pack 1)". Empty
  // beyond the last step.
  [[nodiscard]] std::string StepName(int32_t step) const;
};

// The plan of a ready package.
[[nodiscard]] UpdatePlan PlanOf(const DatFileExamine& datFile);

}  // namespace hollin
