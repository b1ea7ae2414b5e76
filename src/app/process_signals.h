// SPDX-License-Identifier: MIT
// What the programs do about signals.
#pragma once

#include <csignal>

namespace hollin {

// A file size limit then shows as a short write, which is noticed, instead of ending the program.
// At program start.
void IgnoreFileSizeSignal();

// What nobody reads any more, output or a display's connection, is then a failed write instead of
// the program's end, in the middle of an update as it may be. At program start.
void IgnoreBrokenPipeSignal();

// Blocks all signals in the calling thread as long as it lives, and in threads that are started
// meanwhile for good: one that interrupts a read would end the update. For starting the thread that
// talks to the keyboard.
class AllSignalsBlocked {
 public:
  AllSignalsBlocked();
  ~AllSignalsBlocked();
  AllSignalsBlocked(const AllSignalsBlocked&) = delete;
  AllSignalsBlocked& operator=(const AllSignalsBlocked&) = delete;

 private:
  sigset_t before{};
};

}  // namespace hollin
