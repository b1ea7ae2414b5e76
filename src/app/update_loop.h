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
};

// Runs the update of a ready package and blocks until it has ended; `progress` is called on the
// calling thread after every completed step and once, with one of the codes above, at the end. A
// package that is not ready fails without a report being sent. Lets no exception out.
UpdateOutcome RunUpdate(DatFileExamine& datFile, const std::function<void(int32_t)>& progress);

}  // namespace hollin
