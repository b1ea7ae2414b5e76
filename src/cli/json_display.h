// SPDX-License-Identifier: MIT
// An update as JSON, one object a line on standard output. docs/schemas/update.json is the schema
// of every line.
#pragma once

#include <chrono>
#include <functional>
#include <mutex>

#include "cli/console.h"
#include "cli/json.h"
#include "cli/update_display.h"

namespace hollin {

class JsonDisplay final : public UpdateDisplay {
 public:
  using Clock = std::function<std::chrono::steady_clock::time_point()>;

  explicit JsonDisplay(Console console, Clock clock = std::chrono::steady_clock::now);

  void Refuse(ExitCode exitCode, std::string_view code, const std::vector<std::string>& lines,
              std::string_view hint) override;
  void Start(const UpdatePlan& plan) override;
  void StepCompleted(int32_t step) override;
  void Tick() override {}
  void Notice(std::string_view text) override;
  void LogLine(std::string_view /*line*/) override {}  // the system log has it
  void Finish(UpdateOutcome outcome, ExitCode exitCode, const FailureRecord& failures) override;
  void Abandon() override;

 private:
  void PrintEvent(const Json& event);
  [[nodiscard]] int64_t Elapsed() const;
  [[nodiscard]] Json FailureJson(const RecordedFailure& failure) const;

  Console console;
  Clock clock;
  std::timed_mutex mutex;  // guards everything below and the stream
  UpdatePlan plan;
  int32_t completed = 0;
  bool hasEnded = false;  // nothing follows the event "end"
  std::chrono::steady_clock::time_point start;
};

}  // namespace hollin
