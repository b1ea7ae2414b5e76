// SPDX-License-Identifier: MIT
#include "cli/signal_watch.h"

#include <array>
#include <cerrno>
#include <utility>

namespace hollin {
namespace {

// Every signal that ends a program and comes from outside.
constexpr std::array<int, 12> kWatched = {SIGINT,  SIGTERM, SIGHUP,  SIGQUIT,   SIGALRM, SIGVTALRM,
                                          SIGPROF, SIGUSR2, SIGPOLL, SIGSTKFLT, SIGPWR,  SIGXCPU};
constexpr int kWakeUp = SIGUSR1;  // sent to the watching thread when its work is done

bool IsIgnored(int signal) {
  struct sigaction action = {};
  return sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

sigset_t WatchedSignals() {
  sigset_t set;
  sigemptyset(&set);
  sigaddset(&set, kWakeUp);
  for (const int signal : kWatched) {
    if (!IsIgnored(signal)) sigaddset(&set, signal);
  }
  for (int signal = SIGRTMIN; signal <= SIGRTMAX; signal++) sigaddset(&set, signal);
  return set;
}

timespec ToTimespec(std::chrono::milliseconds length) {
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(length);
  const std::chrono::nanoseconds rest = length - seconds;
  return {.tv_sec = static_cast<time_t>(seconds.count()),
          .tv_nsec = static_cast<long>(rest.count())};
}

// What an action throws (out of memory) ends here: no message is worth the update.
void Attempt(const std::function<void()>& action) {
  try {
    action();
  } catch (...) {
    return;
  }
}

}  // namespace

void HoldBackSignals() {
  const sigset_t watched = WatchedSignals();
  static_cast<void>(pthread_sigmask(SIG_BLOCK, &watched, nullptr));
}

bool IsSignalHeldBack() {
  const sigset_t watched = WatchedSignals();
  sigset_t pending;
  sigset_t both;
  sigemptyset(&pending);
  static_cast<void>(sigpending(&pending));
  sigdelset(&pending, kWakeUp);
  return sigandset(&both, &watched, &pending) == 0 && sigisemptyset(&both) == 0;
}

SignalWatch::SignalWatch(Actions watchActions)
    : actions(std::move(watchActions)), thread([this] { Watch(); }) {}

SignalWatch::~SignalWatch() {
  isEnding = true;
  static_cast<void>(pthread_kill(thread.native_handle(), kWakeUp));
  thread.join();
}

void SignalWatch::Watch() {
  const sigset_t watched = WatchedSignals();
  const timespec interval = ToTimespec(actions.tickInterval);
  while (!isEnding) {
    const int signal = sigtimedwait(&watched, nullptr, &interval);
    if (signal > 0) {
      Handle(signal);
    } else if (errno == EAGAIN && !isEnding) {
      Attempt(actions.tick);
    }
  }
}

void SignalWatch::Handle(int signal) {
  if (signal == kWakeUp) return;
  if (signal != SIGINT) return Attempt(actions.leave);
  interrupts++;
  if (interrupts == 1) return Attempt(actions.first);
  if (interrupts == 2) return Attempt(actions.second);
  Attempt(actions.leave);
}

}  // namespace hollin
