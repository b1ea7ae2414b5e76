// SPDX-License-Identifier: MIT
#include "tests/package/literal_packages.h"

#include <algorithm>

#include "tests/support/hex_bytes.h"

namespace hollin {
namespace {

uint32_t Sum(ByteView bytes) {
  uint32_t sum = 0;
  for (const uint8_t byte : bytes) sum += byte;
  return sum;
}

}  // namespace

// clang-format off
Bytes OnePackPackage() {
  return Hex(
      "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"  // 0: file header
      "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"
      "54 53 33 30 00 00 00 00 00 00 00 00 00 00 00 00"  // 32: productModel
      "56 31 2E 30 32 00 00 00 00 00 00 00 00 00 00 00"  // 48: firmwareVersion
      "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"
      "4D 45 4E 55 00 00 00 00 54 52 41 4E 53 50 4F 53"  // 80: key1, key2
      "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"  // 96: key3
      "00 00 00 00 00 00 00 00 00 00 00 01 D1 05 00 00"  // 123: countDataPack, 124: headerSum
      "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"  // 128: pack 1
      "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"
      "00 00 00 00 00 00 00 00 00 00 00 00 41 31 00 00"  // 172: data type
      "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"
      "00 01 00 00 5B 00 00 00 1F 1E 00 00 00 00 00 00"  // 192: config address, length, sum
      "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"
      "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"
      "60 01 00 00 64 00 00 00 46 50 00 00 66 02 00 00"  // 240: data address, length, sum
      "5B 43 68 69 70 20 49 6E 66 6F 5D 0A 43 68 69 70"  // 256: description
      "20 54 79 70 65 3D 35 0A 43 68 69 70 20 53 69 7A"
      "65 3D 31 4B 0A 5B 54 72 61 6E 73 6D 69 73 73 69"
      "6F 6E 20 49 6E 66 6F 5D 0A 53 74 61 72 74 20 41"
      "64 64 72 65 73 73 3D 30 78 31 30 0A 44 61 74 61"
      "20 4C 65 6E 67 74 68 3D 36 34 0A 00 00 00 00 00"
      "9C 9D 9E 9F A0 A1 A2 A3 A4 A5 A6 A7 A8 A9 AA AB"  // 352: image
      "AC AD AE AF B0 B1 B2 B3 B4 B5 B6 B7 B8 B9 BA BB"
      "BC BD BE BF C0 C1 C2 C3 C4 C5 C6 C7 C8 C9 CA CB"
      "CC CD CE CF D0 D1 D2 D3 D4 D5 D6 D7 D8 D9 DA DB"
      "DC DD DE DF E0 E1 E2 E3 E4 E5 E6 E7 E8 E9 EA EB"
      "EC ED EE EF F0 F1 F2 F3 F4 F5 F6 F7 F8 F9 FA FB"
      "FC FD FE FF");
}

Bytes TwoPackPackage() {
  return Hex(
      "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"  // 0: file header
      "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"
      "54 53 33 30 20 47 72 61 6E 64 20 50 69 61 6E 6F"  // 32: productModel
      "56 65 72 73 69 6F 6E 20 31 32 2E 33 34 2E 35 36"  // 48: firmwareVersion
      "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"
      "41 00 00 00 00 00 00 00 42 00 00 00 00 00 00 00"  // 80: key1, key2
      "46 55 4E 43 54 49 4F 4E 00 00 00 00 00 00 00 00"  // 96: key3
      "00 00 00 00 00 00 00 00 00 00 00 02 AF 0C 00 00"  // 123: countDataPack, 124: headerSum
      "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"  // 128: pack 1
      "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"
      "00 00 00 00 00 00 00 00 00 00 00 00 41 31 00 00"  // 172: data type
      "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"
      "C8 01 00 00 1C 00 00 00 2F 08 00 00 00 00 00 00"  // 192: config address, length, sum
      "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"
      "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"
      "E4 01 00 00 03 00 00 00 21 00 00 00 97 02 00 00"  // 240: data address, length, sum
      "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"  // 256: pack 2
      "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"
      "00 00 00 00 00 00 00 00 00 00 00 00 41 31 00 00"  // 300: data type
      "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"
      "EC 01 00 00 59 00 00 00 9B 1D 00 00 00 00 00 00"  // 320: config address, length, sum
      "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"
      "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"
      "80 01 00 00 46 00 00 00 EF 1A 00 00 40 04 00 00"  // 368: data address, length, sum
      "40 41 42 43 44 45 46 47 48 49 4A 4B 4C 4D 4E 4F"  // 384: image 2
      "50 51 52 53 54 55 56 57 58 59 5A 5B 5C 5D 5E 5F"
      "60 61 62 63 64 65 66 67 68 69 6A 6B 6C 6D 6E 6F"
      "70 71 72 73 74 75 76 77 78 79 7A 7B 7C 7D 7E 7F"
      "80 81 82 83 84 85 00 00 5B 43 68 69 70 20 49 6E"  // 456: description 1
      "66 6F 5D 0D 0A 43 68 69 70 20 53 69 7A 65 3D 32"
      "35 36 0D 0A 0A 0B 0C 00 00 00 00 00 5B 43 68 69"  // 484: image 1, 492: description 2
      "70 20 49 6E 66 6F 5D 0A 43 68 69 70 20 54 79 70"
      "65 3D 33 0A 43 68 69 70 20 53 69 7A 65 3D 31 4B"
      "0A 5B 54 72 61 6E 73 6D 69 73 73 69 6F 6E 20 49"
      "6E 66 6F 5D 0A 44 61 74 61 20 4C 65 6E 67 74 68"
      "3D 36 34 0A 53 74 61 72 74 20 41 64 64 72 65 73"
      "73 3D 31 30 30 EE EE EE");
}

Bytes SmallestOnePackPackage() {
  return Hex(
      "5B 43 68 69 70 20 49 6E 66 6F 5D 0A 43 68 69 70"  // 0: description
      "20 53 69 7A 65 3D 31 4B 00 00 00 00 00 00 00 00"
      "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"  // 32: productModel
      "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"  // 48: firmwareVersion
      "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"
      "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"  // 80: key1, key2
      "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"  // 96: key3
      "00 00 00 00 00 00 00 00 00 00 00 01 EB 07 00 00"  // 123: countDataPack, 124: headerSum
      "01 02 03 04 00 00 00 00 00 00 00 00 00 00 00 00"  // 128: image
      "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"
      "00 00 00 00 00 00 00 00 00 00 00 00 41 31 00 00"  // 172: data type
      "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"
      "00 00 00 00 18 00 00 00 EA 07 00 00 00 00 00 00"  // 192: config address, length, sum
      "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"
      "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"
      "80 00 00 00 04 00 00 00 0A 00 00 00 13 02 00 00"  // 240: data address, length, sum
  );
}

Bytes SmallestTwoPackPackage() {
  return Hex(
      "5B 43 68 69 70 20 49 6E 66 6F 5D 0A 43 68 69 70"  // 0: description
      "20 53 69 7A 65 3D 31 4B 00 00 00 00 00 00 00 00"
      "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"  // 32: productModel
      "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"  // 48: firmwareVersion
      "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"
      "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"  // 80: key1, key2
      "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"  // 96: key3
      "00 00 00 00 00 00 00 00 00 00 00 02 EC 07 00 00"  // 123: countDataPack, 124: headerSum
      "01 02 03 04 00 00 00 00 00 00 00 00 00 00 00 00"  // 128: image
      "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"
      "00 00 00 00 00 00 00 00 00 00 00 00 41 31 00 00"  // 172: data type
      "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"
      "00 00 00 00 18 00 00 00 EA 07 00 00 00 00 00 00"  // 192: config address, length, sum
      "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"
      "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"
      "80 00 00 00 04 00 00 00 0A 00 00 00 13 02 00 00"  // 240: data address, length, sum
      "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"  // 256: pack 2
      "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"
      "00 00 00 00 00 00 00 00 00 00 00 00 41 31 00 00"  // 300: data type
      "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"
      "00 00 00 00 18 00 00 00 EA 07 00 00 00 00 00 00"  // 320: config address, length, sum
      "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"
      "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"
      "80 00 00 00 04 00 00 00 0A 00 00 00 09 02 00 00"  // 368: data address, length, sum
  );
}
// clang-format on

std::string_view OnePackDescription() {
  return "[Chip Info]\nChip Type=5\nChip Size=1K\n[Transmission Info]\nStart Address=0x10\n"
         "Data Length=64\n";
}

Bytes OnePackImage() { return Counting(100, 0x9C); }

std::string_view TwoPackDescription1() { return "[Chip Info]\r\nChip Size=256\r\n"; }

Bytes TwoPackImage1() { return Hex("0A 0B 0C"); }

std::string_view TwoPackDescription2() {
  return "[Chip Info]\nChip Type=3\nChip Size=1K\n[Transmission Info]\nData Length=64\n"
         "Start Address=100";
}

Bytes TwoPackImage2() { return Counting(70, 0x40); }

void PatchU32(std::span<uint8_t> file, size_t offset, uint32_t value) {
  for (size_t i = 0; i < 4; i++) file[offset + i] = static_cast<uint8_t>(value >> (8 * i));
}

void PatchText(std::span<uint8_t> file, size_t offset, std::string_view text) {
  std::copy(text.begin(), text.end(), file.begin() + static_cast<ptrdiff_t>(offset));
}

void RepairHeaderSum(std::span<uint8_t> file, size_t block) {
  PatchU32(file, 128 * block + 124, Sum(file.subspan(128 * block, 124)));
}

Bytes PackageAround(std::string_view description, ByteView image) {
  Bytes file(256);
  file[123] = 1;
  RepairHeaderSum(file, 0);
  PatchText(file, 172, "A1");
  PatchU32(file, 192, 256);
  PatchU32(file, 196, static_cast<uint32_t>(description.size()));
  PatchU32(file, 200, Sum(ViewOf(description)));
  PatchU32(file, 240, static_cast<uint32_t>(256 + description.size()));
  PatchU32(file, 244, static_cast<uint32_t>(image.size()));
  PatchU32(file, 248, Sum(image));
  RepairHeaderSum(file, 1);
  return file + ViewOf(description) + image;
}

}  // namespace hollin
