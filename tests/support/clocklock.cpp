// SPDX-License-Identifier: MIT
// For programs under the thread sanitizer: it does not see that a mutex is locked by
// pthread_mutex_clocklock, as std::timed_mutex does, and then takes its unlocking for a bug. So the
// mutex is locked by what the sanitizer does see, whose limit counts by the clock of the day.
#include <pthread.h>

#include <ctime>

namespace {

constexpr long kNanoseconds = 1'000'000'000;  // in a second

timespec Now(clockid_t clock) {
  timespec now = {};
  clock_gettime(clock, &now);
  return now;
}

// a + b - c, with the nanoseconds in their range.
timespec Shifted(const timespec& a, const timespec& b, const timespec& c) {
  const long nanoseconds = a.tv_nsec + b.tv_nsec - c.tv_nsec + kNanoseconds;
  return {.tv_sec = a.tv_sec + b.tv_sec - c.tv_sec - 1 + nanoseconds / kNanoseconds,
          .tv_nsec = nanoseconds % kNanoseconds};
}

}  // namespace

// NOLINTNEXTLINE(readability-inconsistent-declaration-parameter-name): the library's own are
// reserved.
extern "C" int pthread_mutex_clocklock(pthread_mutex_t* mutex, clockid_t clock,
                                       const timespec* limit) noexcept {
  const timespec ofTheDay = Shifted(*limit, Now(CLOCK_REALTIME), Now(clock));
  return pthread_mutex_timedlock(mutex, &ofTheDay);
}
