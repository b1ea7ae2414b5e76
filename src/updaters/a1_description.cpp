// SPDX-License-Identifier: MIT
#include "updaters/a1_description.h"

namespace hollin {

bool A1Description::Read(std::string_view text, const DescriptionListener& listener) {
  return ReadDescription(
      text, {.comment = "--", .unknownSectionFails = true},
      {
          {chipSection,
           NamedKeys{{{"Chip Name", chipName}, {"Chip Type", mode}, {"Chip Size", chipSize}}}},
          {transmissionSection, NamedKeys{{{"Start Address", startAddress},
                                           {"Data Length", dataLength},
                                           {"Time Over", timeOver}}}},
      },
      listener);
}

}  // namespace hollin
