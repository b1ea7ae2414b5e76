// SPDX-License-Identifier: MIT
// A keyboard whose answers are what the fuzzer makes of a sound one's: each report that is read
// takes bytes of the input, which say what becomes of it. The same input makes the same of it for
// whoever reads, so that two hosts can be compared.
#pragma once

#include <algorithm>
#include <cstdint>
#include <deque>
#include <optional>
#include <span>

#include "simulator/keyboard.h"

namespace hollin::fuzz {

class HostileKeyboard {
 public:
  HostileKeyboard(simulator::KeyboardOptions options, ByteView input)
      : keyboard(std::move(options)), input(input) {}

  bool Write(ByteView report) {
    if (++written > kMostReports) keyboard.Unplug();  // its owner has enough of it
    simulator::Deliveries deliveries;
    const bool isTaken = keyboard.TakeReport(report, deliveries);
    for (simulator::Delivery& delivery : deliveries) queue.push_back(std::move(delivery.report));
    return isTaken;
  }

  // -1 where nothing would ever come: then the plug is pulled.
  int Read(std::span<uint8_t> report) {
    const uint8_t choice = Next();
    if (choice == 0xFF) return -1;
    if (choice >= 0xF8 && !last.empty()) return Give(last, report);
    if (queue.empty()) {
      keyboard.Unplug();
      return -1;
    }
    last = queue.front();
    queue.pop_front();
    Spoil(choice, last);
    return Give(last, report);
  }

  void PassTime(std::chrono::milliseconds length) { keyboard.PassTime(length); }
  simulator::Keyboard& Inner() { return keyboard; }

 private:
  static constexpr size_t kMostReports = 20000;

  // Zeros when the input is used up: a sound keyboard.
  uint8_t Next() {
    if (input.empty()) return 0;
    const uint8_t byte = input.front();
    input = input.subspan(1);
    return byte;
  }

  void Spoil(uint8_t choice, Bytes& report) {
    const auto change = [&](size_t index) {
      if (index < report.size()) report[index] = Next();
    };
    if (choice < 0x80) return;
    if (choice < 0xC0) return change(choice - 0x80);  // one byte
    if (choice < 0xC8) {                              // the offset, the total or both
      for (size_t i = 1; i <= 8; i++) change(i);
    } else if (choice < 0xD0) {
      report.resize(std::min<size_t>(Next(), 64));  // a short report
    } else if (choice < 0xD8) {
      for (size_t i = 9; i < 24; i++) change(i);  // the payload
    } else if (choice < 0xE0) {
      queue.push_front(report);  // twice
    }
  }

  static int Give(const Bytes& bytes, std::span<uint8_t> report) {
    std::copy(bytes.begin(), bytes.end(), report.begin());
    return static_cast<int>(bytes.size());
  }

  simulator::Keyboard keyboard;
  ByteView input;
  std::deque<Bytes> queue;
  Bytes last;
  size_t written = 0;
};

}  // namespace hollin::fuzz
