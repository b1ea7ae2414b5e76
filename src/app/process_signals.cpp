// SPDX-License-Identifier: MIT
#include "app/process_signals.h"

namespace hollin {

void IgnoreFileSizeSignal() { static_cast<void>(std::signal(SIGXFSZ, SIG_IGN)); }

void IgnoreBrokenPipeSignal() { static_cast<void>(std::signal(SIGPIPE, SIG_IGN)); }

AllSignalsBlocked::AllSignalsBlocked() {
  sigset_t all;
  sigfillset(&all);
  static_cast<void>(pthread_sigmask(SIG_BLOCK, &all, &before));
}

AllSignalsBlocked::~AllSignalsBlocked() {
  static_cast<void>(pthread_sigmask(SIG_SETMASK, &before, nullptr));
}

}  // namespace hollin
