// SPDX-License-Identifier: MIT
// Examining good packages: what every field of the file becomes, and what is kept of it.
#include "package/dat_file_examine.h"

#include "tests/package/examine_test.h"
#include "tests/package/literal_packages.h"
#include "updaters/a1_update.h"

namespace hollin {
namespace {

class DatFileExamineTest : public ExamineTest {
 protected:
  static const A1Update& A1(const std::unique_ptr<AXUpdate>& updater) {
    return dynamic_cast<const A1Update&>(*updater);
  }
  static Bytes ImageOf(const AXUpdate& updater) {
    return {updater.image.get(), updater.image.get() + updater.imageLength};
  }
};

TEST_F(DatFileExamineTest, OnePackIsReadFieldByField) {
  EXPECT_TRUE(Examine(OnePackPackage()));

  EXPECT_TRUE(datFile.IsFileReady());
  EXPECT_EQ(datFile.fileLength, 452);
  EXPECT_EQ(datFile.countDataPack, 1);
  EXPECT_EQ(datFile.dataType1, 0x3141U);
  EXPECT_EQ(datFile.cnfgAddr1, 256U);
  EXPECT_EQ(datFile.cnfgLength1, 91U);
  EXPECT_EQ(datFile.dataAddr1, 352U);
  EXPECT_EQ(datFile.dataLength1, 100U);
  EXPECT_STREQ(datFile.key1.data(), "MENU");
  EXPECT_STREQ(datFile.key2.data(), "TRANSPOS");
  EXPECT_STREQ(datFile.key3.data(), "");
  EXPECT_STREQ(datFile.productModel.data(), "TS30");
  EXPECT_STREQ(datFile.firmwareVersion.data(), "V1.02");
  EXPECT_EQ(datFile.TotalStepCount(), 4);
  EXPECT_EQ(datFile.Update2, nullptr);
}

TEST_F(DatFileExamineTest, TwoPacksAreReadFieldByField) {
  EXPECT_TRUE(Examine(TwoPackPackage()));

  EXPECT_EQ(datFile.countDataPack, 2);
  EXPECT_EQ(datFile.dataType1, 0x3141U);
  EXPECT_EQ(datFile.dataType2, 0x3141U);
  EXPECT_EQ(datFile.cnfgAddr1, 456U);
  EXPECT_EQ(datFile.cnfgLength1, 28U);
  EXPECT_EQ(datFile.dataAddr1, 484U);
  EXPECT_EQ(datFile.dataLength1, 3U);
  EXPECT_EQ(datFile.cnfgAddr2, 492U);
  EXPECT_EQ(datFile.cnfgLength2, 89U);
  EXPECT_EQ(datFile.dataAddr2, 384U);
  EXPECT_EQ(datFile.dataLength2, 70U);
  EXPECT_EQ(datFile.Update1->StepCount(), 3U);
  EXPECT_EQ(datFile.Update2->StepCount(), 4U);
  EXPECT_EQ(datFile.TotalStepCount(), 7);
}

TEST_F(DatFileExamineTest, EveryUpdaterHoldsItsOwnPack) {
  ASSERT_TRUE(Examine(TwoPackPackage()));

  EXPECT_EQ(datFile.Update1->configPath, "/tmp/TEMP1.INI");
  EXPECT_EQ(datFile.Update1->imagePath, "/tmp/TEMP1.BIN");
  EXPECT_EQ(datFile.Update2->configPath, "/tmp/TEMP2.INI");
  EXPECT_EQ(datFile.Update2->imagePath, "/tmp/TEMP2.BIN");
  EXPECT_EQ(ImageOf(*datFile.Update1), TwoPackImage1());
  EXPECT_EQ(ImageOf(*datFile.Update2), TwoPackImage2());
  EXPECT_EQ(A1(datFile.Update1).mode, 2U);
  EXPECT_EQ(A1(datFile.Update2).mode, 3U);
  EXPECT_EQ(A1(datFile.Update2).flash.startAddress, 100U);
}

TEST_F(DatFileExamineTest, RegionsAreWrittenOutUnchanged) {
  ASSERT_TRUE(Examine(TwoPackPackage()));

  EXPECT_EQ(ContentsOf("/tmp/TEMP1.INI"), Bytes{} + ViewOf(TwoPackDescription1()));
  EXPECT_EQ(ContentsOf("/tmp/TEMP1.BIN"), TwoPackImage1());
  EXPECT_EQ(ContentsOf("/tmp/TEMP2.INI"), Bytes{} + ViewOf(TwoPackDescription2()));
  EXPECT_EQ(ContentsOf("/tmp/TEMP2.BIN"), TwoPackImage2());
}

TEST_F(DatFileExamineTest, AllFourPathsAreSetForOnePackToo) {
  ASSERT_TRUE(Examine(OnePackPackage()));

  EXPECT_EQ(datFile.cnfgPath1, "/tmp/TEMP1.INI");
  EXPECT_EQ(datFile.cnfgPath2, "/tmp/TEMP2.INI");
  EXPECT_EQ(datFile.dataPath1, "/tmp/TEMP1.BIN");
  EXPECT_EQ(datFile.dataPath2, "/tmp/TEMP2.BIN");
  EXPECT_FALSE(Exists("/tmp/TEMP2.INI"));
  EXPECT_FALSE(Exists("/tmp/TEMP2.BIN"));
}

TEST_F(DatFileExamineTest, TextsAreEmptyUntilThePackageIsReady) {
  ASSERT_TRUE(Examine(OnePackPackage()));
  EXPECT_EQ(datFile.ProductModelText(), "TS30");
  EXPECT_EQ(datFile.FirmwareVersionText(), "V1.02");

  ASSERT_TRUE(datFile.OpenDatFile(datFile.filePath));

  EXPECT_EQ(datFile.ProductModelText(), "");
  EXPECT_EQ(datFile.FirmwareVersionText(), "");
}

TEST_F(DatFileExamineTest, NamesThatFillTheirFieldsAreTerminated) {
  ASSERT_TRUE(Examine(TwoPackPackage()));

  EXPECT_EQ(datFile.ProductModelText(), "TS30 Grand Piano");
  EXPECT_EQ(datFile.FirmwareVersionText(), "Version 12.34.56");
  EXPECT_STREQ(datFile.key3.data(), "FUNCTION");
}

TEST_F(DatFileExamineTest, TextsEndAtTheirFirstNul) {
  Bytes package = OnePackPackage();
  PatchText(package, 32, std::string_view("TS\0XYZ", 6));
  RepairHeaderSum(package, 0);
  ASSERT_TRUE(Examine(package));
  EXPECT_EQ(datFile.ProductModelText(), "TS");
}

TEST_F(DatFileExamineTest, TextsThatAreNotUtf8ShowReplacements) {
  Bytes package = OnePackPackage();
  PatchText(package, 48, "V\xFF");
  PatchText(package, 50, std::string_view("\0\0\0", 3));
  RepairHeaderSum(package, 0);
  ASSERT_TRUE(Examine(package));
  EXPECT_EQ(datFile.FirmwareVersionText(), "V\uFFFD");
}

TEST_F(DatFileExamineTest, WithOnePackTheThirdBlockMayHoldAnything) {
  Bytes package = OnePackPackage();
  package.insert(package.begin() + 256, 128, uint8_t{0xFF});
  PatchU32(package, 192, 256 + 128);
  PatchU32(package, 240, 352 + 128);
  RepairHeaderSum(package, 1);
  EXPECT_TRUE(Examine(package));
  EXPECT_EQ(datFile.TotalStepCount(), 4);
}

TEST_F(DatFileExamineTest, WithOnePackTheThirdBlockMayBeMissing) {
  EXPECT_TRUE(Examine(SmallestOnePackPackage()));
  EXPECT_EQ(datFile.fileLength, 256);
  EXPECT_EQ(datFile.TotalStepCount(), 3);
}

TEST_F(DatFileExamineTest, RegionsMayLieInTheHeadersAndBeShared) {
  EXPECT_TRUE(Examine(SmallestTwoPackPackage()));
  EXPECT_EQ(datFile.fileLength, 384);
  EXPECT_EQ(datFile.TotalStepCount(), 6);
}

// The bytes that no field names, of every block.
TEST_F(DatFileExamineTest, ReservedBytesAreNotRead) {
  constexpr std::pair<size_t, size_t> kReserved[] = {
      {0, 32},    {64, 80},   {104, 123}, {128, 172}, {176, 192},
      {204, 240}, {256, 300}, {304, 320}, {332, 368},
  };
  Bytes package = TwoPackPackage();
  for (const auto& [begin, end] : kReserved) {
    for (size_t i = begin; i < end; i++) package[i] = 0xA5;
  }
  for (const size_t block : {0U, 1U, 2U}) RepairHeaderSum(package, block);

  EXPECT_TRUE(Examine(package));

  EXPECT_EQ(datFile.ProductModelText(), "TS30 Grand Piano");
  EXPECT_EQ(datFile.cnfgLength2, 89U);
  EXPECT_EQ(datFile.TotalStepCount(), 7);
}

TEST_F(DatFileExamineTest, TheUpperHalfOfADataTypeIsIgnored) {
  Bytes package = TwoPackPackage();
  PatchU32(package, 172, 0xFFFF3141);
  PatchU32(package, 300, 0x00013141);
  RepairHeaderSum(package, 1);
  RepairHeaderSum(package, 2);
  EXPECT_TRUE(Examine(package));
  EXPECT_EQ(datFile.dataType1, 0xFFFF3141U);
  EXPECT_NE(dynamic_cast<A1Update*>(datFile.Update1.get()), nullptr);
  EXPECT_NE(dynamic_cast<A1Update*>(datFile.Update2.get()), nullptr);
}

// 16,843,010 bytes 0xFF: 4,294,967,550, that is 254 more than 2^32.
TEST_F(DatFileExamineTest, ASumThatWrappedIsComparedWrapped) {
  const Bytes image(16'843'010, 0xFF);
  Bytes package = PackageAround("[Chip Info]\nChip Size=0x2000000\n", image);
  ASSERT_EQ(Bytes(package.begin() + 248, package.begin() + 252), Hex("FE 00 00 00"));
  EXPECT_TRUE(Examine(package));
  EXPECT_EQ(datFile.TotalStepCount(), 2 + 258);  // 257 whole blocks of 65536 bytes, and 258 bytes

  PatchU32(package, 248, 255);
  RepairHeaderSum(package, 1);
  EXPECT_FALSE(Examine(package));
}

TEST_F(DatFileExamineTest, ExaminingAgainReadsTheSamePackage) {
  ASSERT_TRUE(Examine(TwoPackPackage()));
  EXPECT_TRUE(datFile.ExamineDatFile());
  EXPECT_EQ(datFile.TotalStepCount(), 7);
}

TEST_F(DatFileExamineTest, AOnePackPackageAfterATwoPackPackageLeavesNoSecondUpdater) {
  ASSERT_TRUE(Examine(TwoPackPackage()));
  ASSERT_TRUE(Examine(OnePackPackage()));
  EXPECT_EQ(datFile.Update2, nullptr);
  EXPECT_EQ(datFile.TotalStepCount(), 4);
  EXPECT_STREQ(datFile.key3.data(), "");
}

}  // namespace
}  // namespace hollin
