// SPDX-License-Identifier: MIT
#include "base/file.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <new>

#include "base/log.h"

namespace hollin {
namespace {

// A descriptor that closes itself.
class Descriptor {
 public:
  explicit Descriptor(int opened) : number(opened) {}
  ~Descriptor() {
    if (number >= 0) close(number);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  [[nodiscard]] bool IsOpen() const { return number >= 0; }
  [[nodiscard]] int Number() const { return number; }

 private:
  int number;
};

bool IsRegular(const Descriptor& file, struct stat& status) {
  return fstat(file.Number(), &status) == 0 && S_ISREG(status.st_mode);
}

// Reads until `buffer` is full or the file ends, and fills the rest with zeros. False on an error.
bool ReadAll(const Descriptor& file, std::span<uint8_t> buffer) {
  while (!buffer.empty()) {
    const ssize_t count = read(file.Number(), buffer.data(), buffer.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return false;
    if (count == 0) break;
    buffer = buffer.subspan(static_cast<size_t>(count));
  }
  std::fill(buffer.begin(), buffer.end(), uint8_t{0});
  return true;
}

void WriteAll(const Descriptor& file, ByteView bytes) {
  while (!bytes.empty()) {
    const ssize_t count = write(file.Number(), bytes.data(), bytes.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return;
    bytes = bytes.subspan(static_cast<size_t>(count));
  }
}

// Why the file behind `file` must not be written to; null when it may be.
const char* ReasonNotOurs(const Descriptor& file) {
  struct stat status = {};
  if (!IsRegular(file, status)) return "it is not a regular file";
  if (status.st_uid != geteuid()) return "it belongs to another user";
  if (status.st_nlink != 1) return "it has more than one name";
  return nullptr;
}

bool Refuse(const std::string& path, std::string_view reason) {
  Log(fmt::format("Cannot write {}: {}", path, reason));
  return false;
}

}  // namespace

bool ReadWholeFile(const std::string& path, FileContents& contents, uint64_t maxSize) {
  contents = {};
  const Descriptor file(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  struct stat status = {};
  if (!file.IsOpen() || !IsRegular(file, status) || status.st_size < 0) return false;
  if (static_cast<uint64_t>(status.st_size) > maxSize) return false;
  const auto size = static_cast<size_t>(status.st_size);
  // Not cleared first: a pass over the whole file is worth saving, and ReadAll leaves nothing
  // unwritten.
  std::unique_ptr<uint8_t[]> bytes(new (std::nothrow) uint8_t[size]);
  if (!bytes || !ReadAll(file, {bytes.get(), size})) return false;
  contents = {std::move(bytes), size};
  return true;
}

bool WriteOwnFile(const std::string& path, ByteView bytes) {
  // Not truncated while opening: what is opened may turn out to be somebody else's.
  const Descriptor file(open(path.c_str(),
                             O_WRONLY | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC,
                             S_IRUSR | S_IWUSR));
  if (!file.IsOpen()) return Refuse(path, std::strerror(errno));
  if (const char* reason = ReasonNotOurs(file)) return Refuse(path, reason);
  if (fchmod(file.Number(), S_IRUSR | S_IWUSR) != 0 || ftruncate(file.Number(), 0) != 0) {
    return Refuse(path, std::strerror(errno));
  }
  WriteAll(file, bytes);
  return true;
}

void RemoveOwnFile(const std::string& path) {
  struct stat status = {};
  if (lstat(path.c_str(), &status) != 0 || status.st_uid != geteuid()) return;
  static_cast<void>(std::remove(path.c_str()));
}

}  // namespace hollin
