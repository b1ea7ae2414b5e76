// SPDX-License-Identifier: MIT
#include "tests/campaign/reference_updates.h"

#include <stdexcept>

#include "package/package_writer.h"
#include "tests/support/hex_bytes.h"

namespace hollin::campaign {
namespace {

using simulator::A2Profile;
using simulator::C1Profile;
using simulator::Fault;
using simulator::FaultKind;
using simulator::FaultMoment;

// No two places of an image look alike.
Bytes Noise(size_t count, uint32_t seed) {
  Bytes bytes(count);
  for (uint8_t& byte : bytes) {
    seed = seed * 1664525 + 1013904223;
    byte = static_cast<uint8_t>(seed >> 24);
  }
  return bytes;
}

std::string Line(const std::string& key, uint64_t value) {
  return key + "=" + std::to_string(value) + "\n";
}

std::string Cycles(const std::string& count, const std::vector<ReferenceCycle>& cycles) {
  std::string text = Line(count, cycles.size());
  for (const ReferenceCycle& cycle : cycles) {
    text += Line("Addr", cycle.address) + Line("Data", cycle.data);
  }
  return text;
}

std::string Describe(const ReferenceA1& pack) {
  return "[Chip Info]\n" + Line("Chip Type", pack.mode) + Line("Chip Size", pack.chipSize) +
         "[Transmission Info]\n" + Line("Start Address", pack.startAddress) +
         Line("Data Length", pack.blockLength);
}

template <typename List>
std::string Numbers(const std::string& section, const List& list) {
  std::string text = "[" + section + "]\n";
  for (const uint32_t number : list) text += std::to_string(number) + "\n";
  return text;
}

std::string Describe(const ReferenceA2& pack) {
  const Bytes& buffer = pack.writeBufferParameters;
  const Bytes& programBuffer = pack.programBufferParameters;
  return "[Chip Type]\n" + Line("type", pack.mode) + "[Flash Modle]\nTS-8\n[Write Modle]\n" +
         Line("mode", pack.usesWriteBuffer ? 1 : 0) + Numbers("Reserved Sector", pack.reserved) +
         "[Block Size]\n" + Line("words", pack.blockWords) + "[File Offset]\n" +
         Line("FileOffset", pack.fileOffset) + "[Time]\n" +
         Line("MaxSectorEraseTime", pack.mostEraseTime) + "[Data]\n" +
         Line("erased", pack.erasedWord) + "[Sector Erase Cycle]\n" +
         Cycles("EraseCycles", pack.erase) + "[Program Cycle]\n" +
         Cycles("ProgramCycles", pack.program) + "[Write Buffer Cycle]\n" +
         Line("WriteBufferCount", buffer[0]) + Line("WriteBufferPA1", buffer[1]) +
         Line("WriteBufferPA2", buffer[2]) + Line("WriteBufferSA1", buffer[3]) +
         Line("WriteBufferSA2", buffer[4]) + Cycles("WriteBufferCycles", pack.writeBuffer) +
         "[Program Buffer Cycle]\n" + Line("ProgramBufferSA1", programBuffer[0]) +
         Line("ProgramBufferSA2", programBuffer[1]) +
         Cycles("ProgramBufferCycles", pack.programBuffer) +
         Numbers("Sector Address List", pack.sectors);
}

std::string Describe(const ReferenceC1& pack) {
  return Numbers("reserved sector", pack.reserved) + "[line mode]\n" + Line("n", pack.lines) +
         "[spi number]\n" + Line("n", pack.spi) + "[chip select number]\n" +
         Line("n", pack.chipSelect) + "[sector size]\n" + Line("n", pack.sectorSize);
}

constexpr uint32_t kNowhere = 0xFFFFFFFF;  // a reserved address that is no sector's

// `count` sectors of `words` each.
std::vector<uint32_t> Sectors(uint32_t start, uint32_t count, uint32_t words) {
  std::vector<uint32_t> sectors;
  for (uint32_t i = 0; i < count; i++) sectors.push_back(start + i * words);
  return sectors;
}

ReferenceA2 A2Pack(std::vector<uint32_t> sectors, uint32_t blockWords, Bytes image) {
  return {.sectors = std::move(sectors),
          .reserved = {kNowhere},
          .blockWords = blockWords,
          .erase = {{0x555, 0xAA}, {0x2AA, 0x55}, {0, 0x30}},
          .program = {{0x555, 0xAA}, {0x555, 0xA0}},
          .writeBufferParameters = {15, 3, 0xFF, 4, 0xFF},
          .writeBuffer = {{0x2AA, 0x25}},
          .programBufferParameters = {1, 0xFF},
          .programBuffer = {{0x2AB, 0x29}},
          .image = std::move(image)};
}

// Chips that an update has no use for are left out: their memory would only cost time.
simulator::KeyboardOptions Keyboard() {
  return {.a1 = {.size = 0}, .a2 = {.sectors = {}}, .c1 = {.capacities = {}}};
}

simulator::KeyboardOptions A1Keyboard(uint32_t size, uint32_t base) {
  simulator::KeyboardOptions options = Keyboard();
  options.a1 = {.size = size, .base = base};
  return options;
}

simulator::KeyboardOptions A2Keyboard(std::vector<uint32_t> sectors) {
  simulator::KeyboardOptions options = Keyboard();
  options.a2 = {.sectors = std::move(sectors),
                .erase = {{0x555, 0xAA}, {0x2AA, 0x55}, {0, 0x30}},
                .program = {{0x555, 0xAA}, {0x555, 0xA0}},
                .writeBuffer = {{15, 3, 0xFF, 4, 0xFF}, {{0x2AA, 0x25}}},
                .programBuffer = {{1, 0xFF}, {{0x2AB, 0x29}}}};
  return options;
}

simulator::KeyboardOptions C1Keyboard(uint32_t capacity) {
  simulator::KeyboardOptions options = Keyboard();
  options.c1.capacities = {{{capacity, 0}, {}}};
  return options;
}

ReferenceUpdate A1OneBlock() {
  const ReferenceA1 pack{.chipSize = 0x20000, .blockLength = 0x10000, .image = Noise(0xFFF1, 1)};
  return {"A1, one block", {pack}, A1Keyboard(0x12000, 0)};
}

ReferenceUpdate A1ThreeBlocks() {
  const ReferenceA1 pack{
      .chipSize = 0x20000, .startAddress = 0x800, .blockLength = 0x5000, .image = Noise(0xE800, 2)};
  return {"A1, three blocks", {pack}, A1Keyboard(0x10000, 0x800)};
}

// The programming command has so many cycles that it takes two reports, and its echo two as well.
ReferenceUpdate A2Word() {
  const std::vector<uint32_t> sectors = Sectors(0, 9, 0x400);
  ReferenceA2 pack = A2Pack(sectors, 32, Noise(8 * 0x800 - 300, 3));
  simulator::KeyboardOptions keyboard = A2Keyboard(sectors);
  pack.program.clear();
  keyboard.a2.program.clear();
  for (uint16_t i = 0; i < 15; i++) {
    const auto address = static_cast<uint16_t>(0x555 + i);
    const auto data = static_cast<uint16_t>(0xA0 + i);
    pack.program.push_back({address, data});
    keyboard.a2.program.push_back({address, data});
  }
  return {"A2, word program", {pack}, keyboard};
}

ReferenceUpdate A2WriteBuffer() {
  const std::vector<uint32_t> sectors = Sectors(0x1400, 9, 0x400);
  ReferenceA2 pack = A2Pack(sectors, 32, Noise(8 * 0x800 - 301, 4));
  pack.usesWriteBuffer = true;
  pack.fileOffset = 50;
  return {"A2, write buffer", {pack}, A2Keyboard(sectors), sectors[0]};
}

// An erase that takes a little longer than the description allows is begun anew, and the first
// programming command is not echoed at once.
ReferenceUpdate A2Reserved() {
  const std::vector<uint32_t> sectors = Sectors(0, 9, 0x400);
  ReferenceA2 pack = A2Pack(sectors, 32, Noise(8 * 0x800 - 100, 5));
  pack.reserved = {sectors[1], sectors[5]};
  pack.mostEraseTime = 710;
  simulator::KeyboardOptions keyboard = A2Keyboard(sectors);
  keyboard.a2.eraseTime = std::chrono::milliseconds(690);
  // Behind the mode command, six erases of three cycles and the polls between them.
  keyboard.faults = {{.kind = FaultKind::kWrongEcho,
                      .moment = FaultMoment::kCommand,
                      .index = 37,
                      .parameter = 1}};
  return {"A2, reserved sector, re-erase, resend", {pack}, keyboard};
}

ReferenceUpdate C1Small() {
  const ReferenceC1 pack{.chipSelect = 0,
                         .lines = 4,
                         .sectorSize = 4096,
                         .reserved = {kNowhere},
                         .image = Noise(24 * 4096 + 77, 6)};
  return {"C1, sectors of 4 KiB", {pack}, C1Keyboard(26 * 4096)};
}

ReferenceUpdate C1Large() {
  const ReferenceC1 pack{.sectorSize = 65536, .reserved = {65536}, .image = Noise(65536 + 9000, 7)};
  return {"C1, sectors of 64 KiB, one reserved", {pack}, C1Keyboard(3 * 65536)};
}

ReferenceUpdate A2AndC1() {
  const std::vector<uint32_t> sectors = Sectors(0, 6, 0x400);
  const ReferenceC1 pack{.sectorSize = 4096, .reserved = {0x2000}, .image = Noise(6 * 4096 + 1, 9)};
  simulator::KeyboardOptions keyboard = A2Keyboard(sectors);
  keyboard.c1.capacities = {{{10 * 4096, 0}, {}}};
  return {
      "two packs, A2 and C1", {A2Pack(sectors, 32, Noise(size_t{5} * 0x800, 8)), pack}, keyboard};
}

ReferenceUpdate TwoA2() {
  const std::vector<uint32_t> all = Sectors(0x8000, 10, 0x400);
  return {"two packs, both A2",
          {A2Pack({all.begin(), all.begin() + 5}, 32, Noise(4 * 0x800 + 10, 10)),
           A2Pack({all.begin() + 5, all.end()}, 64, Noise(4 * 0x800 + 1000, 11))},
          A2Keyboard(all),
          all[0]};
}

}  // namespace

Places PlannedPlaces(const ReferenceUpdate& update) {
  Places places;
  for (const ReferencePack& pack : update.packs) {
    std::vector<ReferenceWrite> writes;
    if (const auto* a1 = std::get_if<ReferenceA1>(&pack)) writes = WritesOf(*a1);
    if (const auto* a2 = std::get_if<ReferenceA2>(&pack)) writes = WritesOf(*a2, update.chipStart);
    if (const auto* c1 = std::get_if<ReferenceC1>(&pack)) writes = WritesOf(*c1);
    std::vector<ReferenceWrite>& all = places[pack.index()];
    for (ReferenceWrite& write : writes) {
      if (write.placeSize > 0) all.push_back(std::move(write));
    }
  }
  return places;
}

std::string DataTypeOf(const ReferencePack& pack) {
  return std::array{"A1", "A2", "C1"}.at(pack.index());
}

std::string DescriptionOf(const ReferencePack& pack) {
  return std::visit([](const auto& each) { return Describe(each); }, pack);
}

const Bytes& ImageOf(const ReferencePack& pack) {
  return std::visit([](const auto& each) -> const Bytes& { return each.image; }, pack);
}

Bytes PackageOf(const ReferenceUpdate& update) {
  PackageContents contents{.productModel = "TS30", .firmwareVersion = "1", .keys = {}, .packs = {}};
  std::vector<std::string> descriptions;
  for (const ReferencePack& pack : update.packs) descriptions.push_back(DescriptionOf(pack));
  for (size_t i = 0; i < update.packs.size(); i++) {
    contents.packs.push_back(
        {DataTypeOf(update.packs[i]), ViewOf(descriptions[i]), ImageOf(update.packs[i])});
  }
  Bytes file;
  if (WritePackage(contents, file) != PackRefusal::kNone) throw std::logic_error("no package");
  return file;
}

std::vector<ReferenceUpdate> ReferenceUpdates() {
  return {A1OneBlock(), A1ThreeBlocks(), A2Word(),  A2WriteBuffer(), A2Reserved(),
          C1Small(),    C1Large(),       A2AndC1(), TwoA2()};
}

}  // namespace hollin::campaign
