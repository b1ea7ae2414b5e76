// SPDX-License-Identifier: MIT
// Beside the quick hidapi in its shared library: with QUICK_SKIP_PAUSES=1 the program's pauses of a
// millisecond or more end at once.
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <ctime>

namespace {

bool IsSkipped(const timespec& length) {
  static const bool skips = std::getenv("QUICK_SKIP_PAUSES") != nullptr;
  return skips && (length.tv_sec > 0 || length.tv_nsec >= 1'000'000);
}

}  // namespace

// NOLINTBEGIN(readability-inconsistent-declaration-parameter-name): the C library's own names.
extern "C" {

int clock_nanosleep(clockid_t clock, int flags, const timespec* length, timespec* rest) {
  if (flags == 0 && IsSkipped(*length)) return 0;
  return syscall(SYS_clock_nanosleep, clock, flags, length, rest) == 0 ? 0 : errno;
}

int nanosleep(const timespec* length, timespec* rest) {
  if (IsSkipped(*length)) return 0;
  return static_cast<int>(syscall(SYS_clock_nanosleep, CLOCK_MONOTONIC, 0, length, rest));
}

}  // extern "C"
// NOLINTEND(readability-inconsistent-declaration-parameter-name)
