// SPDX-License-Identifier: MIT
// The kernel's own list of HID devices, with who may open them and who has: what hidapi does not
// tell.
#pragma once

#include <string>
#include <vector>

#include "cli/surroundings.h"

namespace hollin {

struct HidrawNode {
  std::string path;         // "/dev/hidraw0"
  std::string usbDevice{};  // its folder in sysfs; the same for all nodes of one device
  bool mayOpen = false;
  std::vector<std::string> users{};  // processes that have it open, "name (1234)", as far as can be
                                     // seen
};

// The nodes of devices with the configured ids, by name.
[[nodiscard]] std::vector<HidrawNode> FindHidrawNodes(const Surroundings& surroundings);

}  // namespace hollin
