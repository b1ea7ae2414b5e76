// SPDX-License-Identifier: MIT
#include "tests/fuzz/fuzz_hidapi.h"

#include <memory>

#include "simulator/hid_backend.h"

namespace hollin::fuzz {
namespace {

OneDevice* plugged = nullptr;
size_t openHandles = 0;

class Handle : public simulator::OpenedKeyboard {
 public:
  explicit Handle(OneDevice& device) : device(device) { openHandles++; }
  ~Handle() override { openHandles--; }
  bool Write(std::span<const uint8_t> report) override { return device.write(report); }
  int Read(std::span<uint8_t> report, int /*milliseconds*/) override { return device.read(report); }

 private:
  OneDevice& device;
};

class Backend : public simulator::HidBackend {
 public:
  std::vector<simulator::ListedKeyboard> List() override {
    if (plugged == nullptr) return {};
    return {{.vendorId = 1, .productId = 1, .path = "one"}};
  }
  std::unique_ptr<simulator::OpenedKeyboard> Open(const std::string& /*path*/) override {
    return std::make_unique<Handle>(*plugged);
  }
  [[nodiscard]] bool RecordsCalls() const override { return false; }
  void Record(const std::string& /*call*/) override {}
};

}  // namespace

void PlugIn(OneDevice* device) { plugged = device; }
size_t OpenHandles() { return openHandles; }

}  // namespace hollin::fuzz

hollin::simulator::HidBackend& hollin::simulator::TheBackend() {
  static fuzz::Backend backend;
  return backend;
}
