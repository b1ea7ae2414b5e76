// SPDX-License-Identifier: MIT
#include "app/device_access.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <system_error>

namespace hollin {
namespace {

// The kernel says the device's bus and ids in one line of eight digits each: of USB, which is 3.
bool HasIds(const std::filesystem::path& device, uint16_t vendorId, uint16_t productId) {
  const std::string wanted = fmt::format("HID_ID=0003:{:08X}:{:08X}", vendorId, productId);
  std::ifstream uevent(device / "device" / "uevent");
  for (std::string line; std::getline(uevent, line);) {
    if (line == wanted) return true;
  }
  return false;
}

bool IsDenied(const std::string& node) {
  return access(node.c_str(), R_OK | W_OK) != 0 && (errno == EACCES || errno == EPERM);
}

}  // namespace

bool IsAccessDenied(uint16_t vendorId, uint16_t productId, const HidFolders& folders) {
  std::error_code failed;
  std::filesystem::directory_iterator entry(folders.classes, failed);
  for (; !failed && entry != std::filesystem::directory_iterator(); entry.increment(failed)) {
    const std::string node = folders.nodes + "/" + entry->path().filename().string();
    if (HasIds(entry->path(), vendorId, productId) && IsDenied(node)) return true;
  }
  return false;
}

}  // namespace hollin
