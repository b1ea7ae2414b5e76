// SPDX-License-Identifier: MIT
// Why an updater does not take its description and image, as data; words are made by whoever shows
// it.
#pragma once

namespace hollin {

enum class LoadRefusal {
  kNone,
  kUnreadable,   // one of the two files cannot be read
  kDescription,  // a line of the description; the listener was told which
  kImageEmpty,
  kImageTooLong,  // for the flash that is described
  kTooManySteps,

  // A1
  kNoChipSize,
  kDataLength,  // not a multiple of 64

  // A2
  kNoFlashModel,
  kBlockSize,  // 0, odd or above 65536
  kNoWriteBackTime,
  kNoEraseTime,
  kEraseCycles,  // the lists of the cycles do not have as many entries as their count says
  kProgramCycles,
  kWriteBufferCycles,
  kProgramBufferCycles,
  kNoSectors,
  kOneSector,   // whose size nothing tells
  kFileOffset,  // beyond the image

  // C1
  kLineMode,
  kSpiNumber,
  kChipSelect,
  kNoSectorSize,

  // A2 and C1
  kNoReservedSector,
};

}  // namespace hollin
