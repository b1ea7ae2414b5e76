// SPDX-License-Identifier: MIT
#include "simulator/keyboard_option.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <vector>

#include "base/text.h"
#include "simulator/number.h"

namespace hollin::simulator {
namespace {

struct Option {
  OptionDescription description;
  bool (*set)(std::string_view value, KeyboardOptions& options);
};

template <typename Number>
bool SetNumber(std::string_view text, Number& number, uint64_t least = 0) {
  uint64_t value = 0;
  if (!ParseNumber(text, std::numeric_limits<Number>::max(), value) || value < least) return false;
  number = static_cast<Number>(value);
  return true;
}

const Option kOptions[] = {
    {{"a1.mode", "NUMBER", "the mode number that selects the A1 flash (2)"},
     [](std::string_view value, KeyboardOptions& to) { return SetNumber(value, to.a1.mode); }},
    {{"a1.size", "BYTES", "its size (1M)"},
     [](std::string_view value, KeyboardOptions& to) { return SetNumber(value, to.a1.size, 1); }},
    {{"a1.base", "ADDRESS", "where the window begins that it is written through (0)"},
     [](std::string_view value, KeyboardOptions& to) { return SetNumber(value, to.a1.base); }},
    {{"a1.file", "PATH", "keeps its contents"},
     [](std::string_view value, KeyboardOptions& to) {
       to.a1.file = value;
       return true;
     }},
};

}  // namespace

std::span<const OptionDescription> OptionDescriptions() {
  static const auto descriptions = [] {
    std::vector<OptionDescription> all;
    for (const Option& option : kOptions) all.push_back(option.description);
    return all;
  }();
  return descriptions;
}

bool SetOption(std::string_view text, KeyboardOptions& options) {
  const size_t equals = text.find('=');
  if (equals == std::string_view::npos) return false;
  const std::string_view name = Trim(text.substr(0, equals));
  const auto* option = std::ranges::find(
      kOptions, name, [](const Option& each) { return std::string_view(each.description.name); });
  return option != std::end(kOptions) && option->set(Trim(text.substr(equals + 1)), options);
}

bool SetOptions(std::string_view text, KeyboardOptions& options, std::string& badLine) {
  while (!text.empty()) {
    const size_t end = std::min(text.find('\n'), text.size());
    const std::string_view line = Trim(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
    if (line.empty() || line.starts_with('#')) continue;
    if (SetOption(line, options)) continue;
    badLine = line;
    return false;
  }
  return true;
}

}  // namespace hollin::simulator
