// SPDX-License-Identifier: MIT
// Remembers why a step failed until there is someone to tell: an update reports failed commands
// while it runs, those that a retry made good included.
#pragma once

#include "base/bytes.h"
#include "device/update_observer.h"

namespace hollin {

struct RecordedFailure {
  UpdateFailure reason = UpdateFailure::kNone;
  Bytes command{}, expected{}, reply{};
};

class FailureRecord final : public UpdateObserver {
 public:
  void CommandFailed(const CommandFailure& failure) override;

  // What failed before is forgotten: it was retried.
  void StepSucceeded() { ofStep = {}; }

  // The last failure of the step that did not succeed. kNone where the step told nothing.
  [[nodiscard]] const RecordedFailure& OfStep() const { return ofStep; }
  // The failure of the end command, which follows a failed step too and must not hide its reason.
  [[nodiscard]] const RecordedFailure& OfEnd() const { return ofEnd; }

 private:
  RecordedFailure ofStep, ofEnd;
};

}  // namespace hollin
