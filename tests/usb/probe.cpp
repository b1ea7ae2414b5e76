// SPDX-License-Identifier: MIT
// hidapi without any of the project's code, for the tests in the virtual machine:
//
//   usb_probe count      how many keyboards hidapi lists
//   usb_probe open       whether the keyboard may be opened: "yes" or "no"
//   usb_probe rate N     opens the keyboard, writes N reports as fast as it takes them; reports a
//                        second. Their offset belongs to no message, so the keyboard drops them.
#include <hidapi.h>

#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
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

int Rate(int reports) {
  hid_device* keyboard = hid_open(kVendorId, kProductId, nullptr);
  if (keyboard == nullptr) return 1;
  const std::array<unsigned char, 64> report{0x51, 128, 0, 0, 0, 55, 0, 0, 0};
  const auto start = std::chrono::steady_clock::now();
  for (int i = 0; i < reports; i++) {
    if (hid_write(keyboard, report.data(), report.size()) < 0) return 1;
  }
  const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
  std::printf("%.1f\n", reports / time.count());
  hid_close(keyboard);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string_view task = argc > 1 ? argv[1] : "";
  if (task == "count") return Count();
  if (task == "open") return Open();
  if (task == "rate" && argc > 2) return Rate(std::atoi(argv[2]));
  std::fputs("usage: usb_probe count | open | rate N\n", stderr);
  return 2;
}
