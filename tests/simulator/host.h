// SPDX-License-Identifier: MIT
// A host that speaks to a keyboard directly: it cuts messages into reports and puts the replies
// together again, by the letter of the report table.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <initializer_list>
#include <vector>

#include "base/bytes.h"
#include "simulator/keyboard.h"

namespace hollin::simulator {

// 0x51, total (4), offset (4), up to 55 bytes.
inline std::vector<Bytes> HostReports(const Bytes& message) {
  std::vector<Bytes> reports;
  for (size_t offset = 0; offset < message.size(); offset += 55) {
    Bytes report(64, 0);
    report[0] = 0x51;
    for (size_t i = 0; i < 4; i++) {
      report[1 + i] = static_cast<uint8_t>(message.size() >> (8 * i));
      report[5 + i] = static_cast<uint8_t>(offset >> (8 * i));
    }
    std::copy_n(message.begin() + static_cast<long>(offset),
                std::min<size_t>(55, message.size() - offset), report.begin() + 9);
    reports.push_back(report);
  }
  return reports;
}

class Host {
 public:
  explicit Host(Keyboard& keyboard) : keyboard(keyboard) {}

  // Sends a message; the payloads of the reports that answer it, one after another.
  Bytes Ask(const Bytes& message) {
    Deliveries deliveries;
    for (const Bytes& report : HostReports(message)) {
      taken = keyboard.TakeReport(report, deliveries);
    }
    Bytes payloads;
    for (const Delivery& delivery : deliveries) {
      const Bytes& report = delivery.report;
      if (report.size() < 64) continue;
      const auto length = std::min<size_t>(55, report[5] - report[1]);
      payloads.insert(payloads.end(), report.begin() + 9,
                      report.begin() + 9 + static_cast<long>(length));
    }
    last = deliveries;
    return payloads;
  }

  Keyboard& keyboard;
  Deliveries last;    // of the last message
  bool taken = true;  // whether its last report was
};

inline const Bytes kModeA1 = {0x01, 0x0A, 0x4D, 0x02};
inline const Bytes kModeA2 = {0x01, 0x0A, 0x4D, 0x01};
inline const Bytes kModeC1 = {0x01, 0x0A, 0x4D, 0x03};
inline const Bytes kEnd = {0x09, 0x00, 0x00, 0x00};
inline const Bytes kRefusal = {0xF0};

}  // namespace hollin::simulator
