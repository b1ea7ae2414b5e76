// SPDX-License-Identifier: MIT
// The progress of an update as one line of text.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace hollin {

struct UpdateProgress {
  int32_t completed = 0;  // steps
  int32_t total = 0;
  std::string stepName{};                 // of the step at work; ASCII
  std::chrono::seconds elapsed{0};        // since the start
  std::chrono::seconds lastCompleted{0};  // `elapsed` when the last step was completed

  // From the steps so far; none before there is a step to judge by.
  [[nodiscard]] std::optional<std::chrono::seconds> TimeLeft() const;
};

// "0:07", "12:34", "1:02:03".
[[nodiscard]] std::string FormatDuration(std::chrono::seconds duration);

// Fits `width` columns at any width: the step's name is cut short first, then the bar goes. The
// bar's length depends on the width alone, so that it does not jump.
[[nodiscard]] std::string RenderProgress(const UpdateProgress& progress, size_t width);

}  // namespace hollin
