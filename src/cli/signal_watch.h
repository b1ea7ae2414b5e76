// SPDX-License-Identifier: MIT
// What Ctrl-C and its like do to an update. An interrupted keyboard must be updated again, so the
// first Ctrl-C is only answered with that advice, the second ends the update at the next step, and
// the third, like the signals that ask a program to end, ends it at once.
//
// No signal has a handler: one that interrupts a read would fail the step. The signals are blocked
// in every thread and a thread of its own waits for them.
#pragma once

#include <atomic>
#include <chrono>
#include <csignal>
#include <functional>
#include <thread>

namespace hollin {

// Blocks the signals in the calling thread and the threads that it starts later; what arrives waits
// for a SignalWatch. Signals that are ignored (nohup, a job in the background) stay ignored.
void HoldBackSignals();

// Whether a signal has arrived that waits for a SignalWatch.
[[nodiscard]] bool IsSignalHeldBack();

class SignalWatch {
 public:
  // All are called on the watching thread; what they throw is dropped.
  struct Actions {
    std::function<void()> first;   // Ctrl-C for the first time
    std::function<void()> second;  // the update is going to stop
    std::function<void()> leave;   // has to end the program; where it does not (in tests), the
                                   // watch goes on
    std::function<void()> tick;    // called again and again while nothing arrives
    std::chrono::milliseconds tickInterval{1000};
  };

  // Starts to watch, in a program that has called HoldBackSignals.
  explicit SignalWatch(Actions actions);
  ~SignalWatch();
  SignalWatch(const SignalWatch&) = delete;
  SignalWatch& operator=(const SignalWatch&) = delete;

  [[nodiscard]] bool IsStopWanted() const { return interrupts >= 2; }

 private:
  void Watch();
  void Handle(int signal);

  Actions actions;
  std::atomic<int> interrupts = 0;
  std::atomic<bool> isEnding = false;
  std::thread thread;
};

}  // namespace hollin
