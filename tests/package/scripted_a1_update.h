// SPDX-License-Identifier: MIT
// Linked in the place of A1Update: loads what a test wants it to load, and tells what it was asked
// to do.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "updaters/a1_update.h"

namespace hollin {

struct ScriptedA1 {
  std::vector<std::string> story;
  std::function<bool(A1Update& updater)> load;  // instead of reading the two files
};

ScriptedA1& Scripted();

// Reads both files and plans three steps, as an updater does.
bool LoadHonestly(A1Update& updater);

}  // namespace hollin
