// SPDX-License-Identifier: MIT
// The passes that opening a package cannot do without, one each: read the file, sum its bytes,
// write the temporary files, read the image back, sum its words.
//
//   hollin_examine_floor PACKAGE DESCRIPTION-LENGTH
//
// The description's bytes stand behind the headers, the image behind the description.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace {

constexpr const char* kDescription = "/tmp/floor.ini";
constexpr const char* kImage = "/tmp/floor.bin";
constexpr size_t kHeaders = 256;  // of a package with one pack

std::unique_ptr<uint8_t[]> Read(const char* path, size_t& size) {
  const int file = open(path, O_RDONLY | O_CLOEXEC);
  struct stat status = {};
  if (fstat(file, &status) != 0) std::abort();
  size = static_cast<size_t>(status.st_size);
  std::unique_ptr<uint8_t[]> bytes(new uint8_t[size]);
  if (read(file, bytes.get(), size) != status.st_size) std::abort();
  close(file);
  return bytes;
}

void Write(const char* path, const uint8_t* bytes, size_t size) {
  const int file = open(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
  if (write(file, bytes, size) != static_cast<ssize_t>(size)) std::abort();
  close(file);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  size_t size = 0;
  const auto file = Read(argv[1], size);
  uint32_t sum = 0;
  for (size_t i = 0; i < size; i++) sum += file[i];
  const size_t description = std::strtoul(argv[2], nullptr, 10);
  Write(kDescription, file.get() + kHeaders, description);
  Write(kImage, file.get() + kHeaders + description, size - kHeaders - description);
  const auto image = Read(kImage, size);
  uint32_t words = 0;
  for (size_t i = 0; i + 1 < size; i += 2) {
    uint16_t word = 0;
    std::memcpy(&word, &image[i], sizeof word);
    words += word;
  }
  unlink(kDescription);
  unlink(kImage);
  std::printf("%u %u\n", sum, words);
  return 0;
}
