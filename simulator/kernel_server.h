// SPDX-License-Identifier: MIT
// Shows one keyboard to the system through a port of the kernel's, for as long as it is plugged in.
// The control signals unplug it, plug it in again and end the service. A real wire cannot make the
// host's reads or writes fail while the keyboard stays: of the faults that ask for it, a failing
// write loses the report and the others do nothing.
// One thread.
#pragma once

#include <deque>

#include "simulator/control_signals.h"
#include "simulator/kernel_port.h"
#include "simulator/keyboard.h"
#include "simulator/news.h"

namespace hollin::simulator {

class KernelServer {
 public:
  // The keyboard and the port are lent. `verbose` prints what the keyboard is asked.
  KernelServer(Keyboard& keyboard, KernelPort& port, bool verbose)
      : keyboard(keyboard), port(port), news(verbose) {}

  // Blocks the signals and plugs the keyboard in. False, with the reason, when that fails.
  [[nodiscard]] bool Start(std::string& problem);
  // Serves until a signal ends it. False on an error of the system.
  [[nodiscard]] bool Run();

 private:
  void TakeReport();
  void SendWaiting();
  void SendLast();
  void FollowPlug();

  Keyboard& keyboard;
  KernelPort& port;
  ControlSignals signals;
  News news;
  std::deque<Bytes> waiting;  // reports that the host has not fetched yet
};

}  // namespace hollin::simulator
