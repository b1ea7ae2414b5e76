// SPDX-License-Identifier: MIT
// The arguments of hollin-cli, as data.
#pragma once

#include <string>
#include <variant>
#include <vector>

#include "cli/exit_code.h"

namespace hollin {

struct UpdateArguments {
  std::string package;
  bool json = false;
};

struct InspectArguments {
  std::string package;
  bool json = false;
  bool strict = false;  // findings are an error
};

struct DevicesArguments {
  bool json = false;
};

struct DoctorArguments {
  bool json = false;
};

struct PackInput {
  std::string dataType;
  std::string descriptionPath;
  std::string imagePath;
};

struct PackArguments {
  std::string model;
  std::string firmwareVersion;
  std::vector<std::string> keys;  // at most three
  std::vector<PackInput> packs;   // one or two
  std::string output;
  bool json = false;
  bool strict = false;
};

// There is nothing to run: help or the version was asked for, or the arguments make no sense.
struct NothingToRun {
  ExitCode exitCode = ExitCode::kDone;
  bool json = false;
  std::string text;  // for standard output with kDone, where it has lines of its own, else one
                     // message for standard error, not escaped
};

using Arguments = std::variant<NothingToRun, UpdateArguments, InspectArguments, PackArguments,
                               DevicesArguments, DoctorArguments>;

// `arguments` without the program's name.
[[nodiscard]] Arguments ParseArguments(std::vector<std::string> arguments);

}  // namespace hollin
