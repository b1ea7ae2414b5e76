// SPDX-License-Identifier: MIT
// Records the pauses instead of waiting, while it lives.
#pragma once

#include <chrono>
#include <vector>

#include "base/pause.h"

namespace hollin {

class RecordedPause {
 public:
  RecordedPause() {
    SetPauseFunction([this](std::chrono::milliseconds length) { lengths.push_back(length); });
  }
  ~RecordedPause() { SetPauseFunction({}); }
  RecordedPause(const RecordedPause&) = delete;
  RecordedPause& operator=(const RecordedPause&) = delete;

  std::vector<std::chrono::milliseconds> lengths;
};

}  // namespace hollin
