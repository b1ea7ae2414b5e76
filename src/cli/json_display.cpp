// SPDX-License-Identifier: MIT
#include "cli/json_display.h"

#include <string>
#include <utility>

#include "cli/failure_words.h"
#include "cli/words.h"

namespace hollin {
namespace {

struct OutcomeWords {
  std::string_view name;
  std::string_view message;
};

OutcomeWords WordsOf(UpdateOutcome outcome) {
  switch (outcome) {
    case UpdateOutcome::kSucceeded:
    case UpdateOutcome::kSucceededUnacknowledged:
      return {"succeeded", words::kUpdateCompleted};
    case UpdateOutcome::kStopped:
      return {"stopped", words::kUpdateStopped};
    case UpdateOutcome::kFailed:
      break;
  }
  return {"failed", words::kUpdateError};
}

std::string Joined(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) text += (text.empty() ? "" : " ") + line;
  return text;
}

}  // namespace

JsonDisplay::JsonDisplay(Console console, Clock clock)
    : console(std::move(console)), clock(std::move(clock)), start(this->clock()) {}

void JsonDisplay::Refuse(ExitCode exitCode, std::string_view code,
                         const std::vector<std::string>& lines, std::string_view /*hint*/) {
  const std::lock_guard lock(mutex);
  PrintJsonLine(console.out, ErrorJson(exitCode, code, Joined(lines)));
}

void JsonDisplay::Start(const UpdatePlan& newPlan) {
  const std::lock_guard lock(mutex);
  plan = newPlan;
  start = clock();
  Json packs = Json::array();
  for (const UpdatePlan::Pack& pack : plan.packs) {
    packs.push_back({{"dataType", pack.dataType}, {"steps", pack.steps}});
  }
  PrintEvent({{"event", "start"},
              {"productModel", plan.productModel},
              {"firmwareVersion", plan.firmwareVersion},
              {"totalSteps", plan.TotalSteps()},
              {"packs", packs}});
}

void JsonDisplay::StepCompleted(int32_t step) {
  const std::lock_guard lock(mutex);
  completed = step + 1;
  PrintEvent({{"event", "step"},
              {"step", step},
              {"name", plan.StepName(step)},
              {"totalSteps", plan.TotalSteps()},
              {"elapsedMilliseconds", Elapsed()}});
}

void JsonDisplay::Notice(std::string_view text) {
  const std::unique_lock lock(mutex, kLongestWaitForLine);
  if (!lock || !console.takesLines()) return;
  PrintEvent({{"event", "notice"}, {"message", text}});
}

void JsonDisplay::Finish(UpdateOutcome outcome, ExitCode exitCode, const FailureRecord& failures) {
  const std::lock_guard lock(mutex);
  const auto [name, message] = WordsOf(outcome);
  Json json = {{"event", "end"},
               {"outcome", name},
               {"message", message},
               {"exitCode", static_cast<int>(exitCode)},
               {"elapsedMilliseconds", Elapsed()}};
  if (outcome == UpdateOutcome::kSucceededUnacknowledged) json["warning"] = words::kNotAcknowledged;
  if (outcome == UpdateOutcome::kFailed) json["failure"] = FailureJson(failures.OfStep());
  PrintEvent(json);
  hasEnded = true;
}

void JsonDisplay::Abandon() {
  const std::unique_lock lock(mutex, std::try_to_lock);
  if (!lock || !console.takesLines()) return;
  PrintEvent({{"event", "end"},
              {"outcome", "abandoned"},
              {"message", words::kUpdateStopped},
              {"exitCode", static_cast<int>(ExitCode::kInterrupted)},
              {"elapsedMilliseconds", Elapsed()}});
  hasEnded = true;
}

void JsonDisplay::PrintEvent(const Json& event) {
  if (!hasEnded) PrintJsonLine(console.out, event);
}

int64_t JsonDisplay::Elapsed() const {
  return std::chrono::duration_cast<std::chrono::milliseconds>(clock() - start).count();
}

Json JsonDisplay::FailureJson(const RecordedFailure& failure) const {
  Json json = {{"step", completed},
               {"name", plan.StepName(completed)},
               {"reason", words::OfReason(failure.reason)}};
  if (failure.command.empty()) return json;
  json["command"] = words::OfCommand(failure.command);
  json["sent"] = failure.command;
  if (failure.expected.empty()) return json;
  json["expected"] = failure.expected;
  // What did not come holds no reply.
  const bool hasReply = failure.reason == UpdateFailure::kWrongReply;
  json["received"] = hasReply ? failure.reply : Bytes();
  return json;
}

}  // namespace hollin
