// SPDX-License-Identifier: MIT
#include "cli/progress_bar.h"

#include <fmt/format.h>

#include <algorithm>

namespace hollin {
namespace {

constexpr size_t kShortestBar = 10;
constexpr size_t kLongestBar = 30;

int64_t Percent(const UpdateProgress& progress) {
  return progress.total > 0 ? int64_t{progress.completed} * 100 / progress.total : 100;
}

std::string Bar(const UpdateProgress& progress, size_t cells) {
  const size_t filled = cells * static_cast<size_t>(Percent(progress)) / 100;
  return fmt::format("[{}{}] ", std::string(filled, '#'), std::string(cells - filled, '.'));
}

std::string Times(const UpdateProgress& progress) {
  std::string elapsed = FormatDuration(progress.elapsed);
  const auto left = progress.TimeLeft();
  if (!left) return elapsed;
  return fmt::format("{}, {} left", elapsed, FormatDuration(*left));
}

}  // namespace

std::optional<std::chrono::seconds> UpdateProgress::TimeLeft() const {
  if (completed < 1 || completed >= total) return std::nullopt;
  const auto needed = lastCompleted * int64_t{total - completed} / completed;
  return std::max(needed - (elapsed - lastCompleted), std::chrono::seconds{0});
}

std::string FormatDuration(std::chrono::seconds duration) {
  const auto seconds = duration.count();
  if (seconds < 3600) return fmt::format("{}:{:02}", seconds / 60, seconds % 60);
  return fmt::format("{}:{:02}:{:02}", seconds / 3600, seconds / 60 % 60, seconds % 60);
}

std::string RenderProgress(const UpdateProgress& progress, size_t width) {
  const int32_t current = std::min(progress.completed + 1, progress.total);
  const std::string text = fmt::format("{:3}%  step {}/{}  {}", Percent(progress), current,
                                       progress.total, Times(progress));
  const size_t cells = std::clamp(width / 5, kShortestBar, kLongestBar);
  std::string line = Bar(progress, cells) + text;
  if (line.size() > width) return text.substr(0, width);
  if (progress.stepName.empty()) return line;
  return (line + "  " + progress.stepName).substr(0, width);
}

}  // namespace hollin
