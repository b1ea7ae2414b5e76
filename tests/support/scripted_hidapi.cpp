// SPDX-License-Identifier: MIT
#include "tests/support/scripted_hidapi.h"

#include <hidapi.h>

#include <algorithm>

struct hid_device_ {};

namespace hollin {
namespace {

constexpr size_t kReportSize = 64;
constexpr size_t kPayloadOffset = 9;
constexpr size_t kPayloadSize = 55;

// Every open gives the same handle: a second one at a time is a misuse anyway.
hid_device_ theDevice;

// Counts down to the call that is to fail.
bool IsDue(size_t& countdown) { return countdown > 0 && --countdown == 0; }

void NoteMisuse(const std::string& what) { Hidapi().misuses.push_back(what); }

void CheckHandle(const hid_device_* device, const std::string& call) {
  if (device != &theDevice || Hidapi().openHandles == 0) NoteMisuse(call + " without a device");
}

hid_device_info* NewList(size_t count) {
  hid_device_info* first = nullptr;
  for (size_t i = 0; i < count; i++) {
    auto* entry = new hid_device_info{};
    entry->next = first;
    first = entry;
  }
  return first;
}

void AppendNumber(Bytes& bytes, uint32_t number) {
  for (int shift = 0; shift < 32; shift += 8)
    bytes.push_back(static_cast<uint8_t>(number >> shift));
}

uint32_t NumberAt(const Bytes& bytes, size_t offset) {
  uint32_t number = 0;
  for (size_t i = 0; i < 4; i++) number |= uint32_t{bytes.at(offset + i)} << (8 * i);
  return number;
}

}  // namespace

ScriptedHidapi& Hidapi() {
  static ScriptedHidapi hidapi;
  return hidapi;
}

void ScriptedHidapi::Reply(ByteView message) {
  const auto total = static_cast<uint32_t>(message.size());
  for (size_t offset = 0; offset < message.size(); offset += kPayloadSize) {
    const size_t size = std::min(kPayloadSize, message.size() - offset);
    ReplyReport(
        KeyboardReport(static_cast<uint32_t>(offset), total, message.subspan(offset, size)));
  }
}

std::vector<Bytes> ScriptedHidapi::SentMessages() const {
  std::vector<Bytes> messages;
  for (const Bytes& report : writes) {
    const uint32_t total = NumberAt(report, 1);
    const uint32_t offset = NumberAt(report, 5);
    if (offset == 0) messages.emplace_back();
    const auto begin = report.begin() + kPayloadOffset;
    const size_t size = std::min<size_t>(total - offset, kPayloadSize);
    messages.back().insert(messages.back().end(), begin, begin + static_cast<ptrdiff_t>(size));
  }
  return messages;
}

size_t ScriptedHidapi::CountOf(const std::string& call) const {
  return static_cast<size_t>(std::count(calls.begin(), calls.end(), call));
}

Bytes KeyboardReport(uint32_t offset, uint32_t total, ByteView payload, size_t size) {
  Bytes report{0x00};
  AppendNumber(report, offset);
  AppendNumber(report, total);
  report.insert(report.end(), payload.begin(), payload.end());
  report.resize(size);
  return report;
}

Bytes ProgramReport(uint32_t total, uint32_t offset, ByteView payload, ByteView stale) {
  Bytes report{0x51};
  AppendNumber(report, total);
  AppendNumber(report, offset);
  report.insert(report.end(), payload.begin(), payload.end());
  report.insert(report.end(), stale.begin(), stale.end());
  report.resize(kReportSize);
  return report;
}

}  // namespace hollin

using hollin::Bytes;
using hollin::CheckHandle;
using hollin::Hidapi;
using hollin::IsDue;
using hollin::NoteMisuse;

hid_device_info* hid_enumerate(unsigned short vendorId, unsigned short productId) {
  Hidapi().calls.emplace_back("hid_enumerate");
  Hidapi().enumeratedIds.emplace_back(vendorId, productId);
  if (IsDue(Hidapi().failingEnumerate) || Hidapi().deviceCount == 0) return nullptr;
  Hidapi().unfreedLists++;
  return hollin::NewList(Hidapi().deviceCount);
}

void hid_free_enumeration(hid_device_info* list) {
  Hidapi().calls.emplace_back("hid_free_enumeration");
  if (list != nullptr) Hidapi().unfreedLists--;
  while (list != nullptr) delete std::exchange(list, list->next);
}

hid_device* hid_open(unsigned short vendorId, unsigned short productId, const wchar_t* serial) {
  Hidapi().calls.emplace_back("hid_open");
  Hidapi().openedIds.emplace_back(vendorId, productId);
  if (serial != nullptr) NoteMisuse("hid_open with a serial number");
  if (Hidapi().openHandles > 0) NoteMisuse("hid_open while a device is open");
  if (IsDue(Hidapi().failingOpen)) return nullptr;
  Hidapi().openHandles++;
  return &hollin::theDevice;
}

int hid_write(hid_device* device, const unsigned char* data, size_t length) {
  Hidapi().calls.emplace_back("hid_write");
  CheckHandle(device, "hid_write");
  const Bytes report(data, data + length);
  if (length != hollin::kReportSize) NoteMisuse("hid_write of something else than 64 bytes");
  Hidapi().writes.push_back(report);
  if (IsDue(Hidapi().failingWrite)) return -1;
  if (Hidapi().onWrite) Hidapi().onWrite(report);
  return Hidapi().writeResult.value_or(static_cast<int>(length));
}

int hid_read(hid_device* device, unsigned char* data, size_t length) {
  Hidapi().calls.emplace_back("hid_read");
  CheckHandle(device, "hid_read");
  if (length != hollin::kReportSize) NoteMisuse("hid_read of something else than 64 bytes");
  if (IsDue(Hidapi().failingRead)) return -1;
  if (Hidapi().replies.empty()) {
    NoteMisuse("hid_read with no reply to come");
    return -1;
  }
  const auto report = std::move(Hidapi().replies.front());
  Hidapi().replies.pop_front();
  if (!report) return -1;
  const size_t size = std::min(report->size(), length);
  std::copy_n(report->begin(), size, data);
  return static_cast<int>(size);
}

void hid_close(hid_device* device) {
  Hidapi().calls.emplace_back("hid_close");
  CheckHandle(device, "hid_close");
  if (Hidapi().openHandles > 0) Hidapi().openHandles--;
}

int hid_exit() {
  Hidapi().calls.emplace_back("hid_exit");
  if (Hidapi().openHandles > 0) NoteMisuse("hid_exit while a device is open");
  return 0;
}

const wchar_t* hid_error(hid_device* device) {
  Hidapi().calls.emplace_back("hid_error");
  if (device != nullptr)
    NoteMisuse("hid_error of a device: there is none that could not be opened");
  return Hidapi().error;
}
