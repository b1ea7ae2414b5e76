// SPDX-License-Identifier: MIT
#include "tests/support/simulator_process.h"

#include <filesystem>
#include <stdexcept>

namespace hollin {
namespace {

std::vector<std::string> Command(const SimulatedBus& bus, const std::vector<std::string>& options) {
  std::vector<std::string> command = {HOLLIN_BIN_DIR "/ts30-simulator", "--dir", bus.Folder()};
  command.insert(command.end(), options.begin(), options.end());
  return command;
}

}  // namespace

std::vector<std::pair<std::string, std::string>> SimulatedBus::Environment() const {
  return {{"LD_LIBRARY_PATH", HOLLIN_STANDIN_DIR},
          {"TS30_SIMULATOR_DIR", folder.Path()},
          {"TS30_STANDIN_LOG", recordFolder.Path("record")},
          {"TS30_STANDIN_SKIP_PAUSES", "1"},
          {"XDG_RUNTIME_DIR", recordFolder.Path()}};  // a Hollin of the developer's is another one
}

std::string SimulatedBus::Record() const {
  if (!std::filesystem::exists(recordFolder.Path("record"))) return "";
  const Bytes bytes = recordFolder.Read("record");
  return {bytes.begin(), bytes.end()};
}

SimulatorProcess::SimulatorProcess(const SimulatedBus& bus, const std::vector<std::string>& options)
    : process({.command = Command(bus, options)}) {
  if (!process.ReadUntil("ready:")) throw std::runtime_error("no simulator: " + process.Err());
}

}  // namespace hollin
