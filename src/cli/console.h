// SPDX-License-Identifier: MIT
// Where the command line writes. Everything that is shown goes through here, so that tests can read
// it and nothing from a package or a path can steer a terminal.
#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <ostream>
#include <string_view>

namespace hollin {

struct Console {
  std::ostream& out;
  std::ostream& err;
  bool canDraw = false;             // `out` is a terminal on which a line can be drawn again
  std::function<size_t()> width{};  // of that terminal, in columns; asked at every drawing
  // Whether both streams would take a line now. A full pipe or a terminal that was halted does not,
  // and whoever writes there waits.
  std::function<bool()> takesLines = [] { return true; };
};

// How long the thread that waits for signals waits for the other one to write its line. An output
// that is stalled takes for ever.
inline constexpr std::chrono::milliseconds kLongestWaitForLine{100};

// Standard output and standard error.
[[nodiscard]] Console StandardConsole();

// Writes one line, with control characters escaped, and has it appear at once.
void PrintLine(std::ostream& stream, std::string_view text);

}  // namespace hollin
