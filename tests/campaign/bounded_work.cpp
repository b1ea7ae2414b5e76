// SPDX-License-Identifier: MIT
// What hostile packages cost: processor time and memory of an examination, held against the bare
// passes that every package needs (read, sum, write the temporary files, read them back), and how
// both grow when a package has twice as much of something.
//
//   hollin_bounded_work [MEBIBYTES [KIND]...]   of the larger packages, 64 where nothing is said;
//                                               of the kinds whose names contain a word, else of
//                                               all
//
// Ends with 1 when one of twice the length takes more than 2.5 times as long, or when one takes
// more than 4 times its size of memory; where packs share their bytes, each counts for itself.
//
// Each time is the least of five, the sizes in turn, since others use the machine too; of fifteen
// where five seem to grow too much. What the smallest package takes of memory is the program's own.
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include "base/log.h"
#include "benchmarks/floors/bare_passes.h"
#include "package/dat_file_examine.h"
#include "package/package_layout.h"
#include "package/package_writer.h"
#include "tests/support/hex_bytes.h"
#include "tests/support/temp_folder.h"

namespace hollin::campaign {
namespace {

constexpr int kRounds = 5;
constexpr double kMostGrowth = 2.5;
constexpr double kMostMemory = 4;
constexpr double kToOneDigit = 0.05;  // memory is told to one digit, and judged as it is told

struct Cost {
  double seconds = 0;
  double mebibytes = 0;
};

struct Kind {
  const char* name;
  const char* dataType;
  std::string begin;  // of the description
  std::function<std::string(size_t index)> line;
  size_t packs = 1;
  bool isShared = false;  // every description and every image is the same bytes
  double mostMemory = kMostMemory;
};

const char* const kC1 = "[reserved sector]\n4\n";

Kind Repeated(const char* name, const char* begin, const std::string& line) {
  return {name, "C1", begin, [line](size_t /*index*/) { return line; }};
}

// Numbers below `modulus`, in no order.
Kind Shuffled(const char* name, size_t modulus) {
  return {name, "C1", kC1,
          [modulus](size_t index) { return std::to_string(index * 2654435761U % modulus) + "\n"; }};
}

// The kind of line that takes the most memory, as description and as image at once. Each pack keeps
// its description (1), its list (2) and its image (1), and the package is kept (1).
Kind Shared(size_t packs, double mostMemory) {
  Kind kind = Repeated(
      packs == 1 ? "one reserved entry, the image the same bytes" : "the same twice, as two packs",
      kC1, "1\n");
  kind.packs = packs;
  kind.isShared = true;
  kind.mostMemory = mostMemory;
  return kind;
}

const char* const kA2 =
    "[Flash Modle]\nx\n[Sector Erase Cycle]\nEraseCycles=0\n[Program Cycle]\nProgramCycles=0\n"
    "[Write Buffer Cycle]\nWriteBufferCycles=0\n[Program Buffer Cycle]\nProgramBufferCycles=0\n"
    "[Reserved Sector]\n0\n";

std::vector<Kind> Kinds() {
  return {
      Repeated("one reserved entry again and again", kC1, "1\n"),
      {"reserved entries, ascending", "C1", kC1,
       [](size_t index) { return std::to_string(index * 4) + "\n"; }},
      Shuffled("reserved entries, one digit in no order", 10),
      Shuffled("reserved entries, three digits in no order", 1000),
      Shuffled("reserved entries, nine digits in no order", 999999937),
      {"reserved entries, two characters in no order", "C1", kC1,
       [](size_t index) {
         const size_t any = index * 2654435761U;
         return std::string{'\xF1',
                            static_cast<char>(0x80 + any % 64),
                            static_cast<char>(0x80 + any / 64 % 64),
                            static_cast<char>(0x80 + any / 4096 % 64),
                            static_cast<char>('0' + any / 262144 % 10),
                            '\n'};
       }},
      Repeated("lines of an unknown section", "[reserved sector]\n4\n[x]\n", "y\n"),
      {"unknown keys", "A2", "[Time]\n", [](size_t /*index*/) { return "=1\n"; }},
      Repeated("settings", "[reserved sector]\n4\n[line mode]\n", "=1\n"),
      Repeated("settings with blanks", "[reserved sector]\n4\n[line mode]\n", "\tmode = 4 \r\n"),
      {"texts", "A2", "[Flash Modle]\n", [](size_t /*index*/) { return "x\n"; }},
      {"cycles", "A2", "[Sector Erase Cycle]\n", [](size_t /*index*/) { return "addr=1\n"; }},
      Repeated("comments", kC1, ";\n"),
      Repeated("empty lines", kC1, "\n"),
      Repeated("headers", kC1, "[]\n"),
      {"headers of an A2", "A2", "[Time]\n", [](size_t /*index*/) { return "[Data]\n"; }},
      Repeated("one line of blanks", kC1, " "),
      Repeated("one line of wide blanks", kC1, "\xE3\x80\x80"),
      Repeated("lines of NUL", kC1, std::string("\0\n", 2)),
      Repeated("lines that are not UTF-8", kC1, "\xFF\n"),
      Repeated("numbers of 90 digits", kC1,
               "111111111122222222223333333333444444444455555555556666666666777777777788888888"
               "889999999999\n"),
      Repeated("numbers of 30 wide characters", kC1,
               "一二三四五六七八九十一二三四五六七八九十一二三四五六七八九十\n"),
      {"sector addresses of an A2 that is refused", "A2", "[Sector Address List]\n",
       [](size_t index) { return std::to_string(index * 8) + "\n"; }},
      {"sector addresses of an A2", "A2", std::string(kA2) + "[Sector Address List]\n",
       [](size_t index) { return std::to_string(index * 8) + "\n"; }},
      {"keys of an A1", "A1", "[Transmission Info]\nData Length=64\n[Chip Info]\nChip Size=1M\n",
       [](size_t /*index*/) { return "Chip Type=1\n"; }},
      Shared(1, 5),
      Shared(2, 9),
  };
}

// Lets every region of the package be the first description.
void ShareRegions(Bytes& file, size_t packs) {
  using namespace package_layout;
  const ByteView first = ByteView(file).subspan(kBlockSize);
  const uint32_t address = ReadU32(first, kCnfgAddr);
  const uint32_t length = ReadU32(first, kCnfgLength);
  const uint32_t sum = ReadU32(first, kCnfgSum);
  for (size_t pack = 0; pack < packs; pack++) {
    const std::span<uint8_t> block = std::span(file).subspan((1 + pack) * kBlockSize, kBlockSize);
    for (const size_t field : {kCnfgAddr, kDataAddr}) {
      PutU32(block, field, address);
      PutU32(block, field + (kCnfgLength - kCnfgAddr), length);
      PutU32(block, field + (kCnfgSum - kCnfgAddr), sum);
    }
    PutU32(block, kBlockSumOffset, PackageSum(block.first(kBlockSumOffset)));
  }
}

void WriteKind(const Kind& kind, size_t bytes, const std::string& path) {
  std::string description = kind.begin;
  description.reserve(bytes + 200);
  for (size_t i = 0; description.size() < bytes; i++) description += kind.line(i);
  const Bytes image(1000, 1);
  PackageContents contents{.productModel = "TS30", .firmwareVersion = "1", .keys = {}, .packs = {}};
  for (size_t pack = 0; pack < kind.packs; pack++) {
    const ByteView own = pack == 0 ? ViewOf(description) : ViewOf(kind.begin);
    contents.packs.push_back({kind.dataType, own, image});
  }
  Bytes file;
  const PackRefusal refusal = WritePackage(contents, file);
  if (kind.isShared) ShareRegions(file, kind.packs);
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
  size_t size = 0;
  const auto package = floors::Read(path.c_str(), size);
  const uint32_t sum = floors::SumOfBytes(package.get(), size);
  floors::Write(temporary.c_str(), package.get(), size);
  const auto again = floors::Read(temporary.c_str(), size);
  if (floors::SumOfBytes(again.get(), size) != sum) std::abort();
}

// The lines for the system log are made and go nowhere: what the log does with them is its own.
void Examine(const std::string& path, bool& isReady) {
  SetLogFunction([](const std::string& /*line*/) {});
  DatFileExamine datFile;
  isReady = datFile.OpenDatFile(path) && datFile.ExamineDatFile();
  datFile.DeleteTempFiles();
}

struct Costs {
  Cost bare;
  Cost examined;
  bool isReady = false;
};

void TakeLess(Cost& least, const Cost& cost) {
  if (least.seconds == 0 || cost.seconds < least.seconds) least = cost;
}

// A package of a kind and of a size, in a folder of its own. `isReady` is shared with the processes
// that examine.
class Package {
 public:
  Package(const Kind& kind, size_t bytes, bool& isReady) : isReady(isReady) {
    CostOf([&] { WriteKind(kind, bytes, path); });
  }

  void Measure() {
    TakeLess(costs.bare, CostOf([&] { Bare(path, folder.Path("bare")); }));
    TakeLess(costs.examined, CostOf([&] { Examine(path, isReady); }));
    costs.isReady = isReady;
  }

  [[nodiscard]] const Costs& Least() const { return costs; }

 private:
  const TempFolder folder;
  const std::string path = folder.Path("package.dat");
  bool& isReady;
  Costs costs;
};

double Growth(const Package& half, const Package& whole) {
  return whole.Least().examined.seconds / half.Least().examined.seconds;
}

// Whether growth and memory stay within their bounds.
bool Report(const Kind& kind, size_t mebibytes, bool& isReady) {
  const size_t bytes = mebibytes << 20;
  Package small(kind, 1000, isReady);
  Package half(kind, bytes / 2, isReady);
  Package whole(kind, bytes, isReady);
  small.Measure();
  for (int round = 0; round < 3 * kRounds; round++) {
    if (round >= kRounds && Growth(half, whole) <= kMostGrowth) break;
    half.Measure();
    whole.Measure();
  }
  const Costs& costs = whole.Least();
  const double memory = (costs.examined.mebibytes - small.Least().examined.mebibytes) /
                        static_cast<double>(mebibytes);
  const bool isBounded =
      Growth(half, whole) <= kMostGrowth && memory < kind.mostMemory + kToOneDigit;
  std::printf("%-44s %s %6.3f %6.3f %6.2f %9.2f %6.2f%s\n", kind.name,
              costs.isReady ? "taken  " : "refused", costs.bare.seconds, costs.examined.seconds,
              costs.examined.seconds / costs.bare.seconds, Growth(half, whole), memory,
              isBounded ? "" : " too much");
  std::fflush(stdout);
  return isBounded;
}

bool IsWanted(const Kind& kind, int argc, char** argv) {
  const std::string_view name = kind.name;
  return argc <= 2 || std::any_of(argv + 2, argv + argc, [name](const char* word) {
           return name.find(word) != std::string_view::npos;
         });
}

}  // namespace
}  // namespace hollin::campaign

// NOLINTNEXTLINE(bugprone-exception-escape): nothing is measured then, and that is all.
int main(int argc, char** argv) {
  const size_t mebibytes = argc > 1 ? std::strtoul(argv[1], nullptr, 10) : 64;
  void* const shared =
      mmap(nullptr, sizeof(bool), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (shared == MAP_FAILED) return 1;
  auto& isReady = *new (shared) bool(false);
  std::printf("packages of %zu MiB\n%-44s %7s %6s %6s %6s %9s %6s\n", mebibytes, "full of", "",
              "bare s", "s", "ratio", "of half", "memory");
  bool areBounded = true;
  for (const auto& kind : hollin::campaign::Kinds()) {
    if (hollin::campaign::IsWanted(kind, argc, argv)) {
      areBounded = hollin::campaign::Report(kind, mebibytes, isReady) && areBounded;
    }
  }
  return areBounded ? 0 : 1;
}
