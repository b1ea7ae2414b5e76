// SPDX-License-Identifier: MIT
// A keyboard for whole programs: ts30-simulator in a process of its own, reached by programs that
// run with the environment below.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "tests/support/subprocess.h"
#include "tests/support/temp_folder.h"

namespace hollin {

// Where keyboards of one test plug in.
class SimulatedBus {
 public:
  // What a program needs in order to find the keyboards of this bus and no others. Its pauses take
  // no time.
  [[nodiscard]] std::vector<std::pair<std::string, std::string>> Environment() const;

  [[nodiscard]] const std::string& Folder() const { return folder.Path(); }
  // Where the programs of this bus have their lock.
  [[nodiscard]] const std::string& RuntimeFolder() const { return recordFolder.Path(); }
  // The hidapi calls, reports and pauses of the programs so far, one a line.
  [[nodiscard]] std::string Record() const;

 private:
  TempFolder folder;
  TempFolder recordFolder;
};

// Is plugged in when the constructor returns.
class SimulatorProcess {
 public:
  explicit SimulatorProcess(const SimulatedBus& bus, const std::vector<std::string>& options = {});

  void Signal(int signal) const { process.Signal(signal); }
  [[nodiscard]] bool AwaitHalt() const { return process.AwaitHalt(); }

 private:
  Subprocess process;
};

}  // namespace hollin
