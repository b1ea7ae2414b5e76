// SPDX-License-Identifier: MIT
#include "cli/arguments.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <sstream>
#include <utility>

namespace hollin {
namespace {

constexpr size_t kMostKeys = 3;
constexpr size_t kMostPacks = 2;

// The image comes last and may have colons in its path.
bool ParsePackInput(const std::string& text, PackInput& input) {
  const size_t first = text.find(':');
  const size_t second = first == std::string::npos ? first : text.find(':', first + 1);
  if (second == std::string::npos) return false;
  input = {.dataType = text.substr(0, first),
           .descriptionPath = text.substr(first + 1, second - first - 1),
           .imagePath = text.substr(second + 1)};
  return !input.dataType.empty() && !input.descriptionPath.empty() && !input.imagePath.empty();
}

// An option that is given once for each value. The values are taken as they are: the library's own
// lists give some characters a meaning.
CLI::Option* AddRepeated(CLI::App& app, const std::string& name, const std::string& valueName,
                         const CLI::callback_t& take, const std::string& help) {
  return app.add_option(name, take, help)
      ->type_name(valueName)
      ->expected(1)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

void AddJson(CLI::App& command, bool& json, const std::string& help) {
  command.add_flag("--json", json, help);
}

void AddPackage(CLI::App& command, std::string& package) {
  command.add_option("PACKAGE", package, "The update package (.dat)")->required()->type_name("");
}

void AddUpdate(CLI::App& app, UpdateArguments& update) {
  CLI::App* const command = app.add_subcommand("update", "Write a package into the keyboard");
  AddPackage(*command, update.package);
  AddJson(*command, update.json, "Tell the progress as JSON, one object a line");
}

void AddInspect(CLI::App& app, InspectArguments& inspect) {
  CLI::App* const command = app.add_subcommand(
      "inspect", "Show what is inside a package, why it is refused, and what may surprise in it");
  AddPackage(*command, inspect.package);
  AddJson(*command, inspect.json, "Write JSON");
  command->add_flag("--strict", inspect.strict, "Findings are an error (exit code 3)");
}

CLI::callback_t TakeKeys(std::vector<std::string>& keys) {
  return [&keys](const CLI::results_t& values) {
    if (values.size() > kMostKeys) throw CLI::ValidationError("--key", "at most three buttons");
    keys = values;
    return true;
  };
}

CLI::callback_t TakePacks(std::vector<PackInput>& packs) {
  return [&packs](const CLI::results_t& values) {
    if (values.size() > kMostPacks) throw CLI::ValidationError("--pack", "at most two packs");
    packs.resize(values.size());
    return std::equal(values.begin(), values.end(), packs.begin(), ParsePackInput);
  };
}

void AddPack(CLI::App& app, PackArguments& pack) {
  CLI::App* const command =
      app.add_subcommand("pack", "Make a package from flash descriptions and images");
  command->add_option("--model", pack.model, "Model of the keyboard, up to 16 bytes")
      ->required()
      ->type_name("MODEL");
  command->add_option("--firmware-version", pack.firmwareVersion, "Up to 16 bytes")
      ->required()
      ->type_name("VERSION");
  AddRepeated(*command, "--key", "NAME", TakeKeys(pack.keys),
              "Button to hold while powering the keyboard on, up to 8 bytes; up to three");
  AddRepeated(*command, "--pack", "TYPE:DESCRIPTION:IMAGE", TakePacks(pack.packs),
              "Type (A1, A2 or C1) and two files; one pack or two, in the order of writing")
      ->required();
  command->add_option("-o,--output", pack.output, "The package to write (.dat)")
      ->required()
      ->type_name("FILE");
  AddJson(*command, pack.json, "Write JSON");
  command->add_flag("--strict", pack.strict, "Findings are an error (exit code 3)");
}

void AddDevices(CLI::App& app, DevicesArguments& devices) {
  CLI::App* const command = app.add_subcommand("devices", "List the keyboards that are attached");
  AddJson(*command, devices.json, "Write JSON");
}

void AddDoctor(CLI::App& app, DoctorArguments& doctor) {
  CLI::App* const command =
      app.add_subcommand("doctor", "Look for what keeps an update from working, and tell the cure");
  AddJson(*command, doctor.json, "Write JSON");
}

constexpr const char* kFooter =
    "Exit codes: 0 done, 1 a step failed (or doctor found something), 2 usage, 3 package "
    "unreadable "
    "or invalid (or findings with --strict), 4 no keyboard or more than one, 5 another Hollin is "
    "at "
    "work, 130 interrupted.";

NothingToRun Explain(const CLI::App& app, const CLI::Error& error, bool json) {
  if (error.get_exit_code() != static_cast<int>(CLI::ExitCodes::Success)) {
    const std::string text = error.what();
    const bool lacksCommand = text == "A subcommand is required";  // a word of the library's own
    return {.exitCode = ExitCode::kUsage,
            .json = json,
            .text = lacksCommand ? "A command is required" : text};
  }
  std::ostringstream text;
  std::ostringstream unused;
  app.exit(error, text, unused);
  return {.exitCode = ExitCode::kDone, .json = json, .text = text.str()};
}

}  // namespace

Arguments ParseArguments(std::vector<std::string> arguments) {
  CLI::App app("Firmware updater for the TS30 keyboard", "hollin-cli");
  app.set_version_flag("--version", "hollin-cli " HOLLIN_VERSION);
  app.require_subcommand(1);
  app.footer(kFooter);
  UpdateArguments update;
  InspectArguments inspect;
  PackArguments pack;
  DevicesArguments devices;
  DoctorArguments doctor;
  AddUpdate(app, update);
  AddInspect(app, inspect);
  AddPack(app, pack);
  AddDevices(app, devices);
  AddDoctor(app, doctor);
  // Whoever wants JSON wants it too where the arguments cannot be understood.
  const bool json = std::find(arguments.begin(), arguments.end(), "--json") != arguments.end();
  std::reverse(arguments.begin(), arguments.end());  // the library takes them from the end
  try {
    app.parse(std::move(arguments));
  } catch (const CLI::Error& error) {
    return Explain(app, error, json);
  }
  if (app.got_subcommand("update")) return update;
  if (app.got_subcommand("inspect")) return inspect;
  if (app.got_subcommand("devices")) return devices;
  if (app.got_subcommand("doctor")) return doctor;
  return pack;
}

}  // namespace hollin
