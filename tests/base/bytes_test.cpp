// SPDX-License-Identifier: MIT
#include "base/bytes.h"

#include <gtest/gtest.h>

#include "tests/support/hex_bytes.h"

namespace hollin {
namespace {

TEST(PacketTest, FieldsFollowEachOtherLittleEndian) {
  const Bytes packet = Packet().U8(0x01).U16(0x0302).U24(0x060504).U32(0x0A090807).Zeros(2);
  EXPECT_EQ(packet, Hex("01  02 03  04 05 06  07 08 09 0A  00 00"));
}

TEST(PacketTest, WiderValuesLoseTheirUpperBits) {
  const Bytes packet = Packet().U8(0x1FF).U16(0x10000).U24(0x01FFFFFF).U32(0xFFFFFFFF);
  EXPECT_EQ(packet, Hex("FF  00 00  FF FF FF  FF FF FF FF"));
}

TEST(PacketTest, AnEmptyPacketHasNoBytes) {
  const Bytes packet = Packet().Zeros(0);
  EXPECT_TRUE(packet.empty());
}

TEST(PutTest, ANumberIsPutLittleEndianAndItsNeighboursStay) {
  Bytes bytes = Filled(6, 0xEE);
  PutU32(bytes, 1, 0x04030201);
  EXPECT_EQ(bytes, Hex("EE 01 02 03 04 EE"));
}

TEST(ReadTest, NumbersAreLittleEndian) {
  const Bytes bytes = Hex("FF 01 02 03 04 FF");
  EXPECT_EQ(ReadU16(bytes, 1), 0x0201);
  EXPECT_EQ(ReadU32(bytes, 1), 0x04030201U);
}

TEST(ReadTest, NumbersAreUnsigned) {
  EXPECT_EQ(ReadU16(Hex("FF FF"), 0), 0xFFFF);
  EXPECT_EQ(ReadU32(Hex("FF FF FF FF"), 0), 0xFFFFFFFFU);
  EXPECT_EQ(ReadU32(Hex("00 00 00 80"), 0), 0x80000000U);
}

TEST(SumTest, BytesAddUpWithoutSign) {
  EXPECT_EQ(SumBytes({}), 0U);
  EXPECT_EQ(SumBytes(Hex("FF 80 01")), 0x180U);
  EXPECT_EQ(SumBytes(Filled(0x10000, 0xFF)), 0xFF0000U);
}

// They are added up piece by piece.
TEST(SumTest, PiecesOfAnyLengthAddUp) {
  EXPECT_EQ(SumBytes(Filled(255, 0xFF)), 0xFE01U);
  EXPECT_EQ(SumBytes(Filled(256, 0xFF)), 0xFF00U);
  EXPECT_EQ(SumBytes(Filled(257, 0xFF)), 0xFFFFU);
  EXPECT_EQ(SumBytes(Filled(513, 0xFF)), 0x1FEFFU);
  EXPECT_EQ(SumWords(Filled(510, 0xFF)), 0xFEFF01U);
  EXPECT_EQ(SumWords(Filled(511, 0xFF)), 0xFEFF01U);
  EXPECT_EQ(SumWords(Filled(512, 0xFF)), 0xFFFF00U);
  EXPECT_EQ(SumWords(Filled(513, 0xFF)), 0xFFFF00U);
  EXPECT_EQ(SumWords(Filled(514, 0xFF)), 0x100FEFFU);
}

TEST(SumTest, WordsAddUpWithoutAnOddLastByte) {
  EXPECT_EQ(SumWords({}), 0U);
  EXPECT_EQ(SumWords(Hex("FF")), 0U);
  EXPECT_EQ(SumWords(Hex("01 02")), 0x0201U);
  EXPECT_EQ(SumWords(Hex("01 02 FF")), 0x0201U);
  EXPECT_EQ(SumWords(Hex("FF FF FF FF")), 0x1FFFEU);
}

}  // namespace
}  // namespace hollin
