// SPDX-License-Identifier: MIT
// Every wait of the program goes through here, so that tests can record the waits instead of
// waiting.
#pragma once

#include <chrono>
#include <functional>

namespace hollin {

using PauseFunction = std::function<void(std::chrono::milliseconds)>;

// Blocks the calling thread for the whole length, signals or not.
void Pause(std::chrono::milliseconds length);

// Replaces what Pause does; an empty function brings the real wait back. Not to be called while a
// thread may pause.
void SetPauseFunction(PauseFunction function);

}  // namespace hollin
