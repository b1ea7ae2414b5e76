// SPDX-License-Identifier: MIT
// The reference host's way to a keyboard in software. Its owner pulls the plug when nothing comes
// any more, and time passes for it alone.
#pragma once

#include <algorithm>
#include <vector>

#include "simulator/keyboard.h"
#include "simulator/report_queue.h"
#include "tests/campaign/reference_host.h"

namespace hollin::campaign {

class KeyboardLink : public ReferenceLink {
 public:
  // The keyboard is lent.
  explicit KeyboardLink(simulator::Keyboard& keyboard) : keyboard(keyboard) {}

  bool Open() override { return keyboard.Open(); }
  void Close() override { queue.Clear(); }

  bool Write(ByteView report) override {
    reports.emplace_back(report.begin(), report.end());
    simulator::Deliveries deliveries;
    const bool isTaken = keyboard.TakeReport(report, deliveries);
    queue.Add(deliveries);
    return isTaken;
  }

  int Read(std::span<uint8_t> report) override {
    if (queue.IsEmpty()) {
      keyboard.Unplug();
      return -1;
    }
    const simulator::Delivery delivery = queue.Take();
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
  simulator::ReportQueue queue;
};

}  // namespace hollin::campaign
