// SPDX-License-Identifier: MIT
#include "package/own_file.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "base/descriptor.h"
#include "base/log.h"

namespace hollin {
namespace {

void WriteAll(const Descriptor& file, ByteView bytes) {
  while (!bytes.empty()) {
    const ssize_t count = write(file.number, bytes.data(), bytes.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return;
    bytes = bytes.subspan(static_cast<size_t>(count));
  }
}

// Why the file behind `file` must not be written to; null when it may be.
const char* ReasonNotOurs(const Descriptor& file) {
  struct stat status = {};
  if (fstat(file.number, &status) != 0) return "its state cannot be read";
  if (!S_ISREG(status.st_mode)) return "it is not a regular file";
  if (status.st_uid != geteuid()) return "it belongs to another user";
  if (status.st_nlink != 1) return "it has more than one name";
  return nullptr;
}

bool Refuse(const std::string& path, std::string_view reason) {
  Log(fmt::format("Cannot write {}: {}", path, reason));
  return false;
}

}  // namespace

bool WriteOwnFile(const std::string& path, ByteView bytes) {
  // Not truncated while opening: what is opened may turn out to be somebody else's.
  const Descriptor file(open(path.c_str(),
                             O_WRONLY | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC,
                             S_IRUSR | S_IWUSR));
  if (!file.IsOpen()) return Refuse(path, std::strerror(errno));
  if (const char* reason = ReasonNotOurs(file)) return Refuse(path, reason);
  if (fchmod(file.number, S_IRUSR | S_IWUSR) != 0 || ftruncate(file.number, 0) != 0) {
    return Refuse(path, std::strerror(errno));
  }
  // Deliberate: bytes that find no room are no failure here. The examination compares what is read
  // back with the package, which finds that and more.
  WriteAll(file, bytes);
  return true;
}

void RemoveOwnFile(const std::string& path) {
  struct stat status = {};
  if (lstat(path.c_str(), &status) != 0 || status.st_uid != geteuid()) return;
  static_cast<void>(std::remove(path.c_str()));
}

}  // namespace hollin
