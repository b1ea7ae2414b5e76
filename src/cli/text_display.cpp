// SPDX-License-Identifier: MIT
#include "cli/text_display.h"

#include <fmt/format.h>

#include <utility>

#include "cli/failure_words.h"
#include "cli/words.h"

namespace hollin {
namespace {

constexpr std::string_view kEraseLine = "\r\x1B[K";

}  // namespace

TextDisplay::TextDisplay(Console console, Clock clock)
    : console(std::move(console)), clock(std::move(clock)) {}

void TextDisplay::Refuse(ExitCode /*exitCode*/, std::string_view /*code*/,
                         const std::vector<std::string>& lines, std::string_view hint) {
  const std::lock_guard lock(mutex);
  for (const std::string& line : lines) PrintError(line);
  if (!hint.empty()) PrintError(hint);
}

void TextDisplay::Start(const UpdatePlan& newPlan) {
  const std::lock_guard lock(mutex);
  plan = newPlan;
  start = clock();
  isRunning = true;
  progress = {.total = plan.TotalSteps(), .stepName = plan.StepName(0)};
  PrintLine(console.out, fmt::format("Updating to {} {} in {} steps", plan.productModel,
                                     plan.firmwareVersion, progress.total));
  DrawBar();
}

void TextDisplay::StepCompleted(int32_t step) {
  const std::lock_guard lock(mutex);
  progress.completed = step + 1;
  progress.stepName = plan.StepName(step + 1);
  progress.lastCompleted = Elapsed();
  if (console.canDraw) return DrawBar();
  PrintLine(console.out,
            fmt::format("Step {} of {}: {}", step + 1, progress.total, plan.StepName(step)));
}

void TextDisplay::Tick() {
  const std::unique_lock lock(mutex, std::try_to_lock);
  if (lock && console.takesLines() && isRunning) DrawBar();
}

void TextDisplay::Notice(std::string_view text) {
  const std::unique_lock lock(mutex, kLongestWaitForLine);
  if (!lock || !console.takesLines()) return;
  LeaveBar();  // the terminal has put "^C" into it
  PrintError(text);
  if (isRunning) DrawBar();
}

void TextDisplay::LogLine(std::string_view line) {
  const std::lock_guard lock(mutex);
  EraseBar();
  PrintError(line);
  if (isRunning) DrawBar();
}

void TextDisplay::Finish(UpdateOutcome outcome, ExitCode /*exitCode*/,
                         const FailureRecord& failures) {
  const std::lock_guard lock(mutex);
  DrawBar();
  LeaveBar();
  isRunning = false;
  switch (outcome) {
    case UpdateOutcome::kSucceededUnacknowledged:
      PrintError(words::kNotAcknowledged);
      [[fallthrough]];
    case UpdateOutcome::kSucceeded:
      return PrintLine(console.out, words::kUpdateCompleted);
    case UpdateOutcome::kStopped:
      return PrintError(words::kUpdateStopped);
    case UpdateOutcome::kFailed:
      return PrintFailure(failures);
  }
}

void TextDisplay::Abandon() {
  const std::unique_lock lock(mutex, std::try_to_lock);
  if (lock && console.takesLines()) LeaveBar();
}

void TextDisplay::DrawBar() {
  if (!console.canDraw) return;
  progress.elapsed = Elapsed();
  const size_t width = console.width();
  // The last column stays free: a cursor behind it would wrap into the next line.
  console.out << kEraseLine << RenderProgress(progress, width > 0 ? width - 1 : 0) << std::flush;
  isBarShown = true;
}

void TextDisplay::EraseBar() {
  if (isBarShown) console.out << kEraseLine << std::flush;
  isBarShown = false;
}

void TextDisplay::LeaveBar() {
  if (isBarShown) console.out << std::endl;
  isBarShown = false;
}

void TextDisplay::PrintError(std::string_view line) { PrintLine(console.err, line); }

void TextDisplay::PrintFailure(const FailureRecord& failures) {
  PrintError(words::kUpdateError);
  PrintError(fmt::format("Step {} of {} failed: {}", progress.completed + 1, progress.total,
                         plan.StepName(progress.completed)));
  for (const std::string& line : words::OfFailure(failures.OfStep())) PrintError("  " + line);
}

std::chrono::seconds TextDisplay::Elapsed() const {
  return std::chrono::duration_cast<std::chrono::seconds>(clock() - start);
}

}  // namespace hollin
