// SPDX-License-Identifier: MIT
#include "cli/console.h"

#include <sys/ioctl.h>
#include <unistd.h>

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

}  // namespace

Console StandardConsole() {
  return {.out = std::cout, .err = std::cerr, .canDraw = CanDraw(), .width = TerminalWidth};
}

void PrintLine(std::ostream& stream, std::string_view text) {
  stream << EscapeControlCharacters(text) << std::endl;
}

}  // namespace hollin
