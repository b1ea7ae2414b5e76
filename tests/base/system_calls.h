// SPDX-License-Identifier: MIT
// Stand-ins for the system calls whose answers a test cannot bring about otherwise: a file that
// changes while it is read, another user, a signal in the middle of a sleep, the system log. Each
// has a hook; without one the real call runs (sleeps never do). Linked into this test program
// alone.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

struct timespec;

namespace hollin {

struct SystemCalls {
  // Instead of read(2) and write(2): the number of bytes, or a negative errno.
  std::function<ssize_t(int file, void* buffer, size_t size)> onRead;
  std::function<ssize_t(int file, const void* buffer, size_t size)> onWrite;
  // Instead of madvise(2): 0, or a negative errno.
  std::function<int(void* begin, size_t size, int advice)> onAdvise;
  // Instead of geteuid(2).
  std::function<uid_t()> onUser;
  // Instead of nanosleep(2): what is left of the sleep, in seconds; 0 when it was slept whole.
  std::function<double(double seconds)> onSleep;

  std::string logIdent;                 // of openlog(3)
  std::vector<std::string> logFormats;  // of syslog(3)
  std::vector<std::string> logLines;    // its one argument
};

SystemCalls& Calls();

// The real calls, for hooks that let through what they saw.
ssize_t RealRead(int file, void* buffer, size_t size);
ssize_t RealWrite(int file, const void* buffer, size_t size);

}  // namespace hollin
