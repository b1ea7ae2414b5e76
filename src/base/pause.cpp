// SPDX-License-Identifier: MIT
#include "base/pause.h"

#include <thread>
#include <utility>

namespace hollin {
namespace {

PauseFunction& Replacement() {
  // Never destroyed: a worker may still pause while the process exits.
  static auto& function = *new PauseFunction;
  return function;
}

}  // namespace

void Pause(std::chrono::milliseconds length) {
  if (Replacement()) return Replacement()(length);
  std::this_thread::sleep_for(length);
}

void SetPauseFunction(PauseFunction function) { Replacement() = std::move(function); }

}  // namespace hollin
