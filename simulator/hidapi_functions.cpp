// SPDX-License-Identifier: MIT
// hidapi's public functions over a HidBackend, with the meaning they have over the kernel's hidraw:
// enumerating opens nothing and takes the id 0 for any, opening compares ids exactly, reads block,
// and both directions fail once the keyboard is gone. Every call is told to the backend as one line
// of text; docs/simulator.md lists the forms.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <memory>
#include <span>
#include <string>
#include <utility>

#include "simulator/hid_backend.h"
// The functions are the only thing that the shared stand-in shows to the program.
#pragma GCC visibility push(default)
#include <hidapi.h>
#pragma GCC visibility pop

using hollin::simulator::HidBackend;
using hollin::simulator::ListedKeyboard;
using hollin::simulator::OpenedKeyboard;
using hollin::simulator::TheBackend;

struct hid_device_ {
  std::unique_ptr<OpenedKeyboard> keyboard;
  hid_device_info* info = nullptr;
  bool nonBlocking = false;
};

namespace {

constexpr wchar_t kManufacturer[] = L"Hollin";
constexpr wchar_t kProduct[] = L"TS30 (simulated)";
constexpr wchar_t kSerialNumber[] = L"";
constexpr int kFailed = -1;

// What went wrong last where there is no device to ask, as hidapi keeps it.
const wchar_t* lastError = L"Success";

void Record(const std::string& call) {
  if (TheBackend().RecordsCalls()) TheBackend().Record(call);
}

// "open 1c3e 2b91 -> ok"
void RecordIds(const char* verb, unsigned vendorId, unsigned productId, const std::string& result) {
  char call[64];
  std::snprintf(call, sizeof call, "%s %04x %04x -> ", verb, vendorId, productId);
  Record(call + result);
}

hid_device* Opened(hid_device* device) {
  lastError = device != nullptr ? L"Success" : L"Failed to open a simulated keyboard";
  return device;
}

// "write 51 04 00", followed by "-> failed" where it did.
void RecordReport(const char* verb, std::span<const unsigned char> bytes, bool failed) {
  if (!TheBackend().RecordsCalls()) return;
  std::string line = verb;
  for (unsigned char byte : bytes) {
    char text[4];
    std::snprintf(text, sizeof text, " %02x", byte);
    line += text;
  }
  if (failed) line += " -> failed";
  TheBackend().Record(line);
}

hid_device_info* MakeInfo(const ListedKeyboard& keyboard) {
  auto* info = static_cast<hid_device_info*>(std::calloc(1, sizeof(hid_device_info)));
  info->path = strdup(keyboard.path.c_str());
  info->vendor_id = keyboard.vendorId;
  info->product_id = keyboard.productId;
  info->serial_number = wcsdup(kSerialNumber);
  info->manufacturer_string = wcsdup(kManufacturer);
  info->product_string = wcsdup(kProduct);
  info->usage_page = 0xFF00;
  info->usage = 1;
  info->bus_type = HID_API_BUS_USB;
  return info;
}

void FreeInfos(hid_device_info* info) {
  while (info != nullptr) {
    hid_device_info* next = info->next;
    std::free(info->path);
    std::free(info->serial_number);
    std::free(info->manufacturer_string);
    std::free(info->product_string);
    std::free(info);
    info = next;
  }
}

hid_device* OpenListed(const ListedKeyboard& listed) {
  auto keyboard = TheBackend().Open(listed.path);
  if (!keyboard) return nullptr;
  return new hid_device_{std::move(keyboard), MakeInfo(listed)};
}

template <typename Matches>
hid_device* OpenFirst(Matches matches) {
  for (const ListedKeyboard& listed : TheBackend().List()) {
    if (matches(listed)) return OpenListed(listed);
  }
  return nullptr;
}

int ReadReport(hid_device* device, unsigned char* data, size_t length, int milliseconds) {
  const int count = device->keyboard->Read({data, length}, milliseconds);
  RecordReport("read", {data, static_cast<size_t>(count < 0 ? 0 : count)}, count < 0);
  return count;
}

int CopyText(const wchar_t* text, wchar_t* string, size_t capacity) {
  if (string == nullptr || capacity == 0) return kFailed;
  std::wcsncpy(string, text, capacity);
  string[capacity - 1] = L'\0';
  return 0;
}

}  // namespace

int hid_init() {
  Record("init");
  return 0;
}

int hid_exit() {
  TheBackend().Exited();
  Record("exit");
  return 0;
}

hid_device_info* hid_enumerate(unsigned short vendor_id, unsigned short product_id) {
  TheBackend().Enumerated();
  hid_device_info* first = nullptr;
  hid_device_info** next = &first;
  int count = 0;
  for (const ListedKeyboard& keyboard : TheBackend().List()) {
    if (vendor_id != 0 && vendor_id != keyboard.vendorId) continue;
    if (product_id != 0 && product_id != keyboard.productId) continue;
    *next = MakeInfo(keyboard);
    next = &(*next)->next;
    count++;
  }
  RecordIds("enumerate", vendor_id, product_id, std::to_string(count));
  return first;
}

void hid_free_enumeration(hid_device_info* devs) {
  FreeInfos(devs);
  TheBackend().FreedList();
  Record("free-enumeration");
}

hid_device* hid_open(unsigned short vendor_id, unsigned short product_id,
                     const wchar_t* serial_number) {
  hid_device* device = OpenFirst([&](const ListedKeyboard& keyboard) {
    return keyboard.vendorId == vendor_id && keyboard.productId == product_id &&
           (serial_number == nullptr || std::wcscmp(serial_number, kSerialNumber) == 0);
  });
  RecordIds("open", vendor_id, product_id, device != nullptr ? "ok" : "failed");
  return Opened(device);
}

hid_device* hid_open_path(const char* path) {
  hid_device* device =
      OpenFirst([&](const ListedKeyboard& keyboard) { return keyboard.path == path; });
  Record(device != nullptr ? "open-path -> ok" : "open-path -> failed");
  return Opened(device);
}

int hid_write(hid_device* dev, const unsigned char* data, size_t length) {
  const bool taken = dev->keyboard->Write({data, length});
  RecordReport("write", {data, length}, !taken);
  return taken ? static_cast<int>(length) : kFailed;
}

int hid_read_timeout(hid_device* dev, unsigned char* data, size_t length, int milliseconds) {
  return ReadReport(dev, data, length, milliseconds);
}

int hid_read(hid_device* dev, unsigned char* data, size_t length) {
  return ReadReport(dev, data, length, dev->nonBlocking ? 0 : OpenedKeyboard::kForEver);
}

int hid_set_nonblocking(hid_device* dev, int nonblock) {
  dev->nonBlocking = nonblock != 0;
  Record(nonblock != 0 ? "set-nonblocking 1" : "set-nonblocking 0");
  return 0;
}

// The keyboard has no feature reports and answers no request for an input report.
int hid_send_feature_report(hid_device* /*dev*/, const unsigned char* /*data*/, size_t /*length*/) {
  Record("send-feature-report -> failed");
  return kFailed;
}

int hid_get_feature_report(hid_device* /*dev*/, unsigned char* /*data*/, size_t /*length*/) {
  Record("get-feature-report -> failed");
  return kFailed;
}

int hid_get_input_report(hid_device* /*dev*/, unsigned char* /*data*/, size_t /*length*/) {
  Record("get-input-report -> failed");
  return kFailed;
}

void hid_close(hid_device* dev) {
  if (dev != nullptr) FreeInfos(dev->info);
  delete dev;
  Record("close");
}

int hid_get_manufacturer_string(hid_device* /*dev*/, wchar_t* string, size_t maxlen) {
  Record("get-manufacturer-string");
  return CopyText(kManufacturer, string, maxlen);
}

int hid_get_product_string(hid_device* /*dev*/, wchar_t* string, size_t maxlen) {
  Record("get-product-string");
  return CopyText(kProduct, string, maxlen);
}

int hid_get_serial_number_string(hid_device* /*dev*/, wchar_t* string, size_t maxlen) {
  Record("get-serial-number-string");
  return CopyText(kSerialNumber, string, maxlen);
}

hid_device_info* hid_get_device_info(hid_device* dev) {
  Record("get-device-info");
  return dev->info;
}

int hid_get_indexed_string(hid_device* /*dev*/, int /*string_index*/, wchar_t* /*string*/,
                           size_t /*maxlen*/) {
  Record("get-indexed-string -> failed");
  return kFailed;
}

const wchar_t* hid_error(hid_device* dev) {
  Record("error");
  return dev == nullptr ? lastError : L"Success";
}

const hid_api_version* hid_version() {
  static const hid_api_version version{HID_API_VERSION_MAJOR, HID_API_VERSION_MINOR,
                                       HID_API_VERSION_PATCH};
  Record("version");
  return &version;
}

const char* hid_version_str() {
  Record("version-str");
  return HID_API_VERSION_STR;
}
