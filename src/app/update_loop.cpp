// SPDX-License-Identifier: MIT
#include "app/update_loop.h"

#include <chrono>
#include <exception>
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
  } catch (const std::exception&) {
    return false;
  }
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
  const bool succeeded = datFile.IsFileReady() && Succeeds([&] {
                           outcome = RunSteps(datFile, progress, shouldStop);
                           return outcome == UpdateOutcome::kSucceeded;
                         });
  const bool acknowledged =
      datFile.IsFileReady() && Succeeds([&] { return datFile.EndUpdate(succeeded); });
  static_cast<void>(Succeeds([&] {
    progress(succeeded ? kUpdateSucceeded : kUpdateFailed);
    return true;
  }));
  if (!succeeded || acknowledged) return outcome;
  // Deliberate: the flash holds the verified image; a lost acknowledgement does not make that a
  // failure.
  Log("The keyboard did not acknowledge the end of the update.");
  return UpdateOutcome::kSucceededUnacknowledged;
}

}  // namespace hollin
