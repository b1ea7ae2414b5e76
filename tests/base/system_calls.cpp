// SPDX-License-Identifier: MIT
#include "tests/base/system_calls.h"

#include <sys/mman.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <cmath>
#include <cstdarg>

namespace hollin {
namespace {

ssize_t Answer(ssize_t result) {
  if (result >= 0) return result;
  errno = static_cast<int>(-result);
  return -1;
}

// As nanosleep: 0, or -1 with what is left in `rest`.
int Sleep(const timespec* length, timespec* rest) {
  const double seconds =
      static_cast<double>(length->tv_sec) + static_cast<double>(length->tv_nsec) / 1e9;
  const double left = Calls().onSleep ? Calls().onSleep(seconds) : 0;
  if (left <= 0) return 0;
  if (rest != nullptr) {
    rest->tv_sec = static_cast<time_t>(left);
    rest->tv_nsec = std::lround((left - std::floor(left)) * 1e9);
  }
  return EINTR;
}

void KeepLine(const char* format, va_list arguments) {
  Calls().logFormats.emplace_back(format);
  Calls().logLines.emplace_back(va_arg(arguments, const char*));
}

}  // namespace

SystemCalls& Calls() {
  static SystemCalls calls;
  return calls;
}

ssize_t RealRead(int file, void* buffer, size_t size) {
  return syscall(SYS_read, file, buffer, size);
}

ssize_t RealWrite(int file, const void* buffer, size_t size) {
  return syscall(SYS_write, file, buffer, size);
}

}  // namespace hollin

using hollin::Calls;

extern "C" {

ssize_t read(int file, void* buffer, size_t size) {
  if (Calls().onRead) return hollin::Answer(Calls().onRead(file, buffer, size));
  return hollin::RealRead(file, buffer, size);
}

ssize_t write(int file, const void* buffer, size_t size) {
  if (Calls().onWrite) return hollin::Answer(Calls().onWrite(file, buffer, size));
  return hollin::RealWrite(file, buffer, size);
}

int madvise(void* begin, size_t size, int advice) noexcept {
  if (Calls().onAdvise) {
    return static_cast<int>(hollin::Answer(Calls().onAdvise(begin, size, advice)));
  }
  return static_cast<int>(syscall(SYS_madvise, begin, size, advice));
}

uid_t geteuid() noexcept {
  if (Calls().onUser) return Calls().onUser();
  return static_cast<uid_t>(syscall(SYS_geteuid));
}

int nanosleep(const timespec* length, timespec* rest) {
  const int result = hollin::Sleep(length, rest);
  if (result == 0) return 0;
  errno = result;
  return -1;
}

int clock_nanosleep(clockid_t /*clock*/, int /*flags*/, const timespec* length, timespec* rest) {
  return hollin::Sleep(length, rest);
}

// The prototypes of <syslog.h>, which a hardened build would replace by others.
void openlog(const char* ident, int /*option*/, int /*facility*/) { Calls().logIdent = ident; }

void syslog(int /*priority*/, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  hollin::KeepLine(format, arguments);
  va_end(arguments);
}

void __syslog_chk(int /*priority*/, int /*flag*/, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  hollin::KeepLine(format, arguments);
  va_end(arguments);
}
}
