// SPDX-License-Identifier: MIT
#include "base/file.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <new>

#include "base/descriptor.h"

namespace hollin {
namespace {

bool IsRegular(const Descriptor& file, struct stat& status) {
  return fstat(file.number, &status) == 0 && S_ISREG(status.st_mode);
}

// Reads until `buffer` is full or the file ends, and fills the rest with zeros. False on an error.
bool ReadAll(const Descriptor& file, std::span<uint8_t> buffer) {
  while (!buffer.empty()) {
    const ssize_t count = read(file.number, buffer.data(), buffer.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return false;
    if (count == 0) break;
    buffer = buffer.subspan(static_cast<size_t>(count));
  }
  std::fill(buffer.begin(), buffer.end(), uint8_t{0});
  return true;
}

// Asks for pages of 2 MiB under a large buffer: an update walks through it, and on its way from one
// page to the next a processor waits. What is refused costs time and nothing else.
void AskForLargePages(std::span<uint8_t> buffer) {
  constexpr size_t kWorthIt = 0x400000;  // bytes
  if (buffer.size() < kWorthIt) return;
  void* begin = buffer.data();
  size_t size = buffer.size();
  const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
  if (std::align(page, page, begin, size) != nullptr) madvise(begin, size, MADV_HUGEPAGE);
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
  if (!bytes) return false;
  AskForLargePages({bytes.get(), size});
  if (!ReadAll(file, {bytes.get(), size})) return false;
  contents = {std::move(bytes), size};
  return true;
}

}  // namespace hollin
