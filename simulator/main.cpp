// SPDX-License-Identifier: MIT
// ts30-simulator: one keyboard in its own process.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <functional>
#include <string>
#include <vector>

#include "base/file.h"
#include "simulator/kernel_server.h"
#include "simulator/keyboard.h"
#include "simulator/keyboard_option.h"
#include "simulator/number.h"
#include "simulator/program_run.h"
#include "simulator/report_server.h"
#include "simulator/uhid.h"
#include "simulator/usb_gadget.h"

namespace {

using namespace hollin;
using namespace hollin::simulator;

constexpr char kThroughUhid[] =
    "through uhid, which loses reports that come faster than they are taken: on a busy machine an "
    "update may fail or wait for ever";
constexpr uint64_t kLongestOptionFile = uint64_t{1024} * 1024;

struct Arguments {
  std::string directory;
  std::string vendorId = "1c3e";
  std::string productId = "2b91";
  std::vector<std::string> optionFiles;
  std::vector<std::string> options;
  std::vector<std::string> faults;
  std::vector<std::string> program;  // with its arguments; empty: none
  bool verbose = false;
  bool usbGadget = false;
  bool uhid = false;
  bool secondInterface = false;
  std::string controller;
  std::string descriptor = "flat";
};

std::string Help() {
  std::string help = "Options of the keyboard (--option NAME=VALUE):\n";
  for (const OptionDescription& option : OptionDescriptions()) {
    help +=
        "  " + std::string(option.name) + "=" + option.value + "\n      " + option.meaning + "\n";
  }
  help +=
      "\nFaults (--fault NAME[=PARAMETER]@[h|c|r|o]INDEX[xTIMES]): from the INDEX-th report of "
      "the\n"
      "host (h or none), command (c), report of the keyboard (r) or open (o) on, at the first\n"
      "occasion that suits, TIMES times (a number or \"always\"):\n";
  for (const FaultDescription& fault : FaultDescriptions()) {
    help += "  " + std::string(fault.name) + " @" + fault.moments + "\n      " + fault.meaning;
    help += " (# is " + std::to_string(fault.parameter) + ")\n";
  }
  return help +
         "\nSignals: SIGUSR1 unplugs the keyboard, SIGUSR2 plugs it in again, SIGTERM and SIGINT "
         "end.\n";
}

int UsageError(const std::string& what) {
  std::fprintf(stderr, "ts30-simulator: %s\n", what.c_str());
  return 2;
}

bool ParseId(const std::string& text, uint16_t& id) {
  uint64_t value = 0;
  if (!ParseHex(text.starts_with("0x") ? text.substr(2) : text, 0xFFFF, value)) return false;
  id = static_cast<uint16_t>(value);
  return true;
}

bool ReadOptionFile(const std::string& path, KeyboardOptions& options, std::string& problem) {
  FileContents contents;
  problem = "cannot read " + path;
  if (!ReadWholeFile(path, contents, kLongestOptionFile)) return false;
  std::string badLine;
  if (SetOptions(contents.Text(), options, badLine)) return true;
  problem = path + ": not an option: " + badLine;
  return false;
}

// False with the first problem in words.
bool MakeOptions(const Arguments& arguments, KeyboardOptions& options, std::string& problem) {
  problem = "ids are one to four hexadecimal digits";
  if (!ParseId(arguments.vendorId, options.vendorId)) return false;
  if (!ParseId(arguments.productId, options.productId)) return false;
  for (const std::string& path : arguments.optionFiles) {
    if (!ReadOptionFile(path, options, problem)) return false;
  }
  for (const std::string& option : arguments.options) {
    problem = "not an option of the keyboard: " + option;
    if (!SetOption(option, options)) return false;
  }
  for (const std::string& fault : arguments.faults) {
    problem = "not a fault: " + fault;
    if (!ParseFault(fault, options.faults.emplace_back())) return false;
  }
  options.realTime = true;
  return true;
}

void PrintReady(const KeyboardOptions& options, const std::string& where) {
  std::printf("ready: keyboard %04x:%04x %s\n", options.vendorId, options.productId, where.c_str());
  std::fflush(stdout);
}

int ServeSystem(Keyboard& keyboard, KernelPort& port, const Arguments& arguments) {
  KernelServer server(keyboard, port, arguments.verbose);
  std::string problem;
  if (!server.Start(problem)) {
    std::fprintf(stderr, "ts30-simulator: %s\n", problem.c_str());
    return 1;
  }
  PrintReady(keyboard.Options(), arguments.uhid ? kThroughUhid : "as a USB gadget");
  return server.Run() ? 0 : 1;
}

int ServeSocket(Keyboard& keyboard, const std::string& directory, bool verbose,
                const std::function<void()>& ready) {
  ReportServer server(keyboard, directory, verbose);
  if (!server.Start()) {
    std::fprintf(stderr, "ts30-simulator: cannot listen in %s\n", directory.c_str());
    return 1;
  }
  ready();
  return server.Run() ? 0 : 1;
}

int ServeProgram(Keyboard& keyboard, const Arguments& arguments) {
  return RunOnKeyboard(arguments.program,
                       [&](const std::string& folder, const std::function<void()>& ready) {
                         return ServeSocket(keyboard, folder, arguments.verbose, ready);
                       });
}

int Serve(const Arguments& arguments, const KeyboardOptions& options) {
  Keyboard keyboard(options);
  std::string failedFile;
  if (!keyboard.KeepContents(failedFile)) {
    return UsageError("cannot keep flash contents in " + failedFile + " (or it has another size)");
  }
  if (!arguments.program.empty()) return ServeProgram(keyboard, arguments);
  if (!arguments.usbGadget && !arguments.uhid && arguments.directory.empty()) {
    return UsageError("say where to be found: --dir, --usb-gadget, --uhid, or a program to run");
  }
  const auto descriptor = ParseReportDescriptor(arguments.descriptor);
  if (!descriptor) return UsageError("not a report descriptor: " + arguments.descriptor);
  if (arguments.usbGadget) {
    UsbGadget port({options.vendorId, options.productId, *descriptor, arguments.secondInterface,
                    arguments.controller});
    return ServeSystem(keyboard, port, arguments);
  }
  if (arguments.uhid) {
    Uhid port({options.vendorId, options.productId, *descriptor});
    return ServeSystem(keyboard, port, arguments);
  }
  return ServeSocket(keyboard, arguments.directory, arguments.verbose,
                     [&] { PrintReady(options, "in " + arguments.directory); });
}

int Run(int argc, char** argv) {
  Arguments arguments;
  CLI::App app(
      "A TS30 keyboard in software: for one program (PROGRAM), for all that run with the stand-in "
      "for hidapi (--dir), or for every program of the system (--usb-gadget, --uhid; both need "
      "root).");
  app.set_version_flag("--version", "ts30-simulator " HOLLIN_VERSION);
  app.footer(Help());
  app.add_option("--dir", arguments.directory, "folder for the keyboard's socket")
      ->envname(kDirectoryVariable);
  app.add_option("PROGRAM", arguments.program,
                 "program to run on this keyboard, with its arguments; put -- in front of it")
      ->type_name("");
  app.add_flag("--usb-gadget", arguments.usbGadget,
               "be a USB device on one of this machine's device controllers")
      ->excludes("PROGRAM");
  app.add_flag("--uhid", arguments.uhid,
               "be a HID device of this machine; loses reports when this process does not run soon "
               "enough")
      ->excludes("--usb-gadget")
      ->excludes("PROGRAM");
  app.add_option("--udc", arguments.controller,
                 "device controller for --usb-gadget (default: the first that is free)");
  app.add_flag("--second-interface", arguments.secondInterface,
               "show a second interface beside the keyboard's, for --usb-gadget")
      ->needs("--usb-gadget");
  app.add_option("--report-descriptor", arguments.descriptor,
                 "flat, collections or nested, for --usb-gadget and --uhid")
      ->capture_default_str();
  app.add_option("--vid", arguments.vendorId, "USB vendor id, hexadecimal")->capture_default_str();
  app.add_option("--pid", arguments.productId, "USB product id, hexadecimal")
      ->capture_default_str();
  app.add_option("--options", arguments.optionFiles, "file with one NAME=VALUE a line");
  app.add_option("--option", arguments.options, "one option of the keyboard, NAME=VALUE");
  app.add_option("--fault", arguments.faults, "one fault to inject");
  app.add_flag("--verbose", arguments.verbose, "print what the keyboard is asked");
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : 2;
  }
  KeyboardOptions options;
  std::string problem;
  if (!MakeOptions(arguments, options, problem)) return UsageError(problem);
  return Serve(arguments, options);
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return Run(argc, argv);
  } catch (const std::exception& error) {  // memory for a huge chip, for example
    std::fprintf(stderr, "ts30-simulator: %s\n", error.what());
    return 1;
  }
}
