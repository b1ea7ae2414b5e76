// SPDX-License-Identifier: MIT
// Keeps the log's lines for a test to look at, while it lives.
#pragma once

#include <string>
#include <vector>

#include "base/log.h"

namespace hollin {

class RecordedLog {
 public:
  RecordedLog() {
    SetLogFunction([this](const std::string& line) { lines.push_back(line); });
  }
  ~RecordedLog() { SetLogFunction({}); }
  RecordedLog(const RecordedLog&) = delete;
  RecordedLog& operator=(const RecordedLog&) = delete;

  std::vector<std::string> lines;
};

}  // namespace hollin
