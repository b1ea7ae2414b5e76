// SPDX-License-Identifier: MIT
#include "simulator/control_signals.h"

#include <sys/signalfd.h>
#include <unistd.h>

#include <csignal>

namespace hollin::simulator {

ControlSignals::~ControlSignals() {
  if (file >= 0) close(file);
}

bool ControlSignals::Block() {
  sigset_t signals;
  sigemptyset(&signals);
  for (int number : {SIGUSR1, SIGUSR2, SIGTERM, SIGINT}) sigaddset(&signals, number);
  sigprocmask(SIG_BLOCK, &signals, nullptr);
  file = signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK);
  return file >= 0;
}

bool ControlSignals::Obey(Keyboard& keyboard) const {
  signalfd_siginfo info{};
  if (read(file, &info, sizeof info) != sizeof info) return true;
  if (info.ssi_signo == SIGUSR1) keyboard.Unplug();
  if (info.ssi_signo == SIGUSR2) keyboard.Replug();
  return info.ssi_signo == SIGUSR1 || info.ssi_signo == SIGUSR2;
}

}  // namespace hollin::simulator
