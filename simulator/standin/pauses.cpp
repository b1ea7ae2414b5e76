// SPDX-License-Identifier: MIT
// Pauses of the program, for tests of whole programs: nanosleep, clock_nanosleep and usleep of a
// millisecond or more are recorded, and with TS30_STANDIN_SKIP_PAUSES=1 they end at once; the open
// keyboards are told of the time that was skipped. Otherwise, and below a millisecond, the program
// sleeps as ever. There is no way back to the C library's own functions that works under every
// sanitizer, so the sleep is the system call.
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <utility>

#include "simulator/standin/call_log.h"
#include "simulator/standin/socket_backend.h"

namespace {

using std::chrono::nanoseconds;
using std::chrono::seconds;

constexpr nanoseconds kShortestPause = std::chrono::milliseconds(1);

bool SkipsPauses() {
  const char* value = std::getenv("TS30_STANDIN_SKIP_PAUSES");
  return value != nullptr && std::strcmp(value, "1") == 0;
}

nanoseconds LengthOf(const timespec& time) {
  return seconds(time.tv_sec) + nanoseconds(time.tv_nsec);
}

bool IsValid(const timespec* time) {
  return time != nullptr && time->tv_sec >= 0 && time->tv_nsec >= 0 &&
         time->tv_nsec < 1'000'000'000;
}

void LogPause(nanoseconds length) {
  if (!hollin::simulator::LogWanted()) return;
  char line[64];
  std::snprintf(line, sizeof line, "pause %lld.%09lld", static_cast<long long>(length / seconds(1)),
                static_cast<long long>((length % seconds(1)).count()));
  hollin::simulator::LogLine(line);
}

// True when the pause is over already.
bool Skipped(nanoseconds length) {
  if (length < kShortestPause) return false;
  LogPause(length);
  if (!SkipsPauses()) return false;
  hollin::simulator::TellSkippedTime(length);
  return true;
}

// Zero or the error's number, as clock_nanosleep answers.
int Sleep(clockid_t clock, int flags, const timespec* request, timespec* remaining) {
  if (IsValid(request)) {
    nanoseconds length = LengthOf(*request);
    timespec now{};
    if ((flags & TIMER_ABSTIME) != 0 && clock_gettime(clock, &now) == 0) length -= LengthOf(now);
    if (Skipped(length)) return 0;
  }
  const int saved = errno;
  const long failed = syscall(SYS_clock_nanosleep, clock, flags, request, remaining);
  return failed == 0 ? 0 : std::exchange(errno, saved);
}

int WithErrno(int error) {
  if (error == 0) return 0;
  errno = error;
  return -1;
}

}  // namespace

#pragma GCC visibility push(default)
// NOLINTBEGIN(readability-inconsistent-declaration-parameter-name): the C library's own names are
// reserved ones.
extern "C" {

int clock_nanosleep(clockid_t clock, int flags, const timespec* request, timespec* remaining) {
  return Sleep(clock, flags, request, remaining);
}

int nanosleep(const timespec* request, timespec* remaining) {
  return WithErrno(Sleep(CLOCK_MONOTONIC, 0, request, remaining));
}

int usleep(useconds_t microseconds) {
  const timespec request{static_cast<time_t>(microseconds / 1'000'000),
                         static_cast<long>(microseconds % 1'000'000) * 1000};
  return WithErrno(Sleep(CLOCK_MONOTONIC, 0, &request, nullptr));
}

}  // extern "C"
// NOLINTEND(readability-inconsistent-declaration-parameter-name)
#pragma GCC visibility pop
