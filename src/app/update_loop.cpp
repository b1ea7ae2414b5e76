// SPDX-License-Identifier: MIT
#include "app/update_loop.h"

#include <chrono>
#include <string>

#include "base/log.h"
#include "base/pause.h"
#include "package/dat_file_examine.h"

namespace hollin {
namespace {

constexpr std::chrono::milliseconds kPauseAfterStep{500};

// An operation that throws (out of memory) has failed like any other.
template <typename Operation>
bool Succeeds(const Operation& operation) {
  try {
    return operation();
  } catch (...) {
    return false;
  }
}

// For telling a result: whether that works does not change it.
template <typename Operation>
void Attempt(const Operation& operation) {
  static_cast<void>(Succeeds([&] {
    operation();
    return true;
  }));
}

UpdateOutcome RunSteps(DatFileExamine& datFile, const std::function<void(int32_t)>& progress,
                       const std::function<bool()>& shouldStop) {
  const int32_t count = datFile.TotalStepCount();
  for (int32_t step = 0; step < count; step++) {
    if (step > 0 && shouldStop && shouldStop()) return UpdateOutcome::kStopped;
    if (!datFile.RunUpdateStep(static_cast<uint32_t>(step))) return UpdateOutcome::kFailed;
    Pause(kPauseAfterStep);
    progress(step);
    Log(std::to_string(step));
  }
  return UpdateOutcome::kSucceeded;
}

}  // namespace

UpdateOutcome RunUpdate(DatFileExamine& datFile, const std::function<void(int32_t)>& progress,
                        const std::function<bool()>& shouldStop) {
  UpdateOutcome outcome = UpdateOutcome::kFailed;
  // Deliberate: with a package that was refused nothing is sent, not even the end.
  const bool succeeded = datFile.IsFileReady() && Succeeds([&] {
                           outcome = RunSteps(datFile, progress, shouldStop);
                           return outcome == UpdateOutcome::kSucceeded;
                         });
  const bool acknowledged =
      datFile.IsFileReady() && Succeeds([&] { return datFile.EndUpdate(succeeded); });
  Attempt([&] { progress(succeeded ? kUpdateSucceeded : kUpdateFailed); });
  if (!succeeded || acknowledged) return outcome;
  // Deliberate: the flash holds the verified image; a lost acknowledgement does not make that a
  // failure.
  Attempt([] { Log("The keyboard did not acknowledge the end of the update."); });
  return UpdateOutcome::kSucceededUnacknowledged;
}

}  // namespace hollin
