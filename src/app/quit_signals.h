// SPDX-License-Identifier: MIT
// Turns the signals that ask a program to end (SIGTERM, SIGINT, SIGHUP) into a call on the main
// thread, from its event loop. System calls that they interrupt are restarted. A SIGHUP that was
// ignored at the start (nohup) stays ignored.
#pragma once

#include <functional>

namespace hollin {

// Once per process, on the main thread; holds until the process ends.
void CallOnQuitSignals(std::function<void()> quit);

}  // namespace hollin
