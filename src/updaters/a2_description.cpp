// SPDX-License-Identifier: MIT
#include "updaters/a2_description.h"

namespace hollin {

bool A2Description::Read(std::string_view text, const DescriptionListener& listener) {
  MakeRoom(reservedSectors, text);
  MakeRoom(sectorAddrs, text);
  return ReadDescription(
      text, {.comment = "//", .unknownSectionFails = false},
      {
          {"Chip Type", AnyKey{mode}},
          // Deliberate: "Modle" in two of the names; every description in the field is written so.
          {"Flash Modle", WholeLine{flashModel}},
          {"Write Modle", AnyKeyFlag{writeBufferMode}},
          {"Reserved Sector", Numbers{reservedSectors}},
          {"Block Size", AnyKey{blockSize}},
          {"File Offset", NamedKeys{{{"FileOffset", fileOffset}}}},
          {"Time",
           NamedKeys{{{"MaxWriteBack", maxWriteBack}, {"MaxSectorEraseTime", maxSectorEraseTime}}}},
          {"Data", AnyKey{erasedValue}},
          {"Flash Reset", NamedKeys{{{"ResetAddr", resetAddr}, {"ResetData", resetData}}}},
          {"Sector Erase Cycle", Cycles{{{"EraseCycles", eraseCycleCount}}, eraseAddrs, eraseData}},
          {"Program Cycle",
           Cycles{{{"ProgramCycles", programCycleCount}}, programAddrs, programData}},
          {"Write Buffer Cycle", Cycles{{{"WriteBufferCycles", writeBufferCycleCount},
                                         {"WriteBufferCount", writeBufferCount},
                                         {"WriteBufferPA1", writeBufferPA1},
                                         {"WriteBufferPA2", writeBufferPA2},
                                         {"WriteBufferSA1", writeBufferSA1},
                                         {"WriteBufferSA2", writeBufferSA2}},
                                        writeBufferAddrs,
                                        writeBufferData}},
          {"Program Buffer Cycle", Cycles{{{"ProgramBufferCycles", programBufferCycleCount},
                                           {"ProgramBufferSA1", programBufferSA1},
                                           {"ProgramBufferSA2", programBufferSA2}},
                                          programBufferAddrs,
                                          programBufferData}},
          {"Sector Address List", Numbers{sectorAddrs}},
      },
      listener);
}

}  // namespace hollin
