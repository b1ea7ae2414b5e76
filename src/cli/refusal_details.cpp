// SPDX-License-Identifier: MIT
#include "cli/refusal_details.h"

#include <fmt/format.h>

#include "updaters/a1_update.h"
#include "updaters/a2_update.h"
#include "updaters/c1_update.h"

namespace hollin::words {
namespace {

std::string Cycles(uint32_t count, const std::vector<uint32_t>& addresses,
                   const std::vector<uint32_t>& data) {
  return fmt::format("{} addresses and {} data words, not {}", addresses.size(), data.size(),
                     count);
}

std::string Of(LoadRefusal refusal, const A1Update& updater) {
  const A1Description& flash = updater.flash;
  if (refusal == LoadRefusal::kDataLength) return fmt::format("it is {}", flash.dataLength);
  if (refusal != LoadRefusal::kImageTooLong) return "";
  return fmt::format("it has {} bytes, and {} less twice the start address, {}, leaves {}",
                     updater.imageLength, flash.chipSize, flash.startAddress,
                     flash.chipSize - 2 * flash.startAddress);
}

std::string Of(LoadRefusal refusal, const A2Update& updater) {
  const A2Description& flash = updater.flash;
  switch (refusal) {
    case LoadRefusal::kBlockSize:
      return fmt::format("it is {}", flash.blockSize);
    case LoadRefusal::kEraseCycles:
      return Cycles(flash.eraseCycleCount, flash.eraseAddrs, flash.eraseData);
    case LoadRefusal::kProgramCycles:
      return Cycles(flash.programCycleCount, flash.programAddrs, flash.programData);
    case LoadRefusal::kWriteBufferCycles:
      return Cycles(flash.writeBufferCycleCount, flash.writeBufferAddrs, flash.writeBufferData);
    case LoadRefusal::kProgramBufferCycles:
      return Cycles(flash.programBufferCycleCount, flash.programBufferAddrs,
                    flash.programBufferData);
    case LoadRefusal::kFileOffset:
      return fmt::format("it is {} words, the image has {} bytes", flash.fileOffset,
                         updater.imageLength);
    case LoadRefusal::kImageTooLong:
      return fmt::format("it has {} bytes to write", updater.bytesToWrite);
    default:
      return "";
  }
}

std::string Of(LoadRefusal refusal, const C1Update& updater) {
  const C1Description& flash = updater.flash;
  if (refusal == LoadRefusal::kLineMode) return fmt::format("it is {}", flash.lineMode);
  if (refusal == LoadRefusal::kSpiNumber) return fmt::format("it is {}", flash.spiNumber);
  if (refusal == LoadRefusal::kChipSelect) return fmt::format("it is {}", flash.chipSelectNumber);
  return "";
}

}  // namespace

std::string DetailOf(LoadRefusal refusal, const AXUpdate& updater) {
  if (const auto* a1 = dynamic_cast<const A1Update*>(&updater)) return Of(refusal, *a1);
  if (const auto* a2 = dynamic_cast<const A2Update*>(&updater)) return Of(refusal, *a2);
  if (const auto* c1 = dynamic_cast<const C1Update*>(&updater)) return Of(refusal, *c1);
  return "";
}

}  // namespace hollin::words
