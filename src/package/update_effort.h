// SPDX-License-Identifier: MIT
// The least that an update can take: the pauses that it prescribes and the reports that it
// exchanges when everything succeeds at the first attempt. docs/command-line.md says how it is
// counted.
#pragma once

#include <cstdint>

#include "device/ax_update.h"

namespace hollin {

struct UpdateEffort {
  uint64_t pauses = 0;   // milliseconds
  uint64_t reports = 0;  // in both directions

  UpdateEffort& operator+=(const UpdateEffort& other) {
    pauses += other.pauses;
    reports += other.reports;
    return *this;
  }
  // At full speed a report takes a millisecond.
  [[nodiscard]] uint64_t Milliseconds() const { return pauses + reports; }
};

// Of one loaded updater, from its mode command to its verification, with the pause behind each of
// its steps.
[[nodiscard]] UpdateEffort EffortOf(const AXUpdate& updater);

// Of the end command.
[[nodiscard]] UpdateEffort EffortOfEnd();

}  // namespace hollin
