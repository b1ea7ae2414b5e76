// SPDX-License-Identifier: MIT
// How the command line shows an update. Calls may come from the thread that runs the update and
// from the one that waits for signals at the same time.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "app/update_loop.h"
#include "cli/exit_code.h"
#include "cli/failure_record.h"
#include "cli/update_plan.h"

namespace hollin {

class UpdateDisplay {
 public:
  UpdateDisplay() = default;
  UpdateDisplay(const UpdateDisplay&) = delete;
  UpdateDisplay& operator=(const UpdateDisplay&) = delete;
  virtual ~UpdateDisplay() = default;

  // There will be no update; the lines say why, and `code` does for scripts. `hint` tells people
  // what to do and may be empty.
  virtual void Refuse(ExitCode exitCode, std::string_view code,
                      const std::vector<std::string>& lines, std::string_view hint) = 0;

  virtual void Start(const UpdatePlan& plan) = 0;
  virtual void StepCompleted(int32_t step) = 0;
  virtual void LogLine(std::string_view line) = 0;  // the system log's copy for the terminal
  virtual void Finish(UpdateOutcome outcome, ExitCode exitCode, const FailureRecord& failures) = 0;

  // From the thread that waits for signals, which must be there for the next one: where the output
  // takes nothing or the other thread is stuck in it, nothing is shown.
  virtual void Tick() = 0;                         // time has passed
  virtual void Notice(std::string_view text) = 0;  // an answer to the user's Ctrl-C
  virtual void Abandon() = 0;  // the program ends now, in whatever the other thread is doing
};

}  // namespace hollin
