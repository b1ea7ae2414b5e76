// SPDX-License-Identifier: MIT
// Packages that are not sound: every one is refused, nothing is read outside the file, and what was
// ready before is not.
#include "tests/package/examine_test.h"
#include "tests/package/literal_packages.h"

namespace hollin {
namespace {

class DatFileRejectTest : public ExamineTest {
 protected:
  // A two-pack package with one number changed and the sum of its block set right.
  static Bytes With(size_t offset, uint32_t value, Bytes package = TwoPackPackage()) {
    PatchU32(package, offset, value);
    RepairHeaderSum(package, offset / 128);
    return package;
  }

  static bool AnyTempFile() {
    return Exists("/tmp/TEMP1.INI") || Exists("/tmp/TEMP1.BIN") || Exists("/tmp/TEMP2.INI") ||
           Exists("/tmp/TEMP2.BIN");
  }
};

TEST_F(DatFileRejectTest, AnyChangedByteOfTheHeadersMakesAPackageInvalid) {
  for (size_t i = 0; i < 384; i++) {
    Bytes package = TwoPackPackage();
    package[i]++;
    EXPECT_FALSE(Examine(package)) << "byte " << i;
    EXPECT_FALSE(datFile.IsFileReady());
  }
  EXPECT_FALSE(AnyTempFile());
}

TEST_F(DatFileRejectTest, AnyChangedByteOfARegionMakesAPackageInvalid) {
  for (size_t i = 256; i < 452; i++) {
    if (i >= 256 + 91 && i < 352) continue;  // the gap
    Bytes package = OnePackPackage();
    package[i] ^= 0x10;
    EXPECT_FALSE(Examine(package)) << "byte " << i;
  }
  EXPECT_FALSE(AnyTempFile());
}

TEST_F(DatFileRejectTest, BytesInGapsBelongToNoSum) {
  Bytes package = OnePackPackage();
  package[351] = 0x77;
  package.push_back(0x77);
  EXPECT_TRUE(Examine(package));
}

TEST_F(DatFileRejectTest, AHeaderSumThatIsOneTooLargeOrTooSmallMakesAPackageInvalid) {
  struct Case {
    size_t offset;
    uint32_t sum;
  };
  for (const Case& header : {Case{124, 0x0CAF}, {252, 0x0297}, {380, 0x0440}}) {
    for (const int difference : {-1, 1}) {
      Bytes package = TwoPackPackage();
      PatchU32(package, header.offset, header.sum + static_cast<uint32_t>(difference));
      EXPECT_FALSE(Examine(package)) << header.offset;
    }
    Bytes package = TwoPackPackage();
    PatchU32(package, header.offset, header.sum);
    EXPECT_TRUE(Examine(package)) << header.offset;
  }
}

TEST_F(DatFileRejectTest, ARegionSumThatIsOneTooLargeOrTooSmallMakesAPackageInvalid) {
  struct Case {
    size_t offset;
    uint32_t sum;
  };
  for (const Case& region : {Case{200, 0x082F}, {248, 0x21}, {328, 0x1D9B}, {376, 0x1AEF}}) {
    EXPECT_FALSE(Examine(With(region.offset, region.sum - 1))) << region.offset;
    EXPECT_TRUE(Examine(With(region.offset, region.sum))) << region.offset;
    EXPECT_FALSE(Examine(With(region.offset, region.sum + 1))) << region.offset;
  }
}

TEST_F(DatFileRejectTest, ThePackCountIsOneOrTwo) {
  for (int count = 0; count <= 255; count++) {
    Bytes package = SmallestTwoPackPackage();
    package[123] = static_cast<uint8_t>(count);
    RepairHeaderSum(package, 0);
    EXPECT_EQ(Examine(package), count == 1 || count == 2) << count;
    EXPECT_EQ(datFile.countDataPack, count);
  }
}

TEST_F(DatFileRejectTest, EveryCutOfAPackageIsInvalid) {
  const Bytes whole = OnePackPackage();
  for (size_t size = 1; size < whole.size(); size++) {
    EXPECT_FALSE(Examine(ByteView(whole).first(size))) << size;
  }
  EXPECT_TRUE(Examine(whole));
}

TEST_F(DatFileRejectTest, FilesThatEndInTheirHeadersAreInvalid) {
  for (const size_t size : {1U, 123U, 124U, 125U, 127U, 128U, 129U, 251U, 252U, 255U}) {
    EXPECT_FALSE(Examine(ByteView(SmallestOnePackPackage()).first(size))) << size;
  }
  for (const size_t size : {255U, 256U, 257U, 379U, 380U, 383U}) {
    EXPECT_FALSE(Examine(ByteView(SmallestTwoPackPackage()).first(size))) << size;
  }
  EXPECT_TRUE(Examine(SmallestOnePackPackage()));
  EXPECT_TRUE(Examine(SmallestTwoPackPackage()));
}

TEST_F(DatFileRejectTest, ARegionThatRunsPastTheEndIsInvalid) {
  const size_t kImage1Length = 244;
  Bytes package = TwoPackPackage();
  package.resize(487);  // ends with image 1; pack 2 takes pack 1's regions
  std::copy_n(package.begin() + 128, 128, package.begin() + 256);
  EXPECT_TRUE(Examine(package));
  EXPECT_FALSE(Examine(With(kImage1Length, 4, package)));
  package.pop_back();
  EXPECT_FALSE(Examine(package));
}

// Each of the four regions: far outside, and so that address and length wrap around to the file.
TEST_F(DatFileRejectTest, ARegionWhoseEndWrapsIsInvalid) {
  for (const size_t address : {192U, 240U, 320U, 368U}) {
    EXPECT_FALSE(Examine(With(address, 0x7FFFFFFF))) << address;
    EXPECT_FALSE(Examine(With(address, 0xFFFFFFFF))) << address;
    EXPECT_FALSE(Examine(With(address + 4, 0x7FFFFFFF))) << address;
    EXPECT_FALSE(Examine(With(address + 4, 0xFFFFFFFF))) << address;
    Bytes package = With(address, 0xFFFFFFF0);
    PatchU32(package, address + 4, 0x10);  // ends at 2^32, that is at 0
    PatchU32(package, address + 8, 0);
    RepairHeaderSum(package, address / 128);
    EXPECT_FALSE(Examine(package)) << address;
    PatchU32(package, address + 4, 0x80000100);  // as a signed number negative: not summed
    RepairHeaderSum(package, address / 128);
    EXPECT_FALSE(Examine(package)) << address;
  }
  EXPECT_FALSE(AnyTempFile());
}

TEST_F(DatFileRejectTest, AnEmptyRegionWithSumZeroIsValidAndWrittenAsAnEmptyFile) {
  Bytes package = With(244, 0);  // image 1
  PatchU32(package, 248, 0);
  RepairHeaderSum(package, 1);

  // The checks pass, which the written files show; an updater has no use for an empty image.
  EXPECT_FALSE(Examine(package));

  EXPECT_EQ(ContentsOf("/tmp/TEMP1.BIN"), Bytes{});
  EXPECT_EQ(ContentsOf("/tmp/TEMP2.BIN"), TwoPackImage2());
}

TEST_F(DatFileRejectTest, AnEmptyDescriptionIsWrittenAsAnEmptyFile) {
  Bytes package = With(196, 0);
  PatchU32(package, 200, 0);
  RepairHeaderSum(package, 1);
  EXPECT_FALSE(Examine(package));
  EXPECT_EQ(ContentsOf("/tmp/TEMP1.INI"), Bytes{});
  EXPECT_EQ(ContentsOf("/tmp/TEMP2.BIN"), TwoPackImage2());
}

TEST_F(DatFileRejectTest, AnEmptyRegionWithAnotherSumIsInvalid) {
  Bytes package = With(244, 0);
  PatchU32(package, 248, 1);
  RepairHeaderSum(package, 1);
  EXPECT_FALSE(Examine(package));
  EXPECT_FALSE(AnyTempFile());
}

TEST_F(DatFileRejectTest, AnEmptyRegionBeyondTheEndIsInvalid) {
  const auto size = static_cast<uint32_t>(TwoPackPackage().size());
  for (const uint32_t address : {size - 1, size, size + 1}) {
    RemoveTempFiles();
    Bytes package = With(240, address);
    PatchU32(package, 244, 0);
    PatchU32(package, 248, 0);
    RepairHeaderSum(package, 1);
    EXPECT_FALSE(Examine(package));
    EXPECT_EQ(AnyTempFile(), address <= size) << address;
  }
}

TEST_F(DatFileRejectTest, AnUnknownFirstTypeIsFoundAfterAllFilesWereWritten) {
  EXPECT_FALSE(Examine(With(172, 0x3341)));  // "A3"
  EXPECT_EQ(datFile.Update1, nullptr);
  EXPECT_EQ(ContentsOf("/tmp/TEMP1.BIN"), TwoPackImage1());
  EXPECT_EQ(ContentsOf("/tmp/TEMP2.BIN"), TwoPackImage2());
}

TEST_F(DatFileRejectTest, AnUnknownSecondTypeIsFoundAfterAllFilesWereWritten) {
  EXPECT_FALSE(Examine(With(300, 0x3341)));
  EXPECT_FALSE(datFile.IsFileReady());
  EXPECT_EQ(datFile.Update1, nullptr);
  EXPECT_EQ(ContentsOf("/tmp/TEMP1.INI"), Bytes{} + ViewOf(TwoPackDescription1()));
  EXPECT_EQ(ContentsOf("/tmp/TEMP1.BIN"), TwoPackImage1());
  EXPECT_EQ(ContentsOf("/tmp/TEMP2.INI"), Bytes{} + ViewOf(TwoPackDescription2()));
  EXPECT_EQ(ContentsOf("/tmp/TEMP2.BIN"), TwoPackImage2());
}

TEST_F(DatFileRejectTest, TypesThatOnlyLookLikeA1AreUnknown) {
  for (const uint32_t type : {0x4131U, 0x3161U, 0x31410000U, 0x0031U, 0x0000U, 0xFFFFU}) {
    EXPECT_FALSE(Examine(With(172, type))) << type;
  }
}

TEST_F(DatFileRejectTest, ADescriptionThatFailsToLoadMakesTheExaminationFalse) {
  EXPECT_FALSE(Examine(PackageAround("Chip Size=1K\n", OnePackImage())));
  EXPECT_FALSE(Examine(PackageAround("[Chip Info]\nChip Size=64\n", OnePackImage())));
  EXPECT_TRUE(Examine(PackageAround("[Chip Info]\nChip Size=100\n", OnePackImage())));
}

TEST_F(DatFileRejectTest, ASecondPackThatFailsToLoadMakesTheExaminationFalse) {
  Bytes package = TwoPackPackage();
  PatchText(package, 492, "[Chip Infx]");
  PatchU32(package, 328, 0x1D9B + 'x' - 'o');
  RepairHeaderSum(package, 2);
  EXPECT_FALSE(Examine(package));
  EXPECT_EQ(datFile.Update1, nullptr);
  EXPECT_EQ(datFile.Update2, nullptr);
}

TEST_F(DatFileRejectTest, AFailedExaminationKeepsTheFieldsThatItRead) {
  EXPECT_FALSE(Examine(With(376, 0x1AEE)));  // the last check of all
  EXPECT_EQ(datFile.countDataPack, 2);
  EXPECT_EQ(datFile.dataType2, 0x3141U);
  EXPECT_EQ(datFile.cnfgAddr1, 456U);
  EXPECT_EQ(datFile.dataLength2, 70U);
  EXPECT_EQ(datFile.cnfgPath1, "");  // not reached
}

TEST_F(DatFileRejectTest, TheFirstTypeIsReadBeforeTheSecondHeaderIsChecked) {
  Bytes package = TwoPackPackage();
  package[256]++;
  EXPECT_FALSE(Examine(package));
  EXPECT_EQ(datFile.countDataPack, 2);
  EXPECT_EQ(datFile.dataType1, 0x3141U);
}

TEST_F(DatFileRejectTest, FilesOfAFailedExaminationStayUntilTheyAreDeleted) {
  EXPECT_FALSE(Examine(With(172, 0x3341)));
  EXPECT_TRUE(Exists("/tmp/TEMP1.INI"));
  datFile.DeleteTempFiles();
  EXPECT_FALSE(AnyTempFile());
}

}  // namespace
}  // namespace hollin
