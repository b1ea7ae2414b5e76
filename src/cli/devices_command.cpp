// SPDX-License-Identifier: MIT
#include "cli/devices_command.h"

#include <fmt/format.h>

#include <string>

#include "cli/json.h"
#include "cli/keyboard_report.h"

namespace hollin {
namespace {

using Keyboards = std::vector<ReportedKeyboard>;

std::string Ids(const Surroundings& surroundings) {
  return fmt::format("{:04x}:{:04x}", surroundings.vendorId, surroundings.productId);
}

std::string Line(const Keyboards& keyboards, size_t i) {
  const ReportedKeyboard& keyboard = keyboards[i];
  std::string line = fmt::format("{}: {}", i + 1, keyboard.listed.path);
  if (!keyboard.listed.serial.empty()) line += ", serial number " + keyboard.listed.serial;
  line += keyboard.mayOpen ? ", may be opened" : ", may not be opened";
  for (const std::string& user : keyboard.users) line += ", in use by " + user;
  if (keyboard.sameAs) line += fmt::format(", the same keyboard as {}", *keyboard.sameAs + 1);
  return line;
}

void PrintText(const Surroundings& surroundings, const Keyboards& keyboards,
               const Console& console) {
  PrintLine(console.out,
            fmt::format("Keyboards with the ids {}: {}{}", Ids(surroundings), keyboards.size(),
                        keyboards.size() == 1 ? "" : " (an update wants exactly one)"));
  for (size_t i = 0; i < keyboards.size(); i++) PrintLine(console.out, Line(keyboards, i));
}

Json DevicesJson(const Surroundings& surroundings, const Keyboards& keyboards) {
  Json devices = Json::array();
  for (const ReportedKeyboard& keyboard : keyboards) {
    devices.push_back({{"path", keyboard.listed.path},
                       {"serialNumber", keyboard.listed.serial},
                       {"interface", keyboard.listed.interface},
                       {"usagePage", keyboard.listed.usagePage},
                       {"usage", keyboard.listed.usage},
                       {"mayOpen", keyboard.mayOpen},
                       {"users", keyboard.users},
                       {"sameAs", keyboard.sameAs ? Json(*keyboard.sameAs) : Json()}});
  }
  return {{"vendorId", surroundings.vendorId},
          {"productId", surroundings.productId},
          {"count", keyboards.size()},
          {"devices", devices}};
}

}  // namespace

ExitCode RunDevicesCommand(const DevicesArguments& arguments, const Console& console,
                           const Surroundings& surroundings) {
  const Keyboards keyboards = ReportKeyboards(surroundings, FindHidrawNodes(surroundings));
  if (arguments.json) {
    PrintJson(console.out, DevicesJson(surroundings, keyboards));
  } else {
    PrintText(surroundings, keyboards, console);
  }
  return keyboards.size() == 1 ? ExitCode::kDone : ExitCode::kKeyboard;
}

}  // namespace hollin
