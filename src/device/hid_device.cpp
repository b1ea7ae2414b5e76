// SPDX-License-Identifier: MIT
#include "device/hid_device.h"

#include <fmt/format.h>
#include <hidapi.h>
#include <utf8/unchecked.h>

#include <algorithm>
#include <cstring>
#include <cwchar>
#include <iterator>
#include <limits>
#include <string>

#include "base/log.h"
#include "device/ax_update.h"

namespace hollin {
namespace {

// A report is one marker byte, two numbers of four bytes and up to 55 bytes of the message.
// Deliberate: the numbers stand in opposite order in the two directions; the keyboard's firmware
// speaks this way.
constexpr uint8_t kReportMarker = 0x51;
constexpr size_t kOutgoingTotalField = 1;
constexpr size_t kOutgoingOffsetField = 5;
constexpr size_t kPayloadOffset = 9;
constexpr uint32_t kPayloadSize = HidDevice::kReportSize - kPayloadOffset;
constexpr size_t kIncomingOffsetField = 1;
constexpr size_t kIncomingTotalField = 5;

bool Fail(UpdateFailure reason) {
  HidDevice::lastFailure = reason;
  return false;
}

// Why hidapi could not open the keyboard, in its own words: they name the node and what the system
// said. Valid text or not, the log bears it.
std::string WhyNotOpened() {
  const wchar_t* const words = hid_error(nullptr);
  std::string text;
  if (words == nullptr) return text;
  utf8::unchecked::utf32to8(words, words + std::wcslen(words), std::back_inserter(text));
  return text;
}

// The part of the header that all reports of a message share.
void BeginReports(uint32_t length) {
  HidDevice::report[0] = kReportMarker;
  PutU32(HidDevice::report, kOutgoingTotalField, length);
}

// Sends one report with `size` bytes of the message. Deliberate: what lies behind a short payload
// is not cleared and goes out as it is.
bool SendReport(ByteView message, uint32_t offset, uint32_t size) {
  // NOLINTNEXTLINE(readability-suspicious-call-argument): the message's offset is the value here.
  PutU32(HidDevice::report, kOutgoingOffsetField, offset);
  std::memcpy(HidDevice::report.data() + kPayloadOffset, message.data() + offset, size);
  return hid_write(HidDevice::handle, HidDevice::report.data(), HidDevice::report.size()) >= 0;
}

// The number of bytes of the next report, negative when the device is gone.
int ReadReport() {
  return hid_read(HidDevice::handle, HidDevice::report.data(), HidDevice::report.size());
}

// What the report in the buffer adds to a reply of which `taken` bytes are there: whether it
// continues that reply within `capacity`, how many payload bytes it brings, and how long the reply
// is to be.
struct Piece {
  bool isAccepted = false;
  uint32_t size = 0;
  uint32_t total = 0;
};

Piece NextPiece(int received, uint32_t taken, uint64_t capacity) {
  if (received < static_cast<int>(kPayloadOffset)) return {};
  const uint32_t offset = ReadU32(HidDevice::report, kIncomingOffsetField);
  const uint32_t total = ReadU32(HidDevice::report, kIncomingTotalField);
  if (offset != taken) return {};
  if (static_cast<int32_t>(total) < static_cast<int32_t>(offset)) return {};
  const uint32_t size = std::min(total - taken, kPayloadSize);
  if (uint64_t{taken} + size > capacity) return {};
  // Deliberate: the buffer still holds the command, so a short report must not pass for an echo of
  // it.
  if (static_cast<size_t>(received) < kPayloadOffset + size) return {};
  return {.isAccepted = true, .size = size, .total = total};
}

}  // namespace

HidDevice* HidDevice::Instance() {
  if (instance == nullptr) {
    instance = new HidDevice;
    instanceCount++;
    handle = nullptr;
  }
  return instance;
}

uint32_t HidDevice::DeviceCount() {
  hid_device_info* const list = hid_enumerate(vendorId, productId);
  uint32_t count = 0;
  for (const hid_device_info* entry = list; entry != nullptr; entry = entry->next) count++;
  hid_free_enumeration(list);
  return count;
}

bool HidDevice::Connect(AXUpdate& updater) {
  updater.link = Instance();
  if (opened) return true;
  const uint32_t count = DeviceCount();
  if (count == 0) return Fail(UpdateFailure::kNoKeyboard);
  if (count > 1) return Fail(UpdateFailure::kSeveralKeyboards);
  return Open();
}

bool HidDevice::Open() {
  if (handle != nullptr) return true;
  hid_device_* const device = hid_open(vendorId, productId, nullptr);
  if (device == nullptr) {
    Log(fmt::format("Cannot open the keyboard: {}", WhyNotOpened()));
    return Fail(UpdateFailure::kNotOpened);
  }
  handle = device;
  opened = true;
  return true;
}

void HidDevice::Close() {
  if (handle == nullptr) return;
  hid_close(handle);
  hid_exit();
  handle = nullptr;
  opened = false;
}

bool HidDevice::SendMessage(ByteView data) {
  if (data.empty() || data.size() > std::numeric_limits<uint32_t>::max()) {
    return Fail(UpdateFailure::kSendFailed);
  }
  if (handle == nullptr) return Fail(UpdateFailure::kLinkClosed);
  const auto length = static_cast<uint32_t>(data.size());
  BeginReports(length);
  uint32_t offset = 0;
  // Whole payloads first: their size is known when this is compiled, and copied without a call.
  for (; length - offset >= kPayloadSize; offset += kPayloadSize) {
    if (!SendReport(data, offset, kPayloadSize)) return Fail(UpdateFailure::kSendFailed);
  }
  if (offset < length && !SendReport(data, offset, length - offset)) {
    return Fail(UpdateFailure::kSendFailed);
  }
  return true;
}

bool HidDevice::ReceiveMessage(std::span<uint8_t> buffer) {
  if (handle == nullptr) return Fail(UpdateFailure::kLinkClosed);
  uint32_t taken = 0;
  while (true) {
    const int received = ReadReport();
    if (received < 0) return Fail(UpdateFailure::kReceiveFailed);
    const Piece piece = NextPiece(received, taken, buffer.size());
    // Deliberate: a reply cut short after an accepted report counts as received; the caller's
    // comparison decides.
    if (!piece.isAccepted) return taken > 0 || Fail(UpdateFailure::kReceiveFailed);
    std::copy_n(report.begin() + kPayloadOffset, piece.size, buffer.begin() + taken);
    taken += piece.size;
    if (taken == piece.total) return taken > 0 || Fail(UpdateFailure::kReceiveFailed);
  }
}

}  // namespace hollin
