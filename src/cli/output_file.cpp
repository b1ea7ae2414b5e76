// SPDX-License-Identifier: MIT
#include "cli/output_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <system_error>

namespace hollin {
namespace {

bool FailWithErrno(std::string& reason) {
  reason = std::strerror(errno);
  return false;
}

// Where to write: `path`, or the existing file behind it.
bool FindTarget(const std::string& path, std::string& target, std::string& reason) {
  std::error_code failed;
  const auto status = std::filesystem::status(path, failed);
  target = path;
  if (!std::filesystem::exists(status)) return true;
  if (!std::filesystem::is_regular_file(status)) {
    reason = "it exists and is not a regular file";
    return false;
  }
  target = std::filesystem::canonical(path, failed).string();
  reason = failed.message();
  return !failed;
}

// What open() would have given a new file; mkstemp gives less.
mode_t UsualMode() {
  const mode_t mask = umask(0);
  umask(mask);
  return (S_IRUSR | S_IWUSR | S_IRGRP | S_IWGRP | S_IROTH | S_IWOTH) & ~mask;
}

bool WriteAll(int file, ByteView bytes) {
  while (!bytes.empty()) {
    const ssize_t count = write(file, bytes.data(), bytes.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return false;
    bytes = bytes.subspan(static_cast<size_t>(count));
  }
  return true;
}

bool FillAndClose(int file, ByteView bytes) {
  const bool isWritten =
      WriteAll(file, bytes) && fchmod(file, UsualMode()) == 0 && fsync(file) == 0;
  const int cause = errno;
  const bool isClosed = close(file) == 0;
  if (!isWritten) errno = cause;
  return isWritten && isClosed;
}

}  // namespace

bool WriteOutputFile(const std::string& path, ByteView bytes, std::string& reason) {
  std::string target;
  if (!FindTarget(path, target, reason)) return false;
  std::string temporary = target + ".XXXXXX";
  const int file = mkostemp(temporary.data(), O_CLOEXEC);
  if (file < 0) return FailWithErrno(reason);
  if (FillAndClose(file, bytes) && std::rename(temporary.c_str(), target.c_str()) == 0) return true;
  FailWithErrno(reason);
  static_cast<void>(unlink(temporary.c_str()));
  return false;
}

}  // namespace hollin
