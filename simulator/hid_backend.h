// SPDX-License-Identifier: MIT
// What stands behind hidapi's C functions (simulator/hidapi_functions.cpp) in place of the kernel:
// sockets to simulators in the shared stand-in, keyboards in the same process in unit tests. Each
// library that contains the functions provides TheBackend.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace hollin::simulator {

struct ListedKeyboard {
  uint16_t vendorId = 0;
  uint16_t productId = 0;
  std::string path;
};

// One open of a keyboard, with a queue of reports of its own; closed by its destructor.
class OpenedKeyboard {
 public:
  static constexpr int kForEver = -1;

  OpenedKeyboard() = default;
  OpenedKeyboard(const OpenedKeyboard&) = delete;
  OpenedKeyboard& operator=(const OpenedKeyboard&) = delete;
  virtual ~OpenedKeyboard() = default;

  [[nodiscard]] virtual bool Write(std::span<const uint8_t> report) = 0;
  // The next report's size, 0 when none came in time, -1 when there will be none.
  [[nodiscard]] virtual int Read(std::span<uint8_t> report, int milliseconds) = 0;
};

class HidBackend {
 public:
  HidBackend() = default;
  HidBackend(const HidBackend&) = delete;
  HidBackend& operator=(const HidBackend&) = delete;
  virtual ~HidBackend() = default;

  // The keyboards that are plugged in; opens nothing.
  virtual std::vector<ListedKeyboard> List() = 0;
  // Null when the keyboard is gone or refuses.
  virtual std::unique_ptr<OpenedKeyboard> Open(const std::string& path) = 0;

  virtual void Enumerated() {}  // hid_enumerate was called
  virtual void FreedList() {}   // hid_free_enumeration was called
  virtual void Exited() {}      // hid_exit was called

  // Whether Record is to be called at all: making the lines takes time.
  [[nodiscard]] virtual bool RecordsCalls() const = 0;
  virtual void Record(const std::string& call) = 0;
};

HidBackend& TheBackend();

}  // namespace hollin::simulator
