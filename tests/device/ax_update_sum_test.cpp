// SPDX-License-Identifier: MIT
// The checksums: all add up in 32 bits and give the low 16.
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <memory>

#include "device/ax_update.h"
#include "tests/support/hex_bytes.h"

namespace hollin {
namespace {

uint32_t ByteSum(const Bytes& bytes) {
  return AXUpdate::ByteSum(bytes.data(), static_cast<int32_t>(bytes.size()));
}

uint32_t WordSum(const Bytes& bytes) {
  return AXUpdate::WordSum(bytes.data(), static_cast<int32_t>(bytes.size()));
}

uint32_t ImageWordSum(const Bytes& bytes) {
  AXUpdate updater("", "");
  updater.image = std::make_unique<uint8_t[]>(bytes.size());
  std::copy(bytes.begin(), bytes.end(), updater.image.get());
  updater.imageLength = static_cast<int64_t>(bytes.size());
  return updater.ImageWordSum();
}

TEST(AXUpdateSumTest, ByteSumOf256BytesOfFFIsFF00) {
  EXPECT_EQ(ByteSum(Filled(0x100, 0xFF)), 0xFF00U);
}

TEST(AXUpdateSumTest, ByteSumKeepsSixteenBits) {
  EXPECT_EQ(ByteSum(Filled(0x101, 0xFF)), 0xFFFFU);
  EXPECT_EQ(ByteSum(Filled(0x101, 0xFF) + Hex("01")), 0U);
  EXPECT_EQ(ByteSum(Filled(0x102, 0xFF)), 0x00FEU);
}

TEST(AXUpdateSumTest, ByteSumAddsUnsignedBytes) { EXPECT_EQ(ByteSum(Hex("80 80 01")), 0x101U); }

TEST(AXUpdateSumTest, ByteSumTakesTheGivenLengthOnly) {
  const Bytes bytes = Hex("01 02 04");
  EXPECT_EQ(AXUpdate::ByteSum(bytes.data(), 1), 1U);
  EXPECT_EQ(AXUpdate::ByteSum(bytes.data(), 2), 3U);
  EXPECT_EQ(AXUpdate::ByteSum(bytes.data(), 3), 7U);
}

TEST(AXUpdateSumTest, WordSumOfThreeBytesIsTheFirstWord) {
  EXPECT_EQ(WordSum(Hex("01 02 03")), 0x0201U);
}

TEST(AXUpdateSumTest, WordSumAddsLittleEndianWords) {
  EXPECT_EQ(WordSum(Hex("01 02 03 04")), 0x0604U);
  EXPECT_EQ(WordSum(Hex("01 02 03 04 FF")), 0x0604U);
}

TEST(AXUpdateSumTest, WordSumOfOneByteIsZero) { EXPECT_EQ(WordSum(Hex("FF")), 0U); }

TEST(AXUpdateSumTest, WordSumKeepsSixteenBits) {
  EXPECT_EQ(WordSum(Hex("FF FF 01 00")), 0U);
  EXPECT_EQ(WordSum(Hex("FF FF FF FF")), 0xFFFEU);
}

TEST(AXUpdateSumTest, LengthsBelowOneSumToZero) {
  const Bytes bytes = Filled(4, 0xFF);
  for (const int32_t length : {0, -1, std::numeric_limits<int32_t>::min()}) {
    EXPECT_EQ(AXUpdate::ByteSum(bytes.data(), length), 0U) << length;
    EXPECT_EQ(AXUpdate::WordSum(bytes.data(), length), 0U) << length;
  }
  EXPECT_EQ(AXUpdate::ByteSum(bytes.data(), 1), 0xFFU);
}

TEST(AXUpdateSumTest, AbsentDataSumsToZero) {
  EXPECT_EQ(AXUpdate::ByteSum(nullptr, 100), 0U);
  EXPECT_EQ(AXUpdate::WordSum(nullptr, 100), 0U);
}

TEST(AXUpdateSumTest, ImageWordSumTakesTheWholeImageWithoutAnOddLastByte) {
  EXPECT_EQ(ImageWordSum(Hex("01")), 0U);
  EXPECT_EQ(ImageWordSum(Hex("01 02")), 0x0201U);
  EXPECT_EQ(ImageWordSum(Hex("01 02 03")), 0x0201U);
  EXPECT_EQ(ImageWordSum(Hex("01 02 03 04")), 0x0604U);
}

TEST(AXUpdateSumTest, ImageWordSumKeepsSixteenBits) {
  EXPECT_EQ(ImageWordSum(Filled(0x20000, 0xFF)), 0U);
  EXPECT_EQ(ImageWordSum(Filled(0x20000, 0xFF) + Hex("05 00")), 5U);
}

TEST(AXUpdateSumTest, ImageWordSumWithoutAnImageIsZero) {
  AXUpdate updater("", "");
  EXPECT_EQ(updater.ImageWordSum(), 0U);
  updater.imageLength = 100;
  EXPECT_EQ(updater.ImageWordSum(), 0U);
}

TEST(AXUpdateSumTest, ImageWordSumOfLengthsBelowTwoIsZero) {
  AXUpdate updater("", "");
  updater.image = std::make_unique<uint8_t[]>(4);
  std::fill_n(updater.image.get(), 4, uint8_t{0xFF});
  for (const int64_t length : {int64_t{1}, int64_t{0}, int64_t{-1}}) {
    updater.imageLength = length;
    EXPECT_EQ(updater.ImageWordSum(), 0U) << length;
  }
}

}  // namespace
}  // namespace hollin
