// SPDX-License-Identifier: MIT
// What devices and doctor look at beside the keyboard itself: the kernel's lists of devices and
// processes, the temporary names, the configured ids. Data, so that tests can bring their own.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace hollin {

// An entry of hidapi's list, which is what the window and an update count.
struct ListedKeyboard {
  std::string path;  // "/dev/hidraw0"
  std::string serial{};
  int interface = -1;  // -1 where it has none
  uint16_t usagePage = 0, usage = 0;
};

struct Surroundings {
  std::string sysfs = "/sys", proc = "/proc", dev = "/dev", temp = "/tmp";
  std::string vendorText, productText;  // as the configuration has them
  uint16_t vendorId = 0, productId = 0;
  std::vector<ListedKeyboard> listed;
  std::function<bool(const std::string& path)> mayOpen;
  // Takes the lock against a second Hollin for a moment.
  std::function<bool()> isAnotherAtWork;
  uid_t user = 0;
};

// Those of this process; counts the keyboards.
[[nodiscard]] Surroundings ReadSurroundings();

}  // namespace hollin
