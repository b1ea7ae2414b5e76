// SPDX-License-Identifier: MIT
// What an A1 flash is: one chip, written through one transfer window. docs/flash-descriptions.md
// describes the file.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "updaters/description_file.h"

namespace hollin {

struct A1Description {
  static constexpr std::string_view chipSection = "Chip Info";
  static constexpr std::string_view transmissionSection = "Transmission Info";

  uint32_t mode = 2;                    // "Chip Type": the number of the mode command
  std::optional<std::string> chipName;  // kept, not sent
  uint32_t chipSize = 0;                // bytes
  uint32_t startAddress = 0;            // flash address of the image, for the verify command
  uint32_t dataLength = 0;              // bytes a block; 0 until checked means 65536
  uint32_t timeOver = 0;                // kept, not used

  // Reads the text of a description. False at the first line that fails; fields read so far keep
  // their values.
  [[nodiscard]] bool Read(std::string_view text, const DescriptionListener& listener);
};

}  // namespace hollin
