// SPDX-License-Identifier: MIT
#include "app/device_settings.h"

#include <cstdlib>

#include "app/ini_config.h"

namespace hollin {

DeviceSettings ReadDeviceSettings() {
  return {.vendorId = ParseUsbId(IniConfig::getValueByKey("IDC_VID", "0x1c3e")),
          .productId = ParseUsbId(IniConfig::getValueByKey("IDC_PID", "0x2b91")),
          .caption = IniConfig::getValueByKey("IDS_STRING_CAPTION",
                                              "Varnholt TS30 Firmware Update V2.0.0")};
}

uint16_t ParseUsbId(const std::string& text) {
  return static_cast<uint16_t>(std::strtoul(text.c_str(), nullptr, 16));
}

}  // namespace hollin
