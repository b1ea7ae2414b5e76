// SPDX-License-Identifier: MIT
// Examinations while memory runs out and files lie about themselves.
#include "tests/package/failing_system.h"

#include "package/package_writer.h"
#include "tests/package/examine_test.h"
#include "tests/package/literal_packages.h"

namespace hollin {
namespace {

class FailingSystemTest : public ExamineTest {
 protected:
  ~FailingSystemTest() override { System() = {}; }

  static Bytes Read(const DatFileExamine& file) {
    return {file.datBuffer.get(), file.datBuffer.get() + file.fileLength};
  }
};

TEST_F(FailingSystemTest, MemoryThatRunsOutAnywhereMakesTheExaminationFalse) {
  const std::string path = folder.Write("package.dat", TwoPackPackage());
  size_t failures = 0;
  for (bool succeeded = false; !succeeded; failures++) {
    System().failingAllocation = failures + 1;
    succeeded = datFile.OpenDatFile(path) && datFile.ExamineDatFile();
    const bool ranOut = System().failingAllocation == 0;
    System().failingAllocation = 0;
    EXPECT_NE(succeeded, ranOut) << failures;
    EXPECT_EQ(datFile.IsFileReady(), succeeded) << failures;
    EXPECT_EQ(datFile.Update1 != nullptr, succeeded) << failures;
    EXPECT_EQ(datFile.Update2 != nullptr, succeeded) << failures;
  }
  EXPECT_GT(failures, 10U);
}

TEST_F(FailingSystemTest, MemoryThatRunsOutAfterAGoodPackageLeavesNothingReady) {
  const std::string path = folder.Write("package.dat", OnePackPackage());
  for (size_t failing = 1; failing < 10; failing++) {
    ASSERT_TRUE(Examine(TwoPackPackage()));
    System().failingAllocation = failing;
    EXPECT_FALSE(datFile.OpenDatFile(path) && datFile.ExamineDatFile()) << failing;
    System().failingAllocation = 0;
    EXPECT_FALSE(datFile.RunUpdateStep(0)) << failing;
  }
  EXPECT_EQ(hidapi.calls, std::vector<std::string>{});
}

TEST_F(FailingSystemTest, APackageThatFitsNoMemoryIsRefused) {
  const std::string path = folder.Write("package.dat", OnePackPackage());
  System().allocationLimit = 451;
  EXPECT_FALSE(datFile.OpenDatFile(path));
  System().allocationLimit = 452;
  EXPECT_TRUE(datFile.OpenDatFile(path));
}

TEST_F(FailingSystemTest, AFileThatShrinksWhileItIsReadEndsInZeros) {
  Bytes expected = OnePackPackage();
  const std::string path = folder.Write("package.dat", expected);
  System().claimedBytes = 100;
  ASSERT_TRUE(datFile.OpenDatFile(path));
  System().claimedBytes = 0;
  EXPECT_EQ(Read(datFile), expected + Filled(100, 0));
  EXPECT_TRUE(datFile.ExamineDatFile());
}

TEST_F(FailingSystemTest, TheSumsFindAFileThatShrank) {
  const Bytes package = OnePackPackage();
  const std::string path = folder.Write("package.dat", ByteView(package).first(451));
  System().claimedBytes = 1;
  ASSERT_TRUE(datFile.OpenDatFile(path));
  System().claimedBytes = 0;
  EXPECT_EQ(datFile.fileLength, 452);
  EXPECT_FALSE(datFile.ExamineDatFile());
}

TEST_F(FailingSystemTest, AFileWhoseStateIsUnknownIsNotRead) {
  const std::string path = folder.Write("package.dat", OnePackPackage());
  System().isFstatFailing = true;
  EXPECT_FALSE(datFile.OpenDatFile(path));
}

TEST_F(FailingSystemTest, AFileOfSomebodyElseIsNotWrittenTo) {
  folder.Write("package.dat", OnePackPackage());
  ASSERT_TRUE(datFile.OpenDatFile(folder.Path("package.dat")));
  std::ofstream("/tmp/TEMP1.INI") << "precious";
  System().isFileOfStranger = true;
  EXPECT_FALSE(datFile.ExamineDatFile());
  System().isFileOfStranger = false;
  EXPECT_EQ(ContentsOf("/tmp/TEMP1.INI"), Bytes{} + ViewOf("precious"));
  EXPECT_TRUE(datFile.ExamineDatFile());
}

// Nothing is refused here: the writer gets as far as asking for the memory.
TEST_F(FailingSystemTest, ARegionOneByteShorterThanTwoToThe31IsWritten) {
  System().allocationLimit = size_t{1} << 30;
  PackageContents contents;
  contents.packs = {{.dataType = "A1",
                     .description = {},
                     .image = {reinterpret_cast<const uint8_t*>(1), (size_t{1} << 31) - 1}}};
  Bytes file;
  EXPECT_THROW(static_cast<void>(WritePackage(contents, file)), std::bad_alloc);
}

}  // namespace
}  // namespace hollin
