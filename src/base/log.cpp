// SPDX-License-Identifier: MIT
#include "base/log.h"

#include <fcntl.h>
#include <syslog.h>
#include <unistd.h>

#include <utility>

#include "base/descriptor.h"
#include "base/text.h"

namespace hollin {
namespace {

LogFunction& Replacement() {
  // Never destroyed: a worker may still log while the process exits.
  static auto& function = *new LogFunction;
  return function;
}

LogFunction& Echo() {
  static auto& function = *new LogFunction;  // never destroyed, like the replacement
  return function;
}

// Opened anew, so that it does not block: a terminal that its user has stopped, or that nobody
// reads any more, goes without the line instead of holding an update up.
void WriteToStandardError(const std::string& line) {
  const Descriptor terminal(open("/proc/self/fd/2", O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  if (!terminal.IsOpen()) return;
  const std::string ended = line + "\n";
  [[maybe_unused]] const ssize_t written = write(terminal.number, ended.data(), ended.size());
}

void WriteToSystemLog(const std::string& line) {
  static const bool opened = (openlog("Hollin", LOG_PID, LOG_USER), true);
  static_cast<void>(opened);
  syslog(LOG_NOTICE, "%s", line.c_str());
  if (isatty(STDERR_FILENO) == 0) return;
  if (Echo()) return Echo()(line);
  WriteToStandardError(line);
}

}  // namespace

void Log(std::string_view text) {
  const std::string line = EscapeControlCharacters(text);
  if (Replacement()) return Replacement()(line);
  WriteToSystemLog(line);
}

void SetLogFunction(LogFunction function) { Replacement() = std::move(function); }

void SetLogEcho(LogFunction function) { Echo() = std::move(function); }

}  // namespace hollin
