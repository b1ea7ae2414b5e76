// SPDX-License-Identifier: MIT
// The update itself: all steps of a package, one by one, then the end. The worker thread of the
// window and the command line run this same function.
#pragma once

#include <cstdint>
#include <functional>

namespace hollin {

class DatFileExamine;

// What is reported while an update runs: 0 or more is the step that has just been completed.
inline constexpr int32_t kUpdateSucceeded = -1;
inline constexpr int32_t kUpdateFailed = -2;

enum class UpdateOutcome {
  kSucceeded,
  kSucceededUnacknowledged,  // all steps succeeded, but the keyboard did not confirm the end
                             // command
  kFailed,
  kStopped,  // ended between two steps because the caller wanted that
};

// Runs the update of a ready package and blocks until it has ended; `progress` is called on the
// calling thread after every completed step and once, with one of the codes above, at the end. A
// package that is not ready fails without a report being sent. Lets no exception out.
//
// `shouldStop`, if there is one, is asked between two steps; true ends the update there like a
// failed step. Once the last step is done there is nothing left to stop.
UpdateOutcome RunUpdate(DatFileExamine& datFile, const std::function<void(int32_t)>& progress,
                        const std::function<bool()>& shouldStop = {});

}  // namespace hollin
