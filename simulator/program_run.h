// SPDX-License-Identifier: MIT
// Runs one program on a keyboard of its own: the keyboard is served by a second process, the
// stand-in for hidapi is put in front of the real one, and both go with the program.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace hollin::simulator {

// The exit code where the program cannot be started, as shells have it.
inline constexpr int kProgramNotFound = 127;

// Serves a keyboard in `folder` until a signal ends it. Calls `ready` once, when the keyboard can
// be found; its result becomes the exit code of the serving process.
using ServeIn = std::function<int(const std::string& folder, const std::function<void()>& ready)>;

// Waits until `program` (its name or path, then its arguments) has ended and returns its exit code:
// 128 and the signal's number when a signal ended it, 1 when the system fails the keyboard. What a
// terminal sends on Ctrl-C is the program's business.
[[nodiscard]] int RunOnKeyboard(const std::vector<std::string>& program, const ServeIn& serve);

}  // namespace hollin::simulator
