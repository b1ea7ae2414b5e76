// SPDX-License-Identifier: MIT
// The text form of a keyboard's options: NAME=VALUE, as the program takes them one by one and from
// files. The names and their meaning are one table, which the help prints.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "simulator/keyboard.h"

namespace hollin::simulator {

struct OptionDescription {
  const char* name;
  const char* value;  // what the value looks like
  const char* meaning;
};
[[nodiscard]] std::span<const OptionDescription> OptionDescriptions();

// Applies one "NAME=VALUE", blanks around both allowed. False for an unknown name or a value that
// does not suit it; the options are then as they were.
[[nodiscard]] bool SetOption(std::string_view text, KeyboardOptions& options);

// Applies a text of one option a line; empty lines and those that begin with "#" are skipped. False
// at the first bad line, which is then in `badLine`.
[[nodiscard]] bool SetOptions(std::string_view text, KeyboardOptions& options,
                              std::string& badLine);

}  // namespace hollin::simulator
