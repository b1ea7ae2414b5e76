// SPDX-License-Identifier: MIT
#include "cli/program.h"

#include "app/device_settings.h"
#include "cli/arguments.h"
#include "cli/pack_command.h"
#include "cli/text_display.h"
#include "cli/update_command.h"
#include "device/hid_device.h"

namespace hollin {
namespace {

ExitCode Run(const NothingToRun& nothing, const Console& console) {
  if (nothing.exitCode == ExitCode::kDone) {
    console.out << nothing.text << std::flush;
  } else {
    PrintLine(console.err, "hollin-cli: " + nothing.text);
    PrintLine(console.err, "Run hollin-cli --help for more information.");
  }
  return nothing.exitCode;
}

ExitCode Run(const UpdateArguments& arguments, const Console& console) {
  const DeviceSettings settings = ReadDeviceSettings();
  HidDevice::vendorId = settings.vendorId;
  HidDevice::productId = settings.productId;
  TextDisplay display(console);
  return RunUpdateCommand(arguments, display);
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
