// SPDX-License-Identifier: MIT
// The stand-in's record of what a program does: one line per call and per pause, appended to the
// file that TS30_STANDIN_LOG names. Safe from several threads.
#pragma once

#include <string>

namespace hollin::simulator {

[[nodiscard]] bool LogWanted();
void LogLine(std::string line);

}  // namespace hollin::simulator
