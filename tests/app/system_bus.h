// SPDX-License-Identifier: MIT
// A system bus for programs under test, on which there may be a logind in software.
#pragma once

#include <optional>
#include <string>
#include <utility>

#include "tests/support/subprocess.h"

namespace hollin {

class SystemBus {
 public:
  // Empty, and the system bus of the test's own process too.
  SystemBus();
  ~SystemBus();
  SystemBus(const SystemBus&) = delete;
  SystemBus& operator=(const SystemBus&) = delete;

  // What a program needs in order to be on this bus.
  [[nodiscard]] std::pair<std::string, std::string> Environment() const {
    return {"DBUS_SYSTEM_BUS_ADDRESS", address};
  }

  void StartLogind();
  // What logind holds now: what, who, why and how.
  [[nodiscard]] static std::string Inhibitors();
  [[nodiscard]] static bool IsHeldFor(const std::string& reason);

 private:
  Subprocess daemon;
  std::string address;
  std::optional<Subprocess> logind;
};

}  // namespace hollin
