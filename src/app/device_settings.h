// SPDX-License-Identifier: MIT
// The settings that both programs take from the configuration at start.
#pragma once

#include <cstdint>
#include <string>

namespace hollin {

struct DeviceSettings {
  uint16_t vendorId = 0;
  uint16_t productId = 0;
  std::string caption;  // of the window, UTF-8
};

// Reads the configuration, each value with its default.
[[nodiscard]] DeviceSettings ReadDeviceSettings();

// A USB id as strtoul reads base 16: "0x" may stand before it, reading ends at the first other
// character, and only the low 16 bits count. What is no number is 0.
[[nodiscard]] uint16_t ParseUsbId(const std::string& text);

}  // namespace hollin
