// SPDX-License-Identifier: MIT
#include "cli/update_command.h"

#include <unistd.h>

#include "app/instance_lock.h"
#include "app/update_loop.h"
#include "base/log.h"
#include "cli/failure_record.h"
#include "cli/signal_watch.h"
#include "cli/words.h"
#include "device/hid_device.h"
#include "package/dat_file_examine.h"

namespace hollin {
namespace {

// Removes the temporary files at the end of a scope.
class TempFiles {
 public:
  explicit TempFiles(const DatFileExamine& datFile) : datFile(datFile) {}
  ~TempFiles() { datFile.DeleteTempFiles(); }
  TempFiles(const TempFiles&) = delete;
  TempFiles& operator=(const TempFiles&) = delete;

 private:
  const DatFileExamine& datFile;
};

// Hands the log's lines for the terminal to the display, as long as it lives.
class LogToDisplay {
 public:
  explicit LogToDisplay(UpdateDisplay& display) {
    SetLogEcho([&display](const std::string& line) { display.LogLine(line); });
  }
  ~LogToDisplay() { SetLogEcho({}); }
  LogToDisplay(const LogToDisplay&) = delete;
  LogToDisplay& operator=(const LogToDisplay&) = delete;
};

[[noreturn]] void Leave(const DatFileExamine& datFile, UpdateDisplay& display) {
  datFile.DeleteTempFiles();
  display.Abandon();
  _exit(static_cast<int>(ExitCode::kInterrupted));
}

ExitCode ExitCodeOf(UpdateOutcome outcome) {
  switch (outcome) {
    case UpdateOutcome::kSucceeded:
    case UpdateOutcome::kSucceededUnacknowledged:
      return ExitCode::kDone;
    case UpdateOutcome::kStopped:
      return ExitCode::kInterrupted;
    case UpdateOutcome::kFailed:
      break;
  }
  return ExitCode::kFailed;
}

ExitCode Refuse(UpdateDisplay& display, ExitCode exitCode, std::string_view code,
                const std::vector<std::string>& lines) {
  display.Refuse(exitCode, code, lines);
  return exitCode;
}

ExitCode Update(DatFileExamine& datFile, FailureRecord& failures, UpdateDisplay& display) {
  display.Start(PlanOf(datFile));
  const SignalWatch signals({.first = [&] { display.Notice(words::kAdviceNotToStop); },
                             .second = [&] { display.Notice(words::kStopping); },
                             .leave = [&] { Leave(datFile, display); },
                             .tick = [&] { display.Tick(); }});
  const auto progress = [&](int32_t value) {
    if (value < 0) return;  // the outcome tells that better
    failures.StepSucceeded();
    display.StepCompleted(value);
  };
  const UpdateOutcome outcome =
      RunUpdate(datFile, progress, [&] { return signals.IsStopWanted(); });
  display.Finish(outcome, failures);
  return ExitCodeOf(outcome);
}

}  // namespace

ExitCode RunUpdateCommand(const UpdateArguments& arguments, UpdateDisplay& display) {
  const LogToDisplay logging(display);
  FailureRecord failures;
  DatFileExamine datFile;
  datFile.observer = &failures;
  if (!datFile.OpenDatFile(arguments.package)) {
    return Refuse(display, ExitCode::kPackage, "unreadable",
                  {std::string(words::kUnableToOpen) + arguments.package});
  }
  InstanceLock lock;
  if (lock.Take() == LockState::kBusy) {
    return Refuse(display, ExitCode::kBusy, "busy", {std::string(words::kAnotherAtWork)});
  }
  HoldBackSignals();  // from here on there are temporary files to remove
  const TempFiles tempFiles(datFile);
  if (!datFile.ExamineDatFile()) {
    return Refuse(display, ExitCode::kPackage, "invalid",
                  {std::string(words::kFormatError) + arguments.package});
  }
  const uint32_t count = HidDevice::DeviceCount();
  if (count > 1) {
    return Refuse(display, ExitCode::kKeyboard, "several-keyboards",
                  {std::string(words::kMoreThanOneDevice)});
  }
  if (count == 0) {
    return Refuse(display, ExitCode::kKeyboard, "no-keyboard",
                  words::LinesOfNotConnected(datFile.NotConnectedMessage()));
  }
  return Update(datFile, failures, display);
}

}  // namespace hollin
