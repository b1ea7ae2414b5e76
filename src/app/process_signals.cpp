// SPDX-License-Identifier: MIT
#include "app/process_signals.h"

#include <csignal>

namespace hollin {

void IgnoreFileSizeSignal() { static_cast<void>(std::signal(SIGXFSZ, SIG_IGN)); }

void IgnoreBrokenPipeSignal() { static_cast<void>(std::signal(SIGPIPE, SIG_IGN)); }

void BlockSignalsInThisThread() {
  sigset_t all;
  sigfillset(&all);
  static_cast<void>(pthread_sigmask(SIG_BLOCK, &all, nullptr));
}

}  // namespace hollin
