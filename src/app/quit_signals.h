// SPDX-License-Identifier: MIT
// How others than the user ask the program to end. Each becomes a call on the main thread, from its
// event loop; each is set up once per process, on the main thread, and holds until the process
// ends.
#pragma once

#include <functional>

namespace hollin {

// The signals SIGTERM, SIGINT and SIGHUP. System calls that they interrupt are restarted. A SIGHUP
// that was ignored at the start (nohup) stays ignored.
void CallOnQuitSignals(std::function<void()> quit);

// The desktop's own request, which would otherwise close the windows.
void CallOnQuitEvent(std::function<void()> quit);

}  // namespace hollin
