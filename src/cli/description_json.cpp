// SPDX-License-Identifier: MIT
#include "cli/description_json.h"

#include "updaters/a1_update.h"
#include "updaters/a2_update.h"
#include "updaters/c1_update.h"

namespace hollin {
namespace {

Json Of(const A1Description& flash) {
  return {{"mode", flash.mode},
          {"chipName", flash.chipName ? Json(*flash.chipName) : Json()},
          {"chipSize", flash.chipSize},
          {"startAddress", flash.startAddress},
          {"dataLength", flash.dataLength},
          {"timeOver", flash.timeOver}};
}

Json Of(const A2Description& flash) {
  return {{"mode", flash.mode},
          {"flashModel", flash.flashModel},
          {"writeBufferMode", flash.writeBufferMode},
          {"reservedSectors", flash.reservedSectors},
          {"blockSize", flash.blockSize},
          {"fileOffset", flash.fileOffset},
          {"maxWriteBack", flash.maxWriteBack},
          {"maxSectorEraseTime", flash.maxSectorEraseTime},
          {"erasedValue", flash.erasedValue},
          {"resetAddr", flash.resetAddr},
          {"resetData", flash.resetData},
          {"eraseCycleCount", flash.eraseCycleCount},
          {"eraseAddrs", flash.eraseAddrs},
          {"eraseData", flash.eraseData},
          {"programCycleCount", flash.programCycleCount},
          {"programAddrs", flash.programAddrs},
          {"programData", flash.programData},
          {"writeBufferCycleCount", flash.writeBufferCycleCount},
          {"writeBufferCount", flash.writeBufferCount},
          {"writeBufferPA1", flash.writeBufferPA1},
          {"writeBufferPA2", flash.writeBufferPA2},
          {"writeBufferSA1", flash.writeBufferSA1},
          {"writeBufferSA2", flash.writeBufferSA2},
          {"writeBufferAddrs", flash.writeBufferAddrs},
          {"writeBufferData", flash.writeBufferData},
          {"programBufferCycleCount", flash.programBufferCycleCount},
          {"programBufferSA1", flash.programBufferSA1},
          {"programBufferSA2", flash.programBufferSA2},
          {"programBufferAddrs", flash.programBufferAddrs},
          {"programBufferData", flash.programBufferData},
          {"sectorAddrs", flash.sectorAddrs}};
}

Json Of(const C1Description& flash) {
  return {{"reservedSectors", flash.reservedSectors},
          {"lineMode", flash.lineMode},
          {"spiNumber", flash.spiNumber},
          {"chipSelectNumber", flash.chipSelectNumber},
          {"sectorSize", flash.sectorSize}};
}

uint32_t ReservedOf(const A2Update& updater) {
  uint32_t count = 0;
  for (uint32_t sector = 0; sector < updater.plannedSectors; sector++) {
    if (updater.IsReserved(sector)) count++;
  }
  return count;
}

}  // namespace

Json DescriptionJson(const AXUpdate& updater) {
  if (const auto* a1 = dynamic_cast<const A1Update*>(&updater)) return Of(a1->flash);
  if (const auto* a2 = dynamic_cast<const A2Update*>(&updater)) return Of(a2->flash);
  if (const auto* c1 = dynamic_cast<const C1Update*>(&updater)) return Of(c1->flash);
  return {};
}

Json PlanJson(const AXUpdate& updater) {
  const uint32_t steps = updater.StepCount();
  const uint32_t count = steps < 2 ? 0 : steps - 2;
  if (const auto* a1 = dynamic_cast<const A1Update*>(&updater)) {
    return {{"unit", "block"}, {"count", count}, {"reserved", 0}, {"bytes", a1->imageLength}};
  }
  if (const auto* a2 = dynamic_cast<const A2Update*>(&updater)) {
    return {{"unit", "sector"},
            {"count", count},
            {"reserved", ReservedOf(*a2)},
            {"bytes", a2->bytesToWrite}};
  }
  return {{"unit", "sector"}, {"count", count}, {"reserved", 0}, {"bytes", updater.imageLength}};
}

}  // namespace hollin
