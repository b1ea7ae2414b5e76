// SPDX-License-Identifier: MIT
// Whether a keyboard is there that this user has no right to open. The link itself cannot tell: it
// lists the keyboard all the same, and the update then fails. Asks the file system alone.
#pragma once

#include <cstdint>
#include <string>

namespace hollin {

// Where the system keeps its HID devices.
struct HidFolders {
  std::string classes = "/sys/class/hidraw";
  std::string nodes = "/dev";
};

[[nodiscard]] bool IsAccessDenied(uint16_t vendorId, uint16_t productId,
                                  const HidFolders& folders = {});

}  // namespace hollin
