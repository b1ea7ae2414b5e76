// SPDX-License-Identifier: MIT
#include "tests/faults/swapped_files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "base/descriptor.h"

namespace hollin::faults {
namespace {

using Path = const std::string&;

std::string TextOfFile(Path path) {
  struct stat status = {};
  if (lstat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return "nothing";
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void Clear(Path path) {
  std::error_code ignored;
  std::filesystem::remove_all(path, ignored);
}

// A new file takes the old one's place at one stroke.
void Replace(Path path, Path text) {
  const std::string other = path + ".other";
  std::ofstream(other, std::ios::binary) << text;
  chmod(other.c_str(), 0666);
  if (std::rename(other.c_str(), path.c_str()) != 0) Clear(other);
}

// Runs `change` on the file itself, unless it has another name, where it is not to be hurt.
template <typename Change>
void ChangeInPlace(Path path, const Change& change) {
  const Descriptor file(open(path.c_str(), O_WRONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  struct stat status = {};
  if (!file.IsOpen() || fstat(file.number, &status) != 0) return;
  if (S_ISREG(status.st_mode) && status.st_nlink == 1) change(file.number, status.st_size);
}

void PutAnother(Path path) { Replace(path, "not of the package"); }

void PutOneOfItsLength(Path path) {
  std::string text = TextOfFile(path);
  if (!text.empty()) text.back() = static_cast<char>(~text.back());
  Replace(path, text);
}

void ChangeFirstByte(Path path) {
  ChangeInPlace(path,
                [](int file, off_t /*size*/) { static_cast<void>(pwrite(file, "?", 1, 0) == 1); });
}

void Cut(Path path) {
  ChangeInPlace(path, [](int file, off_t size) {
    static_cast<void>(ftruncate(file, size > 0 ? size - 1 : 0) == 0);
  });
}

void Grow(Path path) {
  ChangeInPlace(path,
                [](int file, off_t size) { static_cast<void>(pwrite(file, "?", 1, size) == 1); });
}

void PutLink(Path path) {
  const std::string target = path + ".target";
  std::ofstream(target) << "not of the package";
  Clear(path);
  static_cast<void>(symlink(target.c_str(), path.c_str()) == 0);
}

void PutFifo(Path path) {
  Clear(path);
  static_cast<void>(mkfifo(path.c_str(), 0666) == 0);
}

void PutFolder(Path path) {
  Clear(path);
  static_cast<void>(mkdir(path.c_str(), 0777) == 0);
}

void Exchange(Path path) {
  const std::string other = path.ends_with("INI") ? path.substr(0, path.size() - 3) + "BIN"
                                                  : path.substr(0, path.size() - 3) + "INI";
  static_cast<void>(renameat2(AT_FDCWD, path.c_str(), AT_FDCWD, other.c_str(), RENAME_EXCHANGE) ==
                    0);
}

}  // namespace

const std::vector<Swap>& Swaps() {
  static const std::vector<Swap> swaps = {
      {"another file", PutAnother},
      {"another file of its length", PutOneOfItsLength},
      {"its first byte changed", ChangeFirstByte},
      {"cut", Cut},
      {"grown", Grow},
      {"gone", Clear},
      {"a link", PutLink},
      {"a FIFO", PutFifo},
      {"a folder", PutFolder},
      {"exchanged with its neighbour", Exchange},
  };
  return swaps;
}

void RemoveLeftovers(const std::string& path) {
  Clear(path + ".other");
  Clear(path + ".target");
}

}  // namespace hollin::faults
