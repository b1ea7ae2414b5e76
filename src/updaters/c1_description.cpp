// SPDX-License-Identifier: MIT
#include "updaters/c1_description.h"

namespace hollin {

bool C1Description::Read(std::string_view text, const DescriptionListener& listener) {
  MakeRoom(reservedSectors, text);
  return ReadDescription(text, {.comment = "//", .unknownSectionFails = false},
                         {
                             {"reserved sector", Numbers{reservedSectors}},
                             {"line mode", AnyKey{lineMode}},
                             {"spi number", AnyKey{spiNumber}},
                             {"chip select number", AnyKey{chipSelectNumber}},
                             {"sector size", AnyKey{sectorSize}},
                         },
                         listener);
}

}  // namespace hollin
