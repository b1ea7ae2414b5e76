// SPDX-License-Identifier: MIT
#include "cli/json.h"

#include <string>

namespace hollin {
namespace {

std::string Dump(const Json& json, int indent) {
  return json.dump(indent, ' ', false, Json::error_handler_t::replace);
}

}  // namespace

void PrintJson(std::ostream& stream, const Json& json) { stream << Dump(json, 2) << std::endl; }

void PrintJsonLine(std::ostream& stream, const Json& json) {
  stream << Dump(json, -1) << std::endl;
}

Json ErrorJson(ExitCode exitCode, std::string_view code, std::string_view message) {
  return {
      {"error", {{"code", code}, {"message", message}, {"exitCode", static_cast<int>(exitCode)}}}};
}

}  // namespace hollin
