// SPDX-License-Identifier: MIT
#include "tests/package/package_recipes.h"

#include <array>
#include <stdexcept>
#include <utility>

#include "package/package_writer.h"
#include "tests/package/literal_packages.h"
#include "tests/support/hex_bytes.h"

namespace hollin {
namespace {

using namespace std::string_literals;

const std::string kA1 =
    "[Chip Info]\n"
    "Chip Name=Sample\n"
    "Chip Type=2\n"
    "Chip Size=64K\n"
    "[Transmission Info]\n"
    "Start Address=0\n"
    "Data Length=4096\n"
    "Time Over=0\n";

// Four sectors of 2 KiB, the last one reserved.
const std::string kA2 =
    "[Chip Type]\nType=1\n"
    "[Flash Modle]\nSample\n"
    "[Write Modle]\nMode=0\n"
    "[Reserved Sector]\n0xC00\n"
    "[Block Size]\nSize=256\n"
    "[File Offset]\nFileOffset=0\n"
    "[Time]\nMaxWriteBack=1000\nMaxSectorEraseTime=2000\n"
    "[Data]\nErased=0xFFFF\n"
    "[Sector Erase Cycle]\n"
    "EraseCycles=2\nEraseAddr1=0x555\nEraseData1=0xAA\nEraseAddr2=0\nEraseData2=0x30\n"
    "[Program Cycle]\nProgramCycles=1\nProgramAddr1=0x555\nProgramData1=0xA0\n"
    "[Write Buffer Cycle]\n"
    "WriteBufferCycles=1\nWriteBufferPA1=3\nWriteBufferAddr1=0x555\nWriteBufferData1=0x25\n"
    "[Program Buffer Cycle]\n"
    "ProgramBufferCycles=1\nProgramBufferAddr1=0\nProgramBufferData1=0x29\n"
    "[Sector Address List]\n0x000\n0x400\n0x800\n0xC00\n";

const std::string kC1 =
    "[Reserved Sector]\n0x1000\n"
    "[Line Mode]\nLines=4\n"
    "[SPI Number]\nController=0\n"
    "[Chip Select Number]\nSelect=1\n"
    "[Sector Size]\nSize=4096\n";

std::string With(std::string text, const std::string& old, const std::string& replacement) {
  const size_t at = text.find(old);
  if (at == std::string::npos) throw std::logic_error("no such line: " + old);
  return text.replace(at, old.size(), replacement);
}

struct Pack {
  std::string type, description;
  Bytes image;
};

Bytes Package(const std::vector<Pack>& packs, const std::array<std::string, 3>& keys = {"Shift"}) {
  PackageContents contents{
      .productModel = "TS30", .firmwareVersion = "2.0.1", .keys = keys, .packs = {}};
  for (const Pack& pack : packs) {
    contents.packs.push_back({pack.type, ViewOf(pack.description), pack.image});
  }
  Bytes file;
  if (WritePackage(contents, file) != PackRefusal::kNone) throw std::logic_error("not packed");
  return file;
}

Bytes A1(const std::string& description = kA1, size_t size = 1000) {
  return Package({{"A1", description, Counting(size)}});
}
Bytes A1With(const std::string& old, const std::string& replacement, size_t size = 1000) {
  return A1(With(kA1, old, replacement), size);
}
Bytes A2(const std::string& description = kA2, size_t size = 3000) {
  return Package({{"A2", description, Counting(size)}});
}
Bytes A2With(const std::string& old, const std::string& replacement, size_t size = 3000) {
  return A2(With(kA2, old, replacement), size);
}
Bytes C1(const std::string& description = kC1, size_t size = 10000) {
  return Package({{"C1", description, Counting(size)}});
}
Bytes C1With(const std::string& old, const std::string& replacement, size_t size = 10000) {
  return C1(With(kC1, old, replacement), size);
}

// Sets a number in the headers and their sums right.
Bytes Patched(Bytes file, size_t offset, uint32_t value) {
  PatchU32(file, offset, value);
  RepairHeaderSum(file, offset / 128);
  return file;
}

Bytes PatchedText(Bytes file, size_t offset, std::string_view text) {
  PatchText(file, offset, text);
  RepairHeaderSum(file, offset / 128);
  return file;
}

Bytes Cut(Bytes file, size_t size) {
  file.resize(size);
  return file;
}

Bytes Flipped(Bytes file, size_t offset) {
  file.at(offset) ^= 1;
  return file;
}

Bytes Text(std::string_view text) { return Bytes{} + ViewOf(text); }

// An image with a gap of equal bytes for the sector at 0x1000.
Bytes ImageWithGap() { return Counting(4096) + Filled(4096, 0xFF) + Counting(1808); }

Bytes SharedBytes() {
  Bytes file = A1();
  // The image begins with the last byte of the description, a line end.
  const auto address = static_cast<uint32_t>(256 + kA1.size() - 1);
  uint32_t sum = 0;
  for (size_t i = address; i < address + 1000; i++) sum += file[i];
  return Patched(Patched(file, 240, address), 248, sum);
}

}  // namespace

std::vector<PackageRecipe> SoundPackages() {
  return {{"sound-a1", A1()},
          {"sound-a2", A2()},
          {"sound-a2-buffer", A2With("Mode=0", "Mode=1")},
          {"sound-c1", C1()},
          {"sound-c1-a2", Package({{"C1", kC1, Counting(10000)}, {"A2", kA2, Counting(3000)}},
                                  {"Shift", "Play", "Stop"})}};
}

std::vector<PackageRecipe> RefusedPackages() {
  const Bytes two = Package({{"A1", kA1, Counting(1000)}, {"C1", kC1, Counting(100)}});
  return {
      {"headers-cut-short", Cut(A1(), 200)},
      {"headers-cut-short", Text("<!DOCTYPE html>\n<html><body>Log in</body></html>\n"),
       "web-page"},
      {"headers-cut-short", Text("PK\x03\x04 and so on"), "zip"},
      {"headers-cut-short", Cut(two, 300), "second"},
      {"pack-count", Patched(A1(), 120, 0x03000000)},
      {"file-header-sum", Flipped(A1(), 124)},
      {"pack-header-sum", Flipped(two, 300)},
      {"region-outside", Cut(A1(), 1000)},
      {"region-outside", Patched(A1(), 192, 0xFFFFFFF0), "description"},
      {"description-sum", Flipped(A1(), 300)},
      {"image-sum", Flipped(two, two.size() - 1)},
      {"data-type", PatchedText(A1(), 172, "B7")},
      {"header-not-closed", A1With("[Transmission Info]", "[Transmission Info")},
      {"line-outside-sections", A1With("[Chip Info]\n", "[Chip]\n")},
      {"line-without-equals-sign", A1With("Time Over=0", "Time Over 0")},
      {"number-invalid", A2With("Erased=0xFFFF", "  Erased = 0xFFFG")},
      {"number-invalid", C1With("Size=4096", "Size=0x1000 ; 4 KiB"), "comment"},
      {"image-empty", C1(kC1, 0)},
      {"image-too-long", A1(kA1, 65537)},
      {"image-too-long", A2(kA2, 8193), "a2"},
      {"a1-chip-size", A1With("Chip Size=64K\n", "")},
      {"a1-data-length", A1With("Data Length=4096", "Data Length=100")},
      {"a2-flash-model", A2With("[Flash Modle]", "[Flash Model]")},
      {"a2-block-size", A2With("Size=256", "Size=255")},
      {"a2-write-back-time", A2With("MaxWriteBack=1000", "MaxWriteBack=0")},
      {"a2-erase-time", A2With("MaxSectorEraseTime=2000", "MaxSectorEraseTime=0")},
      {"a2-erase-cycles", A2With("EraseCycles=2", "EraseCycles=3")},
      {"a2-program-cycles", A2With("ProgramCycles=1\n", "")},
      {"a2-write-buffer-cycles", A2With("WriteBufferData1=0x25\n", "")},
      {"a2-program-buffer-cycles", A2With("ProgramBufferCycles=1", "ProgramBufferCycles=2")},
      {"a2-sectors", A2With("0x000\n0x400\n0x800\n0xC00\n", "")},
      {"a2-one-sector", A2With("0x400\n0x800\n0xC00\n", "")},
      {"a2-file-offset", A2With("FileOffset=0", "FileOffset=6001")},
      {"c1-line-mode", C1With("Lines=4", "Lines=3")},
      {"c1-spi-number", C1With("Controller=0", "Controller=2")},
      {"c1-chip-select", C1With("Select=1", "Select=2")},
      {"c1-sector-size", C1With("Size=4096", "Size=0")},
      {"no-reserved-sector", C1With("0x1000\n", "")},
  };
}

std::vector<PackageRecipe> PackagesWithFindings() {
  const std::string longComment = "; " + std::string(97, '-') + " Chip Size=1K\n";
  return {
      {"button-gap", Package({{"A1", kA1, Counting(1000)}}, {"", "", "Stop"})},
      {"button-repeated", Package({{"A1", kA1, Counting(1000)}}, {"Play", "Stop", "Play"})},
      {"text-blank", Package({{"A1", kA1, Counting(1000)}}, {"  "})},
      {"text-empty", PatchedText(A1(), 32, "\0"s)},
      {"text-not-ascii", PatchedText(A1(), 48, "2\xFF\x1B")},
      {"text-behind-nul", PatchedText(A1(), 86, "x")},
      {"data-type-upper-bits", Patched(A1(), 172, 0x12343141)},
      {"region-overlaps-headers", SmallestOnePackPackage()},
      {"regions-overlap", SharedBytes()},
      {"second-pack-ignored",
       Patched(Package({{"A1", kA1, Counting(100)}, {"C1", kC1, Counting(100)}}), 120, 0x01000000)},
      {"packs-same-flash", Package({{"C1", kC1, Counting(5000)}, {"C1", kC1, Counting(100)}})},
      {"update-takes-hours", C1With("Size=4096", "Size=8", 60000)},
      {"byte-order-mark", C1("\xEF\xBB\xBF; a comment\n" + kC1)},
      {"line-too-long", A1With("Chip Size=64K\n", "Chip Size=64K\n" + longComment)},
      {"line-not-utf8", A1With("Chip Type=2", "Chip Type=2\xFF")},
      {"line-has-nul", A1With("Chip Type=2", "Chip Type=2\0000"s)},
      {"comment-mark", C1With("0x1000\n", "0x1000\n-- the boot sector\n")},
      {"comment-behind-value", A1With("Chip Type=2", "Chip Type=2 ; ours")},
      {"comment-behind-text", A1With("Chip Name=Sample", "Chip Name=Sample ; ours")},
      {"header-tail", C1With("[Line Mode]", "[Line Mode] Lines=1")},
      {"section-spelling", A2With("[Write Modle]", "[Write Model]")},
      {"section-unknown", C1With("[SPI Number]", "[SPI Controller]")},
      {"line-before-sections", C1("Lines=1\nLines=2\n" + kC1)},
      {"key-unknown", A1With("Time Over", "Timeout")},
      {"key-of-other-section", C1With("Lines=4\n", "Lines=4\nSPI Number=1\n")},
      {"setting-without-effect", A1With("Time Over=0", "Time Over=1000")},
      {"setting-repeated", A1With("Chip Type=2\n", "Chip Type=2\nchip type=3\n")},
      {"number-suffix-1024", A1With("Chip Size=64K", "Chip Size=1M")},
      {"number-not-digits", C1With("0x1000\n", "addr=0x1000\n0x1000\n")},
      {"number-wraps", A1With("Chip Size=64K", "Chip Size=0x100010000")},
      {"reserved-list-empty", A2With("0xC00\n[Block", "[Block")},
      {"a1-data-length-zero", A1With("Data Length=4096", "Data Length=0")},
      {"a1-data-length-above-65536", A1(With(With(kA1, "Chip Size=64K", "Chip Size=128K"),
                                             "Data Length=4096", "Data Length=128K"),
                                        70000)},
      {"a1-several-blocks", A1With("Data Length=4096", "Data Length=512")},
      {"a1-start-address", A1With("Start Address=0", "Start Address=0x100")},
      {"a1-start-address-wraps", A1With("Start Address=0", "Start Address=0x8001")},
      {"a2-sectors-not-ascending", A2With("0x800\n0xC00\n", "0xC00\n0x800\n0x1000\n")},
      {"a2-plan-outside-image", A2With("FileOffset=0", "FileOffset=1501", 3000)},
      {"a2-nothing-to-write", A2With("FileOffset=0", "FileOffset=1500", 3000)},
      {"a2-odd-byte-dropped", A2(kA2, 3001)},
      {"a2-reserved-bytes-dropped", A2With("0xC00\n[Block", "0x400\n[Block")},
      {"a2-erased-value", A2With("Erased=0xFFFF", "Erased=0x1FFFF")},
      {"a2-erase-time-short", A2With("MaxSectorEraseTime=2000", "MaxSectorEraseTime=699")},
      {"a2-block-announced-as-zero",
       A2(With(With(kA2, "Size=256", "Size=65536"), "0x400\n0x800\n0xC00\n",
               "0x10000\n0x20000\n0xC00000\n"),
          131072)},
      {"a2-last-sector-size", A2With("0xC00\n[Block", "0x400\n[Block", 8000)},
      {"a2-cycles-absolute",
       A2With("0x000\n0x400\n0x800\n0xC00\n", "0x1400\n0x1800\n0x1C00\n0xC00000\n")},
      {"a2-cycles-empty",
       A2With("EraseCycles=2\nEraseAddr1=0x555\nEraseData1=0xAA\nEraseAddr2=0\nEraseData2=0x30\n",
              "EraseCycles=0\n")},
      {"a2-cycle-key-both", A2With("ProgramAddr1=0x555", "ProgramAddrOfData1=0x555")},
      {"a2-cycle-order", A2With("EraseAddr1=0x555\nEraseData1=0xAA\nEraseAddr2=0",
                                "EraseAddr2=0x555\nEraseData1=0xAA\nEraseAddr1=0")},
      {"a2-last-erase-address", A2With("EraseAddr2=0\n", "EraseAddr2=0x2AA\n")},
      {"c1-never-fits", C1With("Size=4096", "Size=0x80000000")},
      {"c1-gap-not-skipped", Package({{"C1", kC1, ImageWithGap()}})},
      {"reserved-without-sector", C1With("0x1000\n", "0x1001\n")},
      {"value-truncated", A2With("WriteBufferPA1=3", "WriteBufferPA1=0x103")},
  };
}

}  // namespace hollin
