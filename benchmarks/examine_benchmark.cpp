// SPDX-License-Identifier: MIT
// Opening and examining a package, against its passes done bare: read the file, sum its regions,
// write them out, read them back, compare. (An A1 updater sums nothing while it loads.) The goals:
// no more than these passes; memory that grows by at most 2.0 times the image and 2 MiB.
#include <fcntl.h>
#include <malloc.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include "base/bytes.h"
#include "benchmarks/stopwatch.h"
#include "package/dat_file_examine.h"
#include "package/package_writer.h"

namespace hollin {
namespace {

constexpr std::string_view kDescription = "[Chip Info]\nChip Size=0x10000000\n";
constexpr double kMebibyte = 1 << 20;

// A package with one A1 pack, in a folder of its own.
class PackageFile {
 public:
  explicit PackageFile(size_t imageSize) {
    Bytes image(imageSize);
    uint32_t noise = 1;
    for (uint8_t& byte : image)
      byte = static_cast<uint8_t>((noise = noise * 1664525 + 12345) >> 24);
    PackageContents contents;
    contents.packs = {{.dataType = "A1",
                       .description = {reinterpret_cast<const uint8_t*>(kDescription.data()),
                                       kDescription.size()},
                       .image = image}};
    Bytes file;
    if (mkdtemp(folder.data()) == nullptr || WritePackage(contents, file) != PackRefusal::kNone) {
      std::abort();
    }
    std::ofstream(Path(), std::ios::binary)
        .write(reinterpret_cast<const char*>(file.data()),
               static_cast<std::streamsize>(file.size()));
  }
  ~PackageFile() {
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
  }
  PackageFile(const PackageFile&) = delete;
  PackageFile& operator=(const PackageFile&) = delete;

  [[nodiscard]] std::string Path(const std::string& name = "package.dat") const {
    return folder + "/" + name;
  }

 private:
  std::string folder = std::filesystem::temp_directory_path() / "hollin-benchmark-XXXXXX";
};

struct Buffer {
  std::unique_ptr<uint8_t[]> bytes;
  size_t size = 0;
};

Buffer ReadBare(const std::string& path) {
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  struct stat status = {};
  if (fstat(file, &status) != 0) std::abort();
  Buffer buffer;
  buffer.size = static_cast<size_t>(status.st_size);
  buffer.bytes.reset(new uint8_t[buffer.size]);
  if (read(file, buffer.bytes.get(), buffer.size) != status.st_size) std::abort();
  close(file);
  return buffer;
}

void WriteBare(const std::string& path, ByteView bytes) {
  const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
  if (write(file, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size())) std::abort();
  close(file);
}

uint32_t SumBare(ByteView bytes) {
  uint32_t sum = 0;
  for (const uint8_t byte : bytes) sum += byte;
  return sum;
}

void ExamineBare(const PackageFile& package, size_t imageSize) {
  const Buffer file = ReadBare(package.Path());
  const ByteView image = ByteView(file.bytes.get(), file.size).last(imageSize);
  benchmark::DoNotOptimize(SumBare(image));
  WriteBare(package.Path("image"), image);
  const Buffer copy = ReadBare(package.Path("image"));
  if (std::memcmp(copy.bytes.get(), image.data(), imageSize) != 0) std::abort();
}

void Examine(const PackageFile& package) {
  DatFileExamine datFile;
  if (!datFile.OpenDatFile(package.Path()) || !datFile.ExamineDatFile()) std::abort();
}

// A number of kilobytes from the state of this process, in bytes.
double StatusBytes(const std::string& name) {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with(name + ":")) return std::stod(line.substr(name.size() + 1)) * 1024;
  }
  return 0;
}

// How far memory in use rises above where it stood before.
double PeakGrowth(const PackageFile& package) {
  malloc_trim(0);
  std::ofstream("/proc/self/clear_refs") << "5";  // the peak begins anew
  const double before = StatusBytes("VmRSS");
  Examine(package);
  return StatusBytes("VmHWM") - before;
}

void ExaminePackage(benchmark::State& state) {
  const size_t imageSize = static_cast<size_t>(state.range(0)) << 20;
  const PackageFile package(imageSize);
  const double growth = PeakGrowth(package);
  const Comparison best = CompareInTurns(
      state, [&] { Examine(package); }, [&] { ExamineBare(package, imageSize); });
  for (const char* path : {"/tmp/TEMP1.INI", "/tmp/TEMP1.BIN"}) unlink(path);
  state.counters["bare_ms"] = best.bare * 1000;
  state.counters["time_over_bare"] = best.work / best.bare;
  state.counters["growth_MiB"] = growth / kMebibyte;
  state.counters["growth_less_2MiB_over_image"] =
      (growth - 2 * kMebibyte) / static_cast<double>(imageSize);
}
BENCHMARK(ExaminePackage)
    ->ArgName("MiB")
    ->Arg(16)
    ->Arg(64)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace hollin
