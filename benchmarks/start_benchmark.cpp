// SPDX-License-Identifier: MIT
// Starting hollin-cli --version and waiting for its end, against an empty program with the same
// libraries. At most twice its time is allowed: above that the exit code is 1. Both are started in
// turn, so that a busy machine slows both alike.
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

double RunOnce(const char* path, const char* argument) {
  std::array<char*, 3> arguments = {const_cast<char*>(path), const_cast<char*>(argument), nullptr};
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
  const auto start = Clock::now();
  pid_t process = -1;
  int status = 1;
  if (posix_spawn(&process, path, &actions, nullptr, arguments.data(), nullptr) == 0) {
    waitpid(process, &status, 0);
  }
  const std::chrono::duration<double, std::milli> time = Clock::now() - start;
  posix_spawn_file_actions_destroy(&actions);
  if (status != 0) std::fprintf(stderr, "%s failed\n", path);
  return time.count();
}

double Median(std::vector<double> times) {
  std::nth_element(times.begin(), times.begin() + static_cast<ptrdiff_t>(times.size() / 2),
                   times.end());
  return times[times.size() / 2];
}

}  // namespace

int main() {
  constexpr int kRuns = 301;
  constexpr double kMostAllowed = 2.00;
  std::vector<double> empty;
  std::vector<double> program;
  for (int i = 0; i < kRuns; i++) {
    empty.push_back(RunOnce(HOLLIN_EMPTY_PROGRAM, nullptr));
    program.push_back(RunOnce(HOLLIN_CLI, "--version"));
  }
  const double ratio = Median(program) / Median(empty);
  std::printf(
      "empty program %.3f ms, hollin-cli --version %.3f ms, ratio %.2f (at most %.2f is allowed)\n",
      Median(empty), Median(program), ratio, kMostAllowed);
  return ratio <= kMostAllowed ? 0 : 1;
}
