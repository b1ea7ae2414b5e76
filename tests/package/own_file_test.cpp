// SPDX-License-Identifier: MIT
// Files of our own in a folder where others may have prepared the name.
#include "package/own_file.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>

#include "tests/base/file_test.h"

namespace hollin {
namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class OwnFileTest : public FileTest {
 protected:
  [[nodiscard]] bool Exists(const std::string& name) const {
    struct stat status = {};
    return lstat(folder.Path(name).c_str(), &status) == 0;
  }

  [[nodiscard]] mode_t Mode(const std::string& name) const {
    struct stat status = {};
    EXPECT_EQ(lstat(folder.Path(name).c_str(), &status), 0);
    return status.st_mode & 07777;
  }
};

class WriteOwnFileTest : public OwnFileTest {
 protected:
  [[nodiscard]] bool Write(const std::string& name) const {
    return WriteOwnFile(folder.Path(name), ViewOf("new"));
  }

  // The name is not written to, and the log says so.
  void ExpectRefused(const std::string& name) {
    log.lines.clear();
    EXPECT_FALSE(Write(name));
    EXPECT_THAT(log.lines, ElementsAre(HasSubstr(folder.Path(name))));
  }

  void ExpectHolds(const std::string& name, std::string_view text) const {
    const Bytes bytes = folder.Read(name);
    EXPECT_EQ(std::string(bytes.begin(), bytes.end()), text) << name;
  }
};

class RemoveOwnFileTest : public OwnFileTest {};

TEST_F(WriteOwnFileTest, AFileIsCreatedWithTheBytes) {
  const Bytes all = Counting(100000);
  ASSERT_TRUE(WriteOwnFile(folder.Path("file"), all));
  EXPECT_EQ(folder.Read("file"), all);
  EXPECT_THAT(log.lines, IsEmpty());
}

TEST_F(WriteOwnFileTest, NoBytesMakeAnEmptyFile) {
  ASSERT_TRUE(WriteOwnFile(folder.Path("file"), {}));
  ExpectHolds("file", "");
}

TEST_F(WriteOwnFileTest, ANewFileIsReadableByTheOwnerAlone) {
  for (const mode_t mask : {mode_t{0}, mode_t{022}, mode_t{0777}}) {
    const mode_t before = umask(mask);
    EXPECT_TRUE(Write("file"));
    umask(before);
    EXPECT_EQ(Mode("file"), mode_t{0600}) << mask;
    RemoveOwnFile(folder.Path("file"));
  }
}

TEST_F(WriteOwnFileTest, AnOwnFileIsEmptiedAndRewritten) {
  folder.Write("file", "older and longer");
  ASSERT_TRUE(Write("file"));
  ExpectHolds("file", "new");
}

TEST_F(WriteOwnFileTest, AnOwnFileIsSetToTheOwnerAlone) {
  for (const mode_t mode : {mode_t{0666}, mode_t{0644}, mode_t{0200}, mode_t{04755}}) {
    ASSERT_EQ(chmod(folder.Write("file", "old").c_str(), mode), 0);
    EXPECT_TRUE(Write("file"));
    EXPECT_EQ(Mode("file"), mode_t{0600}) << mode;
  }
}

TEST_F(WriteOwnFileTest, ASymbolicLinkIsNotFollowed) {
  folder.Write("target", "precious");
  std::filesystem::create_symlink("target", folder.Path("link"));
  ExpectRefused("link");
  ExpectHolds("target", "precious");
}

TEST_F(WriteOwnFileTest, ADanglingLinkCreatesNothing) {
  std::filesystem::create_symlink("target", folder.Path("link"));
  ExpectRefused("link");
  EXPECT_FALSE(Exists("target"));
}

TEST_F(WriteOwnFileTest, AFileWithASecondNameIsLeftAlone) {
  folder.Write("file", "precious");
  chmod(folder.Path("file").c_str(), 0640);
  std::filesystem::create_hard_link(folder.Path("file"), folder.Path("second"));
  ExpectRefused("second");
  ExpectHolds("file", "precious");
  EXPECT_EQ(Mode("file"), mode_t{0640});
}

TEST_F(WriteOwnFileTest, AFifoIsRefusedWithAndWithoutAReader) {
  ASSERT_EQ(mkfifo(folder.Path("fifo").c_str(), 0600), 0);
  ExpectRefused("fifo");
  const int reader = open(folder.Path("fifo").c_str(), O_RDONLY | O_NONBLOCK);
  ASSERT_GE(reader, 0);
  ExpectRefused("fifo");
  char byte = 0;
  EXPECT_LE(read(reader, &byte, 1), 0);
  close(reader);
}

TEST_F(WriteOwnFileTest, AFolderIsRefused) {
  std::filesystem::create_directory(folder.Path("folder"));
  ExpectRefused("folder");
  EXPECT_TRUE(std::filesystem::is_directory(folder.Path("folder")));
}

TEST_F(WriteOwnFileTest, AnotherUsersFileIsLeftAlone) {
  ASSERT_EQ(chmod(folder.Write("file", "theirs").c_str(), 0666), 0);
  GiveAway(folder.Path("file"));
  ExpectRefused("file");
  ExpectHolds("file", "theirs");
  EXPECT_EQ(Mode("file"), mode_t{0666});
}

TEST_F(WriteOwnFileTest, AReadOnlyFileOfOnesOwnIsRefused) {
  ASSERT_EQ(chmod(folder.Write("file", "old").c_str(), 0400), 0);
  const OrdinaryUser user(folder);
  ExpectRefused("file");
  ExpectHolds("file", "old");
}

TEST_F(WriteOwnFileTest, AReadOnlyFolderIsRefused) {
  const OrdinaryUser user(folder);
  ASSERT_EQ(chmod(folder.Path().c_str(), 0500), 0);
  ExpectRefused("file");
  ASSERT_EQ(chmod(folder.Path().c_str(), 0700), 0);
}

TEST_F(WriteOwnFileTest, AMissingFolderIsRefused) { ExpectRefused("none/file"); }

// The sums decide later whether what was written is what was meant.
TEST_F(WriteOwnFileTest, WhatWasWrittenIsNotCounted) {
  Calls().onWrite = [](int /*file*/, const void* /*buffer*/, size_t /*size*/) {
    return ssize_t{-ENOSPC};
  };
  EXPECT_TRUE(Write("file"));
  Calls().onWrite = {};
  ExpectHolds("file", "");
}

TEST_F(WriteOwnFileTest, ADiskThatFillsUpMeanwhileKeepsTheBeginning) {
  int writes = 0;
  Calls().onWrite = [&writes](int file, const void* buffer, size_t /*size*/) {
    return ++writes == 1 ? RealWrite(file, buffer, 2) : ssize_t{-ENOSPC};
  };
  EXPECT_TRUE(Write("file"));
  EXPECT_EQ(writes, 2);
  Calls().onWrite = {};
  ExpectHolds("file", "ne");
}

TEST_F(WriteOwnFileTest, AWriteThatTakesNothingEnds) {
  Calls().onWrite = [](int /*file*/, const void* /*buffer*/, size_t /*size*/) {
    return ssize_t{0};
  };
  EXPECT_TRUE(Write("file"));
}

TEST_F(WriteOwnFileTest, ShortAndInterruptedWritesAreContinued) {
  int writes = 0;
  Calls().onWrite = [&writes](int file, const void* buffer, size_t size) {
    writes++;
    if (writes % 2 == 0) return ssize_t{-EINTR};
    return RealWrite(file, buffer, std::min<size_t>(size, 7));
  };
  ASSERT_TRUE(WriteOwnFile(folder.Path("file"), Counting(100)));
  Calls().onWrite = {};
  EXPECT_EQ(folder.Read("file"), Counting(100));
}

TEST_F(WriteOwnFileTest, ProgramsStartedMeanwhileDoNotInheritTheFile) {
  bool closes = false;
  Calls().onWrite = [&closes](int file, const void* buffer, size_t size) {
    closes = (fcntl(file, F_GETFD) & FD_CLOEXEC) != 0;
    return RealWrite(file, buffer, size);
  };
  EXPECT_TRUE(Write("file"));
  EXPECT_TRUE(closes);
}

TEST_F(RemoveOwnFileTest, AFileIsRemoved) {
  RemoveOwnFile(folder.Write("file", "x"));
  EXPECT_FALSE(Exists("file"));
}

TEST_F(RemoveOwnFileTest, ALinkIsRemovedAndNotWhatItLeadsTo) {
  folder.Write("target", "x");
  std::filesystem::create_symlink("target", folder.Path("link"));
  RemoveOwnFile(folder.Path("link"));
  EXPECT_FALSE(Exists("link"));
  EXPECT_TRUE(Exists("target"));
}

TEST_F(RemoveOwnFileTest, AFifoIsRemoved) {
  ASSERT_EQ(mkfifo(folder.Path("fifo").c_str(), 0600), 0);
  RemoveOwnFile(folder.Path("fifo"));
  EXPECT_FALSE(Exists("fifo"));
}

TEST_F(RemoveOwnFileTest, AnEmptyFolderIsRemoved) {
  std::filesystem::create_directory(folder.Path("folder"));
  RemoveOwnFile(folder.Path("folder"));
  EXPECT_FALSE(Exists("folder"));
}

TEST_F(RemoveOwnFileTest, AFolderWithSomethingInItStays) {
  std::filesystem::create_directory(folder.Path("folder"));
  folder.Write("folder/file", "x");
  RemoveOwnFile(folder.Path("folder"));
  EXPECT_TRUE(Exists("folder/file"));
}

TEST_F(RemoveOwnFileTest, AnotherUsersFileStays) {
  folder.Write("file", "theirs");
  GiveAway(folder.Path("file"));
  RemoveOwnFile(folder.Path("file"));
  EXPECT_TRUE(Exists("file"));
}

TEST_F(RemoveOwnFileTest, ErrorsAndAnEmptyPathAreIgnored) {
  RemoveOwnFile(folder.Path("none"));
  RemoveOwnFile(folder.Path("none/file"));
  RemoveOwnFile("");
  EXPECT_TRUE(std::filesystem::exists(folder.Path()));
  EXPECT_THAT(log.lines, IsEmpty());
}

}  // namespace
}  // namespace hollin
