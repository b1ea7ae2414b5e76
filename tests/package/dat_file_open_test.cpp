// SPDX-License-Identifier: MIT
// Opening a package: the file is read whole, and only a regular file with at least one byte is one.
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/package/examine_test.h"
#include "tests/package/literal_packages.h"

namespace hollin {
namespace {

using DatFileOpenTest = ExamineTest;

TEST_F(DatFileOpenTest, ANewRecordIsEmpty) {
  EXPECT_EQ(datFile.filePath, "");
  EXPECT_EQ(datFile.fileLength, 0);
  EXPECT_FALSE(datFile.isFileReady);
  EXPECT_EQ(datFile.datBuffer, nullptr);
  EXPECT_EQ(datFile.countDataPack, 0);
  EXPECT_EQ(datFile.dataType1, 0U);
  EXPECT_EQ(datFile.dataType2, 0U);
  EXPECT_EQ(datFile.cnfgAddr1 | datFile.cnfgAddr2 | datFile.cnfgLength1 | datFile.cnfgLength2, 0U);
  EXPECT_EQ(datFile.dataAddr1 | datFile.dataAddr2 | datFile.dataLength1 | datFile.dataLength2, 0U);
  EXPECT_EQ(datFile.cnfgPath1 + datFile.cnfgPath2 + datFile.dataPath1 + datFile.dataPath2, "");
  EXPECT_EQ(datFile.Update1, nullptr);
  EXPECT_EQ(datFile.Update2, nullptr);
  EXPECT_EQ(datFile.key1, (std::array<char, 9>{}));
  EXPECT_EQ(datFile.key2, (std::array<char, 9>{}));
  EXPECT_EQ(datFile.key3, (std::array<char, 9>{}));
  EXPECT_EQ(datFile.productModel, (std::array<char, 17>{}));
  EXPECT_EQ(datFile.firmwareVersion, (std::array<char, 17>{}));
}

TEST_F(DatFileOpenTest, TheWholeFileIsRead) {
  const Bytes contents = Counting(300);
  const std::string path = folder.Write("any.dat", contents);

  EXPECT_TRUE(datFile.OpenDatFile(path));

  EXPECT_EQ(datFile.filePath, path);
  ASSERT_EQ(datFile.fileLength, 300);
  EXPECT_EQ(Bytes(datFile.datBuffer.get(), datFile.datBuffer.get() + 300), contents);
  EXPECT_FALSE(datFile.IsFileReady());
}

TEST_F(DatFileOpenTest, AMissingFileIsRefusedAndItsPathKept) {
  EXPECT_FALSE(datFile.OpenDatFile(folder.Path("none.dat")));
  EXPECT_EQ(datFile.filePath, folder.Path("none.dat"));
  EXPECT_FALSE(datFile.ExamineDatFile());
}

TEST_F(DatFileOpenTest, AnEmptyFileIsRefused) {
  EXPECT_FALSE(datFile.OpenDatFile(folder.Write("empty.dat", "")));
  EXPECT_EQ(datFile.fileLength, 0);
}

TEST_F(DatFileOpenTest, OneByteIsEnoughToOpenButNoPackage) {
  EXPECT_TRUE(datFile.OpenDatFile(folder.Write("one.dat", "x")));
  EXPECT_EQ(datFile.fileLength, 1);
  EXPECT_FALSE(datFile.ExamineDatFile());
}

TEST_F(DatFileOpenTest, OpeningAnotherFileForgetsTheFirst) {
  ASSERT_TRUE(Examine(OnePackPackage()));

  EXPECT_FALSE(datFile.OpenDatFile(folder.Path("none.dat")));

  EXPECT_EQ(datFile.datBuffer, nullptr);
  EXPECT_EQ(datFile.fileLength, 0);
  EXPECT_FALSE(datFile.IsFileReady());
}

TEST_F(DatFileOpenTest, OpeningAloneDropsBackToNotReady) {
  ASSERT_TRUE(Examine(OnePackPackage()));
  EXPECT_TRUE(datFile.OpenDatFile(folder.Write("other.dat", TwoPackPackage())));
  EXPECT_FALSE(datFile.IsFileReady());
}

TEST_F(DatFileOpenTest, ALinkToAPackageIsFollowed) {
  const std::string target = folder.Write("target.dat", OnePackPackage());
  std::filesystem::create_symlink(target, folder.Path("link.dat"));
  EXPECT_TRUE(datFile.OpenDatFile(folder.Path("link.dat")));
  EXPECT_TRUE(datFile.ExamineDatFile());
}

TEST_F(DatFileOpenTest, AFifoIsRefusedWithoutWaitingForAWriter) {
  ASSERT_EQ(mkfifo(folder.Path("fifo.dat").c_str(), 0600), 0);
  EXPECT_FALSE(datFile.OpenDatFile(folder.Path("fifo.dat")));
}

TEST_F(DatFileOpenTest, WhatIsNoRegularFileWithContentsIsRefused) {
  for (const std::string& path : {folder.Path(), std::string("/dev/zero"), std::string("/dev/null"),
                                  std::string("/proc/version"), std::string()}) {
    EXPECT_FALSE(datFile.OpenDatFile(path)) << path;
    EXPECT_EQ(datFile.fileLength, 0) << path;
  }
}

TEST_F(DatFileOpenTest, AGiantThatFitsNoMemoryIsRefused) {
  const int file = memfd_create("giant", MFD_CLOEXEC);
  ASSERT_GE(file, 0);
  ASSERT_EQ(ftruncate(file, int64_t{1} << 62), 0);
  EXPECT_FALSE(datFile.OpenDatFile("/proc/self/fd/" + std::to_string(file)));
  EXPECT_EQ(datFile.datBuffer, nullptr);
  close(file);
}

}  // namespace
}  // namespace hollin

// The giant is to be refused by the program, not by the checker of its memory or threads.
extern "C" const char* __asan_default_options();
extern "C" const char* __asan_default_options() { return "allocator_may_return_null=1"; }
extern "C" const char* __tsan_default_options();
extern "C" const char* __tsan_default_options() { return "allocator_may_return_null=1"; }
