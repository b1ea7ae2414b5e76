// SPDX-License-Identifier: MIT
// Opening and examining a package, against its passes done bare: read the file, sum its regions,
// write them out, read them back, compare. (An A1 updater sums nothing while it loads.) The goals:
// no more than these passes; memory that grows by at most 2.0 times the image and 2 MiB.
#include <malloc.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include "base/bytes.h"
#include "benchmarks/floors/bare_passes.h"
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

void ExamineBare(const PackageFile& package, size_t imageSize) {
  size_t size = 0;
  const auto file = floors::Read(package.Path().c_str(), size);
  const uint8_t* const image = file.get() + (size - imageSize);
  benchmark::DoNotOptimize(floors::SumOfBytes(image, imageSize));
  floors::Write(package.Path("image").c_str(), image, imageSize);
  const auto copy = floors::Read(package.Path("image").c_str(), size);
  if (std::memcmp(copy.get(), image, imageSize) != 0) std::abort();
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
