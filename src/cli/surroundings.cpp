// SPDX-License-Identifier: MIT
#include "cli/surroundings.h"

#include <hidapi.h>
#include <unistd.h>

#include <cwchar>

#include "app/device_settings.h"
#include "app/ini_config.h"
#include "app/instance_lock.h"

namespace hollin {
namespace {

// Serial numbers are plain; what is not becomes "?".
std::string Narrow(const wchar_t* text) {
  std::string narrow;
  for (; text != nullptr && *text != L'\0'; text++) {
    narrow += *text >= L' ' && *text <= L'~' ? static_cast<char>(*text) : '?';
  }
  return narrow;
}

std::vector<ListedKeyboard> ListKeyboards(uint16_t vendorId, uint16_t productId) {
  hid_device_info* const list = hid_enumerate(vendorId, productId);
  std::vector<ListedKeyboard> keyboards;
  for (const hid_device_info* entry = list; entry != nullptr; entry = entry->next) {
    keyboards.push_back({.path = entry->path != nullptr ? entry->path : "",
                         .serial = Narrow(entry->serial_number),
                         .interface = entry->interface_number,
                         .usagePage = entry->usage_page,
                         .usage = entry->usage});
  }
  hid_free_enumeration(list);
  return keyboards;
}

}  // namespace

Surroundings ReadSurroundings() {
  const DeviceSettings settings = ReadDeviceSettings();
  Surroundings surroundings;
  surroundings.vendorText = IniConfig::getValueByKey("IDC_VID", "0x1c3e");
  surroundings.productText = IniConfig::getValueByKey("IDC_PID", "0x2b91");
  surroundings.vendorId = settings.vendorId;
  surroundings.productId = settings.productId;
  surroundings.listed = ListKeyboards(settings.vendorId, settings.productId);
  surroundings.mayOpen = [](const std::string& path) {
    return access(path.c_str(), R_OK | W_OK) == 0;
  };
  surroundings.isAnotherAtWork = [] {
    InstanceLock lock;
    return lock.Take() == LockState::kBusy;
  };
  surroundings.user = geteuid();
  return surroundings;
}

}  // namespace hollin
