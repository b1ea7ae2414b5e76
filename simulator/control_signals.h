// SPDX-License-Identifier: MIT
// The signals that control the simulator's program: SIGUSR1 pulls the plug, SIGUSR2 puts it back
// in, SIGTERM and SIGINT end the program. One thread.
#pragma once

#include "simulator/keyboard.h"

namespace hollin::simulator {

class ControlSignals {
 public:
  ControlSignals() = default;
  ControlSignals(const ControlSignals&) = delete;
  ControlSignals& operator=(const ControlSignals&) = delete;
  ~ControlSignals();

  // From then on the signals wait to be obeyed. False on an error of the system.
  [[nodiscard]] bool Block();
  // Readable while a signal waits.
  [[nodiscard]] int File() const { return file; }
  // Obeys one waiting signal, if there is any; false for those that end the program.
  [[nodiscard]] bool Obey(Keyboard& keyboard) const;

 private:
  int file = -1;
};

}  // namespace hollin::simulator
