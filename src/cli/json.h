// SPDX-License-Identifier: MIT
// JSON on standard output. docs/schemas/ has a schema for everything that is written.
#pragma once

#include <nlohmann/json.hpp>
#include <ostream>
#include <string_view>

#include "cli/exit_code.h"

namespace hollin {

using Json = nlohmann::ordered_json;

// A document of several lines, or one object in one line; what is not UTF-8 becomes U+FFFD.
void PrintJson(std::ostream& stream, const Json& json);
void PrintJsonLine(std::ostream& stream, const Json& json);

// What a command writes that cannot do its work: `code` stays the same for scripts.
[[nodiscard]] Json ErrorJson(ExitCode exitCode, std::string_view code, std::string_view message);

}  // namespace hollin
