// SPDX-License-Identifier: MIT
// The checks in their order, and the sums, on bytes in memory: what is wrong first is what is
// found.
#include "package/package_layout.h"

#include <gtest/gtest.h>
#include <sys/mman.h>

#include <limits>

#include "package/dat_file_examine.h"
#include "tests/package/literal_packages.h"
#include "tests/support/hex_bytes.h"

namespace hollin {
namespace {

PackageDefect DefectOf(ByteView file) {
  PackageHeaders headers;
  return CheckPackage(file, headers).defect;
}

TEST(PackageLayoutTest, SoundPackagesHaveNoDefect) {
  EXPECT_EQ(DefectOf(OnePackPackage()), PackageDefect::kNone);
  EXPECT_EQ(DefectOf(TwoPackPackage()), PackageDefect::kNone);
  EXPECT_EQ(DefectOf(SmallestOnePackPackage()), PackageDefect::kNone);
  EXPECT_EQ(DefectOf(SmallestTwoPackPackage()), PackageDefect::kNone);
}

TEST(PackageLayoutTest, NothingIsReadOfAnEmptyFile) {
  EXPECT_EQ(DefectOf({}), PackageDefect::kCutShort);
}

// A package in which everything is wrong is repaired from the first check to the last.
TEST(PackageLayoutTest, TheChecksRunInTheirOrder) {
  Bytes file = TwoPackPackage();
  file[123] = 3;
  file[128]++;
  file[256]++;
  for (const size_t sum : {200U, 328U, 248U, 376U}) file[sum]++;
  EXPECT_EQ(DefectOf(file), PackageDefect::kPackCount);

  file[123] = 2;
  file[0]++;
  EXPECT_EQ(DefectOf(file), PackageDefect::kFileHeaderSum);

  file[0]--;
  PackageHeaders headers;
  PackageVerdict verdict = CheckPackage(file, headers);
  EXPECT_EQ(verdict.defect, PackageDefect::kPackHeaderSum);
  EXPECT_EQ(verdict.pack, 0U);

  RepairHeaderSum(file, 1);
  verdict = CheckPackage(file, headers);
  EXPECT_EQ(verdict.defect, PackageDefect::kPackHeaderSum);
  EXPECT_EQ(verdict.pack, 1U);

  const std::pair<size_t, PackageDefect> regions[] = {{200, PackageDefect::kConfigSum},
                                                      {328, PackageDefect::kConfigSum},
                                                      {248, PackageDefect::kDataSum},
                                                      {376, PackageDefect::kDataSum}};
  for (const auto& [sum, defect] : regions) {
    RepairHeaderSum(file, 1);
    RepairHeaderSum(file, 2);
    verdict = CheckPackage(file, headers);
    EXPECT_EQ(verdict.defect, defect);
    EXPECT_EQ(verdict.pack, sum < 256 ? 0U : 1U);
    file[sum]--;
  }
  RepairHeaderSum(file, 1);
  RepairHeaderSum(file, 2);
  EXPECT_EQ(DefectOf(file), PackageDefect::kNone);
}

TEST(PackageLayoutTest, TheCountIsCheckedBeforeAnySum) {
  for (const uint8_t count : Hex("00 03")) {
    Bytes file = OnePackPackage();
    file[123] = count;  // makes the sum wrong as well
    EXPECT_EQ(DefectOf(file), PackageDefect::kPackCount);
  }
}

TEST(PackageLayoutTest, AWrongSumNamesBothNumbers) {
  Bytes file = OnePackPackage();
  file[355]++;
  PackageHeaders headers;
  const PackageVerdict verdict = CheckPackage(file, headers);
  EXPECT_EQ(verdict.defect, PackageDefect::kDataSum);
  EXPECT_EQ(verdict.stored, 0x5046U);
  EXPECT_EQ(verdict.computed, 0x5047U);
}

TEST(PackageLayoutTest, BytesAreSummedAsUnsignedNumbers) {
  EXPECT_EQ(PackageSum(Filled(3, 0xFF)), 765U);
  EXPECT_EQ(PackageSum({}), 0U);
  EXPECT_EQ(DatFileExamine::PackByteSum(Filled(4, 0x80).data(), 4), 512U);
}

TEST(PackageLayoutTest, ASumOfNoneOrANegativeNumberOfBytesIsZero) {
  const Bytes bytes = Filled(2, 0x11);
  EXPECT_EQ(DatFileExamine::PackByteSum(bytes.data(), 1), 0x11U);
  EXPECT_EQ(DatFileExamine::PackByteSum(bytes.data(), 0), 0U);
  EXPECT_EQ(DatFileExamine::PackByteSum(bytes.data(), -1), 0U);
  EXPECT_EQ(DatFileExamine::PackByteSum(bytes.data(), std::numeric_limits<int32_t>::min()), 0U);
}

// A file of 2 GiB and a little, of which nothing but the headers is ever touched.
class GiantPackageTest : public ::testing::Test {
 protected:
  static constexpr size_t kSize = (size_t{1} << 31) + 512;

  GiantPackageTest()
      : memory(static_cast<uint8_t*>(mmap(nullptr, kSize, PROT_READ | PROT_WRITE,
                                          MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0))) {
    const Bytes package = OnePackPackage();
    std::copy(package.begin(), package.end(), memory);
  }
  ~GiantPackageTest() override { munmap(memory, kSize); }

  [[nodiscard]] std::span<uint8_t> File() const { return {memory, kSize}; }

  uint8_t* memory;
};

// Deliberate in the format: lengths are signed where they are summed, and only there.
TEST_F(GiantPackageTest, ARegionFromTwoToThe31BytesOnHasTheSumZero) {
  PatchU32(File(), 240, 0);
  PatchU32(File(), 244, 0x80000000);
  PatchU32(File(), 248, 0);
  RepairHeaderSum(File(), 1);
  EXPECT_EQ(DefectOf(File()), PackageDefect::kNone);

  PatchU32(File(), 248, 1);
  RepairHeaderSum(File(), 1);
  EXPECT_EQ(DefectOf(File()), PackageDefect::kDataSum);
}

TEST_F(GiantPackageTest, ARegionThatEndsWithTheFileIsInside) {
  PatchU32(File(), 248, 0);
  for (const auto& [length, defect] : {std::pair{0x800000A0U, PackageDefect::kNone},
                                       {0x800000A1U, PackageDefect::kRegionOutside}}) {
    PatchU32(File(), 244, length);  // from 352 on
    RepairHeaderSum(File(), 1);
    EXPECT_EQ(DefectOf(File()), defect) << length;
  }
}

}  // namespace
}  // namespace hollin
