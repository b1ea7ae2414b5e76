// SPDX-License-Identifier: MIT
#include "package/package_writer.h"

#include <gtest/gtest.h>

#include "tests/support/hex_bytes.h"

namespace hollin {
namespace {

class PackageWriterTest : public ::testing::Test {
 protected:
  PackageContents OnePack() {
    PackageContents contents;
    contents.productModel = "TS30";
    contents.firmwareVersion = "1.0";
    contents.keys = {"A", "B", "C"};
    contents.packs = {{.dataType = "A1", .description = description, .image = image}};
    return contents;
  }

  PackRefusal Write(const PackageContents& contents) { return WritePackage(contents, file); }

  // Views of more memory than there is: only their sizes may be looked at.
  static ByteView Claiming(size_t size) { return {reinterpret_cast<const uint8_t*>(1), size}; }

  const Bytes description = Hex("5B 5D 0A");
  const Bytes image = Hex("FF 01");
  Bytes file;
};

TEST_F(PackageWriterTest, OnePackTakesTwoHeadersAndItsRegions) {
  ASSERT_EQ(Write(OnePack()), PackRefusal::kNone);
  const Bytes expected =
      Hex("00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"
          "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"
          "54 53 33 30 00 00 00 00 00 00 00 00 00 00 00 00"
          "31 2E 30 00 00 00 00 00 00 00 00 00 00 00 00 00"
          "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"
          "41 00 00 00 00 00 00 00 42 00 00 00 00 00 00 00"
          "43 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"
          "00 00 00 00 00 00 00 00 00 00 00 01 60 02 00 00"
          "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"
          "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"
          "00 00 00 00 00 00 00 00 00 00 00 00 41 31 00 00"
          "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"
          "00 01 00 00 03 00 00 00 C2 00 00 00 00 00 00 00"
          "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"
          "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"
          "03 01 00 00 02 00 00 00 00 01 00 00 3F 01 00 00"
          "5B 5D 0A FF 01");
  EXPECT_EQ(file, expected);
}

TEST_F(PackageWriterTest, TwoPacksTakeThreeHeadersAndTheirRegionsInOrder) {
  PackageContents contents = OnePack();
  contents.productModel = contents.firmwareVersion = "";
  contents.keys = {};
  const Bytes second = Hex("AA");
  contents.packs[0].dataType = "C1";
  contents.packs.push_back({.dataType = "A2", .description = second, .image = image});

  ASSERT_EQ(Write(contents), PackRefusal::kNone);

  ASSERT_EQ(file.size(), 392U);
  const ByteView view(file);
  const auto part = [view](size_t offset, size_t size) {
    return Bytes(view.begin() + static_cast<ptrdiff_t>(offset),
                 view.begin() + static_cast<ptrdiff_t>(offset + size));
  };
  EXPECT_EQ(part(0, 128), Filled(123, 0) + Hex("02 02 00 00 00"));
  EXPECT_EQ(part(172, 4), Hex("43 31 00 00"));
  EXPECT_EQ(part(192, 12), Hex("80 01 00 00 03 00 00 00 C2 00 00 00"));
  EXPECT_EQ(part(240, 12), Hex("83 01 00 00 02 00 00 00 00 01 00 00"));
  EXPECT_EQ(part(252, 4), Hex("41 02 00 00"));
  EXPECT_EQ(part(300, 4), Hex("41 32 00 00"));
  EXPECT_EQ(part(320, 12), Hex("85 01 00 00 01 00 00 00 AA 00 00 00"));
  EXPECT_EQ(part(368, 12), Hex("86 01 00 00 02 00 00 00 00 01 00 00"));
  EXPECT_EQ(part(380, 4), Hex("2E 02 00 00"));
  EXPECT_EQ(part(384, 8), Hex("5B 5D 0A FF 01 AA FF 01"));
}

TEST_F(PackageWriterTest, TheSameContentsGiveTheSameBytes) {
  ASSERT_EQ(Write(OnePack()), PackRefusal::kNone);
  const Bytes first = file;
  ASSERT_EQ(Write(OnePack()), PackRefusal::kNone);
  EXPECT_EQ(file, first);
}

TEST_F(PackageWriterTest, TextsMayFillTheirFields) {
  PackageContents contents = OnePack();
  contents.productModel = "0123456789abcdef";
  contents.firmwareVersion = "ABCDEFGHIJKLMNOP";
  contents.keys = {"12345678", "", "87654321"};
  ASSERT_EQ(Write(contents), PackRefusal::kNone);
  const std::string text(file.begin() + 32, file.begin() + 64);
  EXPECT_EQ(text, "0123456789abcdefABCDEFGHIJKLMNOP");
  const std::string keys(file.begin() + 80, file.begin() + 104);
  EXPECT_EQ(keys, std::string("12345678") + std::string(8, '\0') + "87654321");
}

TEST_F(PackageWriterTest, TextsBeyondTheirFieldsAreRefused) {
  PackageContents contents = OnePack();
  contents.productModel = "0123456789abcdefg";
  EXPECT_EQ(Write(contents), PackRefusal::kModelTooLong);
  contents = OnePack();
  contents.firmwareVersion = "0123456789abcdefg";
  EXPECT_EQ(Write(contents), PackRefusal::kVersionTooLong);
  for (size_t i = 0; i < 3; i++) {
    contents = OnePack();
    contents.keys.at(i) = "123456789";
    EXPECT_EQ(Write(contents), PackRefusal::kKeyTooLong) << i;
  }
}

TEST_F(PackageWriterTest, OneOrTwoPacksAreTaken) {
  const std::pair<size_t, PackRefusal> counts[] = {{0, PackRefusal::kPackCount},
                                                   {1, PackRefusal::kNone},
                                                   {2, PackRefusal::kNone},
                                                   {3, PackRefusal::kPackCount}};
  for (const auto& [count, verdict] : counts) {
    PackageContents contents = OnePack();
    contents.packs.assign(count, contents.packs[0]);
    EXPECT_EQ(Write(contents), verdict) << count;
  }
}

TEST_F(PackageWriterTest, OnlyTheThreeDataTypesAreTaken) {
  for (const std::string type : {"A1", "A2", "C1"}) {
    PackageContents contents = OnePack();
    contents.packs[0].dataType = type;
    EXPECT_EQ(Write(contents), PackRefusal::kNone) << type;
  }
  for (const std::string type : {"", "A", "a1", "A3", "B1", "C2", "A1 ", "1A"}) {
    PackageContents contents = OnePack();
    contents.packs.push_back(contents.packs[0]);
    contents.packs[1].dataType = type;
    EXPECT_EQ(Write(contents), PackRefusal::kDataType) << type;
  }
}

TEST_F(PackageWriterTest, EmptyRegionsAreTaken) {
  PackageContents contents = OnePack();
  contents.packs[0].description = contents.packs[0].image = {};
  ASSERT_EQ(Write(contents), PackRefusal::kNone);
  EXPECT_EQ(file.size(), 256U);
}

TEST_F(PackageWriterTest, RegionsWhoseLengthWouldBeNegativeAreRefused) {
  for (const size_t size : {size_t{1} << 31, size_t{1} << 32, size_t{1} << 40}) {
    PackageContents contents = OnePack();
    contents.packs[0].image = Claiming(size);
    EXPECT_EQ(Write(contents), PackRefusal::kTooLarge) << size;
    contents = OnePack();
    contents.packs[0].description = Claiming(size);
    EXPECT_EQ(Write(contents), PackRefusal::kTooLarge) << size;
  }
}

TEST_F(PackageWriterTest, FilesBeyondWhatAddressesReachAreRefused) {
  constexpr size_t kLongest = (size_t{1} << 31) - 1;
  PackageContents contents = OnePack();
  contents.packs[0].description = contents.packs[0].image = Claiming(kLongest);
  EXPECT_EQ(Write(contents), PackRefusal::kTooLarge);
}

TEST_F(PackageWriterTest, ARefusalLeavesNoFile) {
  ASSERT_EQ(Write(OnePack()), PackRefusal::kNone);
  EXPECT_EQ(Write({}), PackRefusal::kPackCount);
  EXPECT_TRUE(file.empty());
}

}  // namespace
}  // namespace hollin
