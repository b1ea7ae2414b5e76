// SPDX-License-Identifier: MIT
// The keyboards that the shared stand-in for hidapi reaches: the simulators with a socket in the
// folder $TS30_SIMULATOR_DIR, one for each; none when the variable is unset or empty.
#pragma once

#include <chrono>

#include "simulator/hid_backend.h"

namespace hollin::simulator {

class SocketBackend : public HidBackend {
 public:
  std::vector<ListedKeyboard> List() override;
  std::unique_ptr<OpenedKeyboard> Open(const std::string& path) override;
  [[nodiscard]] bool RecordsCalls() const override;
  void Record(const std::string& call) override;
};

// Tells every open keyboard that the program skipped a pause. May be called from any thread.
void TellSkippedTime(std::chrono::nanoseconds length);

}  // namespace hollin::simulator
