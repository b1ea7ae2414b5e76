// SPDX-License-Identifier: MIT
// hidapi without any of the project's code, for the tests in the virtual machine:
//
//   usb_probe count      how many keyboards hidapi lists
//   usb_probe open       whether the keyboard may be opened: "yes" or "no"
#include <hidapi.h>

#include <cstdio>
#include <string_view>

namespace {

constexpr unsigned short kVendorId = 0x1C3E;
constexpr unsigned short kProductId = 0x2B91;

int Count() {
  hid_device_info* list = hid_enumerate(kVendorId, kProductId);
  int count = 0;
  for (const hid_device_info* each = list; each != nullptr; each = each->next) count++;
  hid_free_enumeration(list);
  std::printf("%d\n", count);
  return 0;
}

int Open() {
  hid_device* keyboard = hid_open(kVendorId, kProductId, nullptr);
  std::puts(keyboard != nullptr ? "yes" : "no");
  if (keyboard != nullptr) hid_close(keyboard);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string_view task = argc > 1 ? argv[1] : "";
  if (task == "count") return Count();
  if (task == "open") return Open();
  std::fputs("usage: usb_probe count | open\n", stderr);
  return 2;
}
