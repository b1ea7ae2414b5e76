// SPDX-License-Identifier: MIT
#include <exception>
#include <iostream>
#include <vector>

#include "app/process_signals.h"
#include "cli/program.h"

int main(int argc, char* argv[]) {
  hollin::IgnoreFileSizeSignal();
  hollin::IgnoreBrokenPipeSignal();
  try {
    const std::vector<std::string> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
    return static_cast<int>(hollin::RunProgram(arguments, hollin::StandardConsole()));
  } catch (const std::exception& error) {
    std::cerr << "hollin-cli: " << error.what() << std::endl;
    return static_cast<int>(hollin::ExitCode::kFailed);
  }
}
