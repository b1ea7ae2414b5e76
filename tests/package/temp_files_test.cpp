// SPDX-License-Identifier: MIT
// The temporary files carry fixed names in a folder that everybody writes to: whatever lies there
// already, no file of anybody else is touched, and no byte reaches an updater that was not checked.
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>

#include "tests/package/examine_test.h"
#include "tests/package/literal_packages.h"

namespace hollin {
namespace {

class TempFilesTest : public ExamineTest {
 protected:
  static constexpr const char* kAll[] = {"/tmp/TEMP1.INI", "/tmp/TEMP1.BIN", "/tmp/TEMP2.INI",
                                         "/tmp/TEMP2.BIN"};

  static mode_t ModeOf(const std::string& path) {
    struct stat status = {};
    EXPECT_EQ(lstat(path.c_str(), &status), 0) << path;
    return status.st_mode & 07777;
  }

  static void Put(const std::string& path, std::string_view text, mode_t mode = 0600) {
    std::ofstream(path) << text;
    ASSERT_EQ(chmod(path.c_str(), mode), 0);
  }
};

TEST_F(TempFilesTest, ARegionIsWrittenToTheGivenPath) {
  ASSERT_TRUE(datFile.OpenDatFile(folder.Write("any.dat", Counting(100))));
  EXPECT_TRUE(datFile.WriteTempFile(folder.Path("part"), 10, 3));
  EXPECT_EQ(folder.Read("part"), Hex("0A 0B 0C"));
  EXPECT_TRUE(datFile.WriteTempFile(folder.Path("part"), 99, 1));
  EXPECT_EQ(folder.Read("part"), Hex("63"));
  EXPECT_TRUE(datFile.WriteTempFile(folder.Path("part"), 100, 0));
  EXPECT_EQ(folder.Read("part"), Bytes{});
}

TEST_F(TempFilesTest, NothingOutsideTheFileIsEverWritten) {
  ASSERT_TRUE(datFile.OpenDatFile(folder.Write("any.dat", Counting(100))));
  EXPECT_FALSE(datFile.WriteTempFile(folder.Path("part"), 99, 2));
  EXPECT_FALSE(datFile.WriteTempFile(folder.Path("part"), 101, 0));
  EXPECT_FALSE(datFile.WriteTempFile(folder.Path("part"), 0xFFFFFFFF, 2));
  EXPECT_FALSE(Exists(folder.Path("part")));
}

TEST_F(TempFilesTest, AFileThatCannotBeCreatedIsFalse) {
  ASSERT_TRUE(datFile.OpenDatFile(folder.Write("any.dat", Counting(100))));
  EXPECT_FALSE(datFile.WriteTempFile(folder.Path("none/part"), 0, 1));
}

TEST_F(TempFilesTest, TheyAreReadableByTheirOwnerAlone) {
  umask(0);
  ASSERT_TRUE(Examine(TwoPackPackage()));
  for (const char* path : kAll) EXPECT_EQ(ModeOf(path), 0600U) << path;
}

TEST_F(TempFilesTest, AnOwnFileFoundThereIsEmptiedAndMadePrivate) {
  for (const char* path : kAll) Put(path, std::string(1000, 'x'), 0666);
  ASSERT_TRUE(Examine(TwoPackPackage()));
  for (const char* path : kAll) EXPECT_EQ(ModeOf(path), 0600U) << path;
  EXPECT_EQ(ContentsOf("/tmp/TEMP1.BIN"), TwoPackImage1());
  EXPECT_EQ(ContentsOf("/tmp/TEMP2.INI"), Bytes{} + ViewOf(TwoPackDescription2()));
}

TEST_F(TempFilesTest, EachOfTheFourThatCannotBeWrittenMakesTheExaminationFalse) {
  for (const char* path : kAll) {
    RemoveTempFiles();
    ASSERT_TRUE(std::filesystem::create_directory(path));
    EXPECT_FALSE(Examine(TwoPackPackage())) << path;
    EXPECT_TRUE(std::filesystem::is_directory(path));
  }
  RemoveTempFiles();
  EXPECT_TRUE(Examine(TwoPackPackage()));
}

TEST_F(TempFilesTest, TheyAreWrittenInOrderUpToTheFirstThatFails) {
  const char* const order[] = {"/tmp/TEMP1.INI", "/tmp/TEMP1.BIN", "/tmp/TEMP2.INI",
                               "/tmp/TEMP2.BIN"};
  for (size_t failing = 0; failing < 4; failing++) {
    RemoveTempFiles();
    std::filesystem::create_directory(order[failing]);
    EXPECT_FALSE(Examine(TwoPackPackage()));
    for (size_t i = 0; i < 4; i++) EXPECT_EQ(Exists(order[i]), i <= failing) << failing << i;
  }
}

TEST_F(TempFilesTest, NoLinkIsFollowed) {
  const std::string victim = folder.Write("victim", "precious");
  std::filesystem::create_symlink(victim, "/tmp/TEMP1.BIN");
  EXPECT_FALSE(Examine(OnePackPackage()));
  EXPECT_EQ(folder.Read("victim"), Bytes{} + ViewOf("precious"));
}

TEST_F(TempFilesTest, NoLinkIsFollowedToAFileThatIsNotThereYet) {
  std::filesystem::create_symlink(folder.Path("made"), "/tmp/TEMP1.INI");
  EXPECT_FALSE(Examine(OnePackPackage()));
  EXPECT_FALSE(Exists(folder.Path("made")));
}

TEST_F(TempFilesTest, AFileWithASecondNameIsNotTouched) {
  Put("/tmp/TEMP1.INI", "precious");
  std::filesystem::create_hard_link("/tmp/TEMP1.INI", folder.Path("second"));
  EXPECT_FALSE(Examine(OnePackPackage()));
  EXPECT_EQ(folder.Read("second"), Bytes{} + ViewOf("precious"));
}

TEST_F(TempFilesTest, AFifoIsRefusedWithoutWaitingForAReader) {
  ASSERT_EQ(mkfifo("/tmp/TEMP1.INI", 0600), 0);
  EXPECT_FALSE(Examine(OnePackPackage()));
}

TEST_F(TempFilesTest, AReadOnlyFileKeepsAPackageOutUnlessTheUserMayWriteToIt) {
  Put("/tmp/TEMP1.BIN", "old", 0400);
  const bool mayWrite = access("/tmp/TEMP1.BIN", W_OK) == 0;
  EXPECT_EQ(Examine(OnePackPackage()), mayWrite);
  EXPECT_EQ(ContentsOf("/tmp/TEMP1.BIN"), mayWrite ? OnePackImage() : Bytes{} + ViewOf("old"));
}

TEST_F(TempFilesTest, TheLogNamesTheFileThatKeptAPackageOut) {
  ASSERT_TRUE(std::filesystem::create_directory("/tmp/TEMP1.BIN"));
  EXPECT_FALSE(Examine(OnePackPackage()));
  ASSERT_EQ(log.lines.size(), 1U);
  EXPECT_NE(log.lines[0].find("/tmp/TEMP1.BIN"), std::string::npos);
}

// A disk that is full shows as a file size limit: every length at which writing can stop.
TEST_F(TempFilesTest, AFileThatDidNotFindRoomMakesTheExaminationFalse) {
  ASSERT_NE(std::signal(SIGXFSZ, SIG_IGN), SIG_ERR);
  ASSERT_TRUE(datFile.OpenDatFile(folder.Write("package.dat", OnePackPackage())));
  rlimit unlimited = {};
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &unlimited), 0);
  for (rlim_t length = 0; length <= 100; length++) {
    const rlimit limited = {length, unlimited.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limited), 0);
    const bool written = datFile.WriteTempFile("/tmp/TEMP2.BIN", 352, 100);
    const bool examined = datFile.ExamineDatFile();
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &unlimited), 0);
    EXPECT_TRUE(written);  // what was written is not counted here, but compared later
    EXPECT_EQ(ContentsOf("/tmp/TEMP2.BIN").size(), length);
    EXPECT_EQ(examined, length >= 100) << length;
  }
}

TEST_F(TempFilesTest, DeletingRemovesAllFour) {
  ASSERT_TRUE(Examine(TwoPackPackage()));
  datFile.DeleteTempFiles();
  for (const char* path : kAll) EXPECT_FALSE(Exists(path)) << path;
  datFile.DeleteTempFiles();  // nothing left is no error
}

TEST_F(TempFilesTest, DeletingRemovesTheSecondPairAfterAOnePackPackageToo) {
  ASSERT_TRUE(Examine(TwoPackPackage()));
  ASSERT_TRUE(Examine(OnePackPackage()));
  datFile.DeleteTempFiles();
  for (const char* path : kAll) EXPECT_FALSE(Exists(path)) << path;
}

TEST_F(TempFilesTest, BeforeAnyExaminationNothingIsRemoved) {
  Put("/tmp/TEMP1.INI", "of another run");
  datFile.DeleteTempFiles();
  EXPECT_TRUE(Exists("/tmp/TEMP1.INI"));
}

TEST_F(TempFilesTest, DeletingGoesOnAfterAFileThatIsGone) {
  ASSERT_TRUE(Examine(TwoPackPackage()));
  std::filesystem::remove("/tmp/TEMP1.INI");
  std::filesystem::remove("/tmp/TEMP1.BIN");
  datFile.DeleteTempFiles();
  for (const char* path : kAll) EXPECT_FALSE(Exists(path)) << path;
}

TEST_F(TempFilesTest, DeletingRemovesALinkAndNotWhatItPointsTo) {
  ASSERT_TRUE(Examine(OnePackPackage()));
  const std::string target = folder.Write("target", "precious");
  std::filesystem::remove("/tmp/TEMP1.INI");
  std::filesystem::create_symlink(target, "/tmp/TEMP1.INI");
  datFile.DeleteTempFiles();
  EXPECT_FALSE(Exists("/tmp/TEMP1.INI"));
  EXPECT_TRUE(Exists(target));
}

TEST_F(TempFilesTest, DeletingNeverEmptiesAFolder) {
  ASSERT_TRUE(Examine(OnePackPackage()));
  std::filesystem::create_directory("/tmp/TEMP2.INI");
  Put("/tmp/TEMP2.INI/inside", "precious");
  datFile.DeleteTempFiles();
  EXPECT_TRUE(Exists("/tmp/TEMP2.INI/inside"));
  EXPECT_FALSE(Exists("/tmp/TEMP1.INI"));
}

}  // namespace
}  // namespace hollin
