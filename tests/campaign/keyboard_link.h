// SPDX-License-Identifier: MIT
// The reference host's way to a keyboard in software. Its owner pulls the plug when nothing comes
// any more, and time passes for it alone.
#pragma once

#include <algorithm>
#include <deque>
#include <vector>

#include "simulator/keyboard.h"
#include "tests/campaign/reference_host.h"

namespace hollin::campaign {

class KeyboardLink : public ReferenceLink {
 public:
  // The keyboard is lent.
  explicit KeyboardLink(simulator::Keyboard& keyboard) : keyboard(keyboard) {}

  bool Open() override { return keyboard.Open(); }
  void Close() override { queue.clear(); }

  bool Write(ByteView report) override {
    reports.emplace_back(report.begin(), report.end());
    simulator::Deliveries deliveries;
    const bool isTaken = keyboard.TakeReport(report, deliveries);
    queue.insert(queue.end(), deliveries.begin(), deliveries.end());
    return isTaken;
  }

  int Read(std::span<uint8_t> report) override {
    if (queue.empty()) {
      keyboard.Unplug();
      return -1;
    }
    const simulator::Delivery delivery = std::move(queue.front());
    queue.pop_front();
    if (delivery.readFails) return -1;
    std::copy(delivery.report.begin(), delivery.report.end(), report.begin());
    return static_cast<int>(delivery.report.size());
  }

  void Pause(std::chrono::milliseconds length) override {
    pauses.push_back(length);
    keyboard.PassTime(length);
  }

  std::vector<Bytes> reports;
  std::vector<std::chrono::milliseconds> pauses;

 private:
  simulator::Keyboard& keyboard;
  std::deque<simulator::Delivery> queue;
};

}  // namespace hollin::campaign
