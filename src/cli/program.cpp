// SPDX-License-Identifier: MIT
#include "cli/program.h"

#include "app/device_settings.h"
#include "cli/arguments.h"
#include "cli/devices_command.h"
#include "cli/doctor_command.h"
#include "cli/inspect_command.h"
#include "cli/json.h"
#include "cli/json_display.h"
#include "cli/pack_command.h"
#include "cli/surroundings.h"
#include "cli/text_display.h"
#include "cli/update_command.h"
#include "device/hid_device.h"

namespace hollin {
namespace {

ExitCode RunForJson(const NothingToRun& nothing, const Console& console) {
  if (nothing.exitCode == ExitCode::kDone) {
    PrintJson(console.out, {{"text", nothing.text}});
  } else {
    PrintJson(console.out, ErrorJson(nothing.exitCode, "usage", nothing.text));
  }
  return nothing.exitCode;
}

ExitCode Run(const NothingToRun& nothing, const Console& console) {
  if (nothing.json) return RunForJson(nothing, console);
  if (nothing.exitCode == ExitCode::kDone) {
    console.out << nothing.text << std::flush;
  } else {
    PrintLine(console.err, "hollin-cli: " + nothing.text);
    PrintLine(console.err, "Run hollin-cli --help for more information.");
  }
  return nothing.exitCode;
}

ExitCode Run(const InspectArguments& arguments, const Console& console) {
  return RunInspectCommand(arguments, console);
}

ExitCode Run(const UpdateArguments& arguments, const Console& console) {
  const DeviceSettings settings = ReadDeviceSettings();
  HidDevice::vendorId = settings.vendorId;
  HidDevice::productId = settings.productId;
  if (arguments.json) {
    JsonDisplay display(console);
    return RunUpdateCommand(arguments, display);
  }
  TextDisplay display(console);
  return RunUpdateCommand(arguments, display);
}

ExitCode Run(const DevicesArguments& arguments, const Console& console) {
  return RunDevicesCommand(arguments, console, ReadSurroundings());
}

ExitCode Run(const DoctorArguments& arguments, const Console& console) {
  return RunDoctorCommand(arguments, console, ReadSurroundings());
}

ExitCode Run(const PackArguments& arguments, const Console& console) {
  return RunPackCommand(arguments, console);
}

}  // namespace

ExitCode RunProgram(const std::vector<std::string>& arguments, const Console& console) {
  return std::visit([&](const auto& parsed) { return Run(parsed, console); },
                    ParseArguments(arguments));
}

}  // namespace hollin
