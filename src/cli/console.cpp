// SPDX-License-Identifier: MIT
#include "cli/console.h"

#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <iostream>

#include "base/text.h"

namespace hollin {
namespace {

constexpr size_t kUsualWidth = 80;

size_t TerminalWidth() {
  winsize size = {};
  const bool isKnown = ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
  return isKnown ? size.ws_col : kUsualWidth;
}

bool CanDraw() {
  const char* const kind = std::getenv("TERM");
  const bool isDumb = kind == nullptr || std::string_view(kind) == "dumb";
  return !isDumb && isatty(STDOUT_FILENO) != 0;
}

// A stream that is closed takes everything, by failing.
bool TakesLines() {
  std::array<pollfd, 2> streams = {{{.fd = STDOUT_FILENO, .events = POLLOUT, .revents = 0},
                                    {.fd = STDERR_FILENO, .events = POLLOUT, .revents = 0}}};
  static_cast<void>(poll(streams.data(), streams.size(), 0));
  return std::all_of(streams.begin(), streams.end(),
                     [](const pollfd& stream) { return stream.revents != 0; });
}

}  // namespace

Console StandardConsole() {
  return {.out = std::cout,
          .err = std::cerr,
          .canDraw = CanDraw(),
          .width = TerminalWidth,
          .takesLines = TakesLines};
}

void PrintLine(std::ostream& stream, std::string_view text) {
  stream << EscapeControlCharacters(text) << std::endl;
}

}  // namespace hollin
