// SPDX-License-Identifier: MIT
#include "app/window_options.h"

namespace hollin {
namespace {

constexpr const char* kVersion = "hollin " HOLLIN_VERSION "\n";

constexpr const char* kHelp =
    "Firmware updater for the TS30 keyboard\n"
    "Usage: hollin [OPTIONS] [PACKAGE]\n"
    "\n"
    "Positionals:\n"
    "  PACKAGE                     The update package (.dat) to open, or its file URI\n"
    "\n"
    "Options:\n"
    "  -h,--help                   Print this help message and exit\n"
    "  --version                   Display program version information and exit\n"
    "\n"
    "Without a package the window opens and asks for one. A second hollin hands its package to "
    "the\n"
    "first and ends. Options of the toolkit, such as -platform and -style, are taken as well.\n"
    "For updates without a window see hollin-cli.\n";

}  // namespace

std::string AnswerToOption(const std::string& argument) {
  if (argument == "--help" || argument == "-h") return kHelp;
  if (argument == "--version") return kVersion;
  return {};
}

}  // namespace hollin
