// SPDX-License-Identifier: MIT
// A hidapi that does nothing: one keyboard is there, takes every report and never answers.
#include <hidapi.h>

struct hid_device_ {};

namespace {
hid_device_info theInfo{};
hid_device_ theDevice;
}  // namespace

hid_device_info* hid_enumerate(unsigned short /*vendorId*/, unsigned short /*productId*/) {
  return &theInfo;
}
void hid_free_enumeration(hid_device_info* /*list*/) {}
hid_device* hid_open(unsigned short /*vendorId*/, unsigned short /*productId*/,
                     const wchar_t* /*serial*/) {
  return &theDevice;
}
int hid_write(hid_device* /*device*/, const unsigned char* /*data*/, size_t length) {
  return static_cast<int>(length);
}
int hid_read(hid_device* /*device*/, unsigned char* /*data*/, size_t /*length*/) { return -1; }
void hid_close(hid_device* /*device*/) {}
int hid_exit() { return 0; }
