// SPDX-License-Identifier: MIT
// An update as text for people: a bar that is drawn again in place on a terminal, a line a step
// everywhere else. Errors and notices go to standard error.
#pragma once

#include <chrono>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>

#include "cli/console.h"
#include "cli/progress_bar.h"
#include "cli/update_display.h"

namespace hollin {

class TextDisplay final : public UpdateDisplay {
 public:
  using Clock = std::function<std::chrono::steady_clock::time_point()>;

  explicit TextDisplay(Console console, Clock clock = std::chrono::steady_clock::now);

  void Refuse(ExitCode exitCode, std::string_view code, const std::vector<std::string>& lines,
              std::string_view hint) override;
  void Start(const UpdatePlan& plan) override;
  void StepCompleted(int32_t step) override;
  void Tick() override;
  void Notice(std::string_view text) override;
  void LogLine(std::string_view line) override;
  void Finish(UpdateOutcome outcome, ExitCode exitCode, const FailureRecord& failures) override;
  void Abandon() override;

 private:
  void DrawBar();
  void EraseBar();
  void LeaveBar();
  void PrintError(std::string_view line);
  void PrintFailure(const FailureRecord& failures);
  [[nodiscard]] std::chrono::seconds Elapsed() const;

  Console console;
  Clock clock;
  std::timed_mutex mutex;  // guards everything below and the streams
  UpdatePlan plan;
  UpdateProgress progress;
  std::chrono::steady_clock::time_point start;
  bool isRunning = false;   // between Start and Finish
  bool isBarShown = false;  // the cursor stands in the bar's line
};

}  // namespace hollin
