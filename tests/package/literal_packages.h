// SPDX-License-Identifier: MIT
// Update packages written out byte by byte from the tables of the format, sums included, so that
// the reader is never tested against what the writer makes. The patches change them and set sums
// right again, with arithmetic of their own.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "base/bytes.h"

namespace hollin {

// One A1 pack: mode 5, start address 16, blocks of 64 bytes, an image of 100 bytes 9C to FF, that
// is 4 steps. Model "TS30", version "V1.02", buttons "MENU" and "TRANSPOS". The description lies at
// 256 (91 bytes), the image at 352, with a gap between them.
Bytes OnePackPackage();
std::string_view OnePackDescription();
Bytes OnePackImage();

// Two A1 packs whose regions stand in mixed order with gaps. Texts and the third button fill their
// fields: "TS30 Grand Piano", "Version 12.34.56", "A", "B", "FUNCTION". Pack 1 (3 steps): mode 2 by
// default, description at 456 (28 bytes), image 0A 0B 0C at 484. Pack 2 (4 steps): mode 3, start
// address 100, blocks of 64, description at 492 (89 bytes), image of 70 bytes 40 to 85 at 384.
Bytes TwoPackPackage();
std::string_view TwoPackDescription1();
Bytes TwoPackImage1();
std::string_view TwoPackDescription2();
Bytes TwoPackImage2();

// Packages that end with their last header block: description (24 bytes) and image (01 02 03 04)
// lie in bytes of the headers that nobody reads, and both packs of the second share them.
Bytes SmallestOnePackPackage();  // 256 bytes
Bytes SmallestTwoPackPackage();  // 384 bytes

void PatchU32(std::span<uint8_t> file, size_t offset, uint32_t value);
void PatchText(std::span<uint8_t> file, size_t offset, std::string_view text);

// Sets the sum of a header block right; `block` is 0 for the file's, 1 and 2 for the packs'.
void RepairHeaderSum(std::span<uint8_t> file, size_t block);

// A package of one A1 pack around a description and an image, for cases where these matter: they
// follow the headers, and every sum is right.
Bytes PackageAround(std::string_view description, ByteView image);

}  // namespace hollin
