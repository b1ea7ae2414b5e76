// SPDX-License-Identifier: MIT
// The assembly of replies: whatever reports come, the link and the reference take the same bytes.
#include <optional>

#include "device/hid_device.h"
#include "tests/campaign/reference_host.h"
#include "tests/fuzz/fuzz_hidapi.h"
#include "tests/fuzz/fuzz_targets.h"

namespace hollin::fuzz {
namespace {

// Hands out the input as reports: one byte for the size, then so many bytes.
class Reports {
 public:
  explicit Reports(ByteView input) : rest(input) {}

  int Read(std::span<uint8_t> report) {
    if (rest.empty()) return -1;
    const size_t size = std::min<size_t>({rest[0] % 66U, 64, rest.size() - 1});
    std::copy_n(rest.begin() + 1, size, report.begin());
    rest = rest.subspan(size + 1);
    return static_cast<int>(size);
  }

 private:
  ByteView rest;
};

class ReportsLink : public campaign::ReferenceLink {
 public:
  explicit ReportsLink(ByteView input) : reports(input) {}
  bool Open() override { return true; }
  void Close() override {}
  bool Write(ByteView /*report*/) override { return true; }
  int Read(std::span<uint8_t> report) override { return reports.Read(report); }
  void Pause(std::chrono::milliseconds /*length*/) override {}

 private:
  Reports reports;
};

}  // namespace

void Reply(ByteView input) {
  if (input.empty()) return;
  const size_t capacity = input[0] * size_t{3};
  input = input.subspan(1);

  Reports reports(input);
  OneDevice device{.write = [](ByteView /*report*/) { return true; },
                   .read = [&](std::span<uint8_t> report) { return reports.Read(report); }};
  PlugIn(&device);
  HidDevice::vendorId = HidDevice::productId = 1;
  HidDevice::report.fill(0);
  constexpr uint8_t kUntouched = 0xA5;
  Bytes buffer(capacity, kUntouched);
  Require(HidDevice::Open(), "the link opens");
  const bool isReceived = HidDevice::ReceiveMessage(buffer);
  HidDevice::Close();
  PlugIn(nullptr);

  ReportsLink link(input);
  const std::optional<Bytes> expected = campaign::ReferenceHost(link).Receive(capacity);
  Require(isReceived == expected.has_value(), "both receive something, or nothing");
  if (!expected) return;
  Bytes filled = *expected;
  Require(filled.size() <= capacity, "no more than there is room for");
  filled.resize(capacity, kUntouched);
  Require(buffer == filled, "both take the same bytes, and nothing behind them is touched");
}

}  // namespace hollin::fuzz
