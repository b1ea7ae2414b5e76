// SPDX-License-Identifier: MIT
#include "simulator/in_process_hidapi.h"

#include <algorithm>
#include <utility>

#include "simulator/report_queue.h"

namespace hollin::simulator {

// A keyboard and who has it open.
struct InProcessHidapi::Slot {
  explicit Slot(KeyboardOptions options) : keyboard(std::move(options)) {}

  Keyboard keyboard;
  std::string path;
  std::vector<Handle*> handles;
};

// Keeps its keyboard alive, so that a detached one can still be closed; what was queued before the
// plug was pulled can still be read.
class InProcessHidapi::Handle : public OpenedKeyboard {
 public:
  Handle(InProcessHidapi& hidapi, std::shared_ptr<Slot> slot)
      : hidapi(hidapi), slot(std::move(slot)), plugged(this->slot->keyboard.Record().plugged) {
    this->slot->handles.push_back(this);
    hidapi.opens++;
    hidapi.openHandles++;
  }

  ~Handle() override {
    std::erase(slot->handles, this);
    hidapi.closes++;
    hidapi.openHandles--;
  }

  bool Write(std::span<const uint8_t> report) override {
    if (hidapi.beforeWrite) hidapi.beforeWrite(report);
    if (!Connected()) return false;
    Deliveries deliveries;
    const bool taken = slot->keyboard.TakeReport(report, deliveries);
    for (Handle* handle : slot->handles) {
      if (!handle->Replugged()) handle->queue.Add(deliveries);
    }
    return taken;
  }

  int Read(std::span<uint8_t> report, int milliseconds) override {
    if (queue.IsEmpty()) return ReadNothing(milliseconds);
    const Delivery delivery = queue.Take();
    if (delivery.readFails) return -1;
    const size_t count = std::min(report.size(), delivery.report.size());
    std::copy_n(delivery.report.begin(), count, report.begin());
    return static_cast<int>(count);
  }

 private:
  // A keyboard that was plugged in again is another device to an old handle.
  [[nodiscard]] bool Replugged() const { return slot->keyboard.Record().plugged != plugged; }
  [[nodiscard]] bool Connected() const { return slot->keyboard.Attached() && !Replugged(); }

  int ReadNothing(int milliseconds) {
    if (!Connected()) return -1;
    if (milliseconds != kForEver) return 0;
    hidapi.wouldBlock = true;
    if (hidapi.onBlock) hidapi.onBlock();
    return -1;
  }

  InProcessHidapi& hidapi;
  std::shared_ptr<Slot> slot;
  uint64_t plugged;
  ReportQueue queue;
};

InProcessHidapi::InProcessHidapi() = default;
InProcessHidapi::~InProcessHidapi() = default;

InProcessHidapi& InProcessHidapi::Instance() {
  static InProcessHidapi instance;
  return instance;
}

HidBackend& TheBackend() { return InProcessHidapi::Instance(); }

Keyboard& InProcessHidapi::Attach(KeyboardOptions options) {
  places.push_back(std::make_shared<Slot>(std::move(options)));
  places.back()->path = "keyboard " + std::to_string(++attachments);
  return places.back()->keyboard;
}

void InProcessHidapi::Detach(const Keyboard& keyboard) {
  const auto slot =
      std::ranges::find(places, &keyboard, [](const auto& each) { return &each->keyboard; });
  if (slot == places.end()) return;
  (*slot)->keyboard.Unplug();
  places.erase(slot);
}

void InProcessHidapi::Reset() {
  while (!places.empty()) Detach(places.back()->keyboard);
  calls.clear();
  enumerations = freedLists = opens = closes = exits = 0;
  recordCalls = true;
  wouldBlock = false;
  beforeWrite = {};
  onBlock = {};
}

void InProcessHidapi::PassTime(VirtualClock::Duration length) {
  for (auto& slot : places) slot->keyboard.PassTime(length);
}

std::vector<ListedKeyboard> InProcessHidapi::List() {
  std::vector<ListedKeyboard> listed;
  for (const auto& slot : places) {
    const KeyboardOptions& options = slot->keyboard.Options();
    if (!slot->keyboard.Attached()) continue;
    listed.push_back({options.vendorId, options.productId, slot->path});
  }
  return listed;
}

std::unique_ptr<OpenedKeyboard> InProcessHidapi::Open(const std::string& path) {
  const auto slot = std::ranges::find(places, path, [](const auto& each) { return each->path; });
  if (slot == places.end() || !(*slot)->keyboard.Open()) return nullptr;
  return std::make_unique<Handle>(*this, *slot);
}

}  // namespace hollin::simulator
