// SPDX-License-Identifier: MIT
#include "simulator/standin/call_log.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

namespace hollin::simulator {
namespace {

const char* LogPath() {
  const char* path = std::getenv("TS30_STANDIN_LOG");
  return path != nullptr && *path != '\0' ? path : nullptr;
}

}  // namespace

bool LogWanted() { return LogPath() != nullptr; }

void LogLine(std::string line) {
  const char* path = LogPath();
  if (path == nullptr) return;
  line += '\n';
  // One write to an appending descriptor keeps lines whole, whoever else writes.
  const int file = open(path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
  if (file < 0) return;
  [[maybe_unused]] const ssize_t written = write(file, line.data(), line.size());
  close(file);
}

}  // namespace hollin::simulator
