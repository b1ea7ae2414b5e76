// SPDX-License-Identifier: MIT
#include "cli/update_command.h"

#include <unistd.h>

#include <atomic>
#include <chrono>
#include <mutex>

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

// Who ends the program: the update that is over, or a signal that arrives before that. Only one of
// them may tell the end.
class Ending {
 public:
  // For the thread that runs the update, when it is over. Does not return where a signal was first.
  void Finish(UpdateDisplay& display, UpdateOutcome outcome, ExitCode code,
              const FailureRecord& failures) {
    const std::lock_guard lock(finishing);
    exitCode = code;
    if (isTaken.exchange(true)) AwaitExit();
    display.Finish(outcome, code, failures);
  }

  // For the thread that waits for signals. Returns where the update is over and has told so.
  void Leave(const DatFileExamine& datFile, UpdateDisplay& display) {
    if (isTaken.exchange(true)) return LeaveFinished(datFile);
    datFile.DeleteTempFiles();
    Abandon(display);
    _exit(static_cast<int>(ExitCode::kInterrupted));
  }

 private:
  // The end is being told, which takes for ever where the output is stalled.
  void LeaveFinished(const DatFileExamine& datFile) {
    const std::unique_lock lock(finishing, std::chrono::seconds(1));
    if (lock) return;
    datFile.DeleteTempFiles();
    _exit(static_cast<int>(exitCode.load()));
  }
  // The end is certain, its words are not.
  static void Abandon(UpdateDisplay& display) {
    try {
      display.Abandon();
    } catch (...) {
      return;
    }
  }
  [[noreturn]] static void AwaitExit() {
    while (true) pause();
  }

  std::atomic<bool> isTaken = false;
  std::atomic<ExitCode> exitCode = ExitCode::kInterrupted;
  std::timed_mutex finishing;
};

// Whoever has stopped an update gets the code for that, whatever became of the step at work.
ExitCode ExitCodeOf(UpdateOutcome outcome, bool isStopWanted) {
  switch (outcome) {
    case UpdateOutcome::kSucceeded:
    case UpdateOutcome::kSucceededUnacknowledged:
      return ExitCode::kDone;
    case UpdateOutcome::kStopped:
      return ExitCode::kInterrupted;
    case UpdateOutcome::kFailed:
      break;
  }
  return isStopWanted ? ExitCode::kInterrupted : ExitCode::kFailed;
}

ExitCode Refuse(UpdateDisplay& display, ExitCode exitCode, std::string_view code,
                const std::vector<std::string>& lines, std::string_view hint = {}) {
  display.Refuse(exitCode, code, lines, hint);
  return exitCode;
}

// A refusal after signals were held back: one that has arrived since then ends the program.
ExitCode RefuseLate(UpdateDisplay& display, ExitCode exitCode, std::string_view code,
                    const std::vector<std::string>& lines, std::string_view hint = {}) {
  if (!IsSignalHeldBack()) return Refuse(display, exitCode, code, lines, hint);
  return Refuse(display, ExitCode::kInterrupted, "interrupted", {std::string(words::kInterrupted)});
}

ExitCode Update(DatFileExamine& datFile, FailureRecord& failures, UpdateDisplay& display) {
  Ending ending;
  const SignalWatch signals({.first = [&] { display.Notice(words::kAdviceNotToStop); },
                             .second = [&] { display.Notice(words::kStopping); },
                             .leave = [&] { ending.Leave(datFile, display); },
                             .tick = [&] { display.Tick(); }});
  display.Start(PlanOf(datFile));
  const auto progress = [&](int32_t value) {
    if (value < 0) return;  // the outcome tells that better
    failures.StepSucceeded();
    display.StepCompleted(value);
  };
  const UpdateOutcome outcome =
      RunUpdate(datFile, progress, [&] { return signals.IsStopWanted(); });
  const ExitCode exitCode = ExitCodeOf(outcome, signals.IsStopWanted());
  ending.Finish(display, outcome, exitCode, failures);
  return exitCode;
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
    return Refuse(display, ExitCode::kBusy, "busy", {std::string(words::kAnotherAtWork)},
                  words::kCloseIt);
  }
  HoldBackSignals();  // from here on there are temporary files to remove
  const TempFiles tempFiles(datFile);
  if (!datFile.ExamineDatFile()) {
    return RefuseLate(display, ExitCode::kPackage, "invalid",
                      {std::string(words::kFormatError) + arguments.package}, words::kInspectTells);
  }
  const uint32_t count = HidDevice::DeviceCount();
  if (count > 1) {
    return RefuseLate(display, ExitCode::kKeyboard, "several-keyboards",
                      {std::string(words::kMoreThanOneDevice)});
  }
  if (count == 0) {
    return RefuseLate(display, ExitCode::kKeyboard, "no-keyboard",
                      words::LinesOfNotConnected(datFile.NotConnectedMessage()));
  }
  return Update(datFile, failures, display);
}

}  // namespace hollin
