// SPDX-License-Identifier: MIT
// What hostile packages cost: processor time and memory of an examination, held against the bare
// passes that every package needs (read, sum, write the temporary files, read them back), and how
// both grow when a package has twice as much of something.
//
//   hollin_bounded_work [MEBIBYTES]   of the larger packages, 64 where nothing is said
//
// The system log is left out: its lines are counted elsewhere.
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <string>

#include "base/file.h"
#include "base/log.h"
#include "package/dat_file_examine.h"
#include "package/own_file.h"
#include "package/package_writer.h"
#include "tests/support/hex_bytes.h"
#include "tests/support/temp_folder.h"

namespace hollin::campaign {
namespace {

struct Cost {
  double seconds = 0;
  double mebibytes = 0;
};

struct Kind {
  const char* name;
  const char* dataType;
  const char* begin;  // of the description
  std::function<std::string(size_t index)> line;
};

const char* const kC1 = "[reserved sector]\n4\n";

Kind Repeated(const char* name, const char* begin, const char* line) {
  return {name, "C1", begin, [line](size_t /*index*/) { return line; }};
}

std::vector<Kind> Kinds() {
  return {
      Repeated("reserved entries, one again and again", kC1, "1\n"),
      {"reserved entries, all different", "C1", kC1,
       [](size_t index) { return std::to_string(index * 4) + "\n"; }},
      Repeated("lines of an unknown section", "[reserved sector]\n4\n[x]\n", "y\n"),
      Repeated("comments", kC1, ";\n"),
      Repeated("headers", kC1, "[]\n"),
      Repeated("one long line of blanks", kC1, " "),
      Repeated("numbers of 90 digits", kC1,
               "111111111122222222223333333333444444444455555555556666666666777777777788888888"
               "889999999999\n"),
      {"sector addresses of an A2 that is refused", "A2", "[Sector Address List]\n",
       [](size_t index) { return std::to_string(index * 8) + "\n"; }},
  };
}

void WriteKind(const Kind& kind, size_t mebibytes, const std::string& path) {
  std::string description = kind.begin;
  description.reserve((mebibytes << 20) + 200);
  for (size_t i = 0; description.size() < mebibytes << 20; i++) description += kind.line(i);
  const Bytes image(1000, 1);
  Bytes file;
  const PackRefusal refusal = WritePackage({.productModel = "TS30",
                                            .firmwareVersion = "1",
                                            .keys = {},
                                            .packs = {{kind.dataType, ViewOf(description), image}}},
                                           file);
  FILE* output = std::fopen(path.c_str(), "wb");
  if (refusal != PackRefusal::kNone || output == nullptr ||
      std::fwrite(file.data(), 1, file.size(), output) != file.size()) {
    std::abort();
  }
  std::fclose(output);
}

// In a process of its own, so that its peak of memory is its own too.
template <typename Work>
Cost CostOf(const Work& work) {
  const pid_t child = fork();
  if (child == 0) {
    work();
    _exit(0);
  }
  rusage usage{};
  int status = 0;
  wait4(child, &status, 0, &usage);
  if (status != 0) std::abort();
  return {.seconds = static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
                     static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6,
          .mebibytes = static_cast<double>(usage.ru_maxrss) / 1024};
}

void Bare(const std::string& path, const std::string& temporary) {
  FileContents package;
  FileContents again;
  if (!ReadWholeFile(path, package)) std::abort();
  const uint32_t sum = SumBytes(package.View());
  if (!WriteOwnFile(temporary, package.View()) || !ReadWholeFile(temporary, again)) std::abort();
  if (SumBytes(again.View()) != sum) std::abort();
}

void Examine(const std::string& path) {
  DatFileExamine datFile;
  static_cast<void>(datFile.OpenDatFile(path) && datFile.ExamineDatFile());
  datFile.DeleteTempFiles();
}

struct Costs {
  Cost bare;
  Cost examined;
};

Costs Measure(const Kind& kind, size_t mebibytes) {
  const TempFolder folder;
  const std::string path = folder.Path("package.dat");
  CostOf([&] { WriteKind(kind, mebibytes, path); });
  const Cost nothing = CostOf([] {});
  Costs costs{.bare = CostOf([&] { Bare(path, folder.Path("bare")); }),
              .examined = CostOf([&] { Examine(path); })};
  costs.examined.mebibytes -= nothing.mebibytes;
  return costs;
}

void Report(const Kind& kind, size_t mebibytes) {
  const Costs half = Measure(kind, mebibytes / 2);
  const Costs whole = Measure(kind, mebibytes);
  std::printf("%-44s %8.3f %8.3f %7.2f %9.2f %8.0f %8.2f\n", kind.name, whole.bare.seconds,
              whole.examined.seconds, whole.examined.seconds / whole.bare.seconds,
              whole.examined.seconds / half.examined.seconds, whole.examined.mebibytes,
              whole.examined.mebibytes / static_cast<double>(mebibytes));
  std::fflush(stdout);
}

}  // namespace
}  // namespace hollin::campaign

// NOLINTNEXTLINE(bugprone-exception-escape): nothing is measured then, and that is all.
int main(int argc, char** argv) {
  const size_t mebibytes = argc > 1 ? std::strtoul(argv[1], nullptr, 10) : 64;
  hollin::SetLogFunction([](const std::string& /*line*/) {});
  std::printf("packages of %zu MiB\n%-44s %8s %8s %7s %9s %8s %8s\n", mebibytes, "full of",
              "bare s", "s", "ratio", "doubling", "MiB", "x size");
  for (const auto& kind : hollin::campaign::Kinds()) hollin::campaign::Report(kind, mebibytes);
  return 0;
}
