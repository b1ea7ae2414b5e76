// SPDX-License-Identifier: MIT
#include "cli/output_file.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>
#include <filesystem>

#include "tests/support/hex_bytes.h"
#include "tests/support/temp_folder.h"

namespace hollin {
namespace {

namespace fs = std::filesystem;

class OutputFileTest : public ::testing::Test {
 protected:
  bool Write(const std::string& name, ByteView bytes = ViewOf("new")) {
    return WriteOutputFile(folder.Path(name), bytes, reason);
  }

  [[nodiscard]] size_t FilesInFolder() const {
    return static_cast<size_t>(std::distance(fs::directory_iterator(folder.Path()), {}));
  }

  [[nodiscard]] bool Holds(const std::string& name, std::string_view text) const {
    const Bytes bytes = folder.Read(name);
    return std::string(bytes.begin(), bytes.end()) == text;
  }

  static void SetLargestFile(rlim_t size) {
    const rlimit limit = {.rlim_cur = size, .rlim_max = RLIM_INFINITY};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
  }

  TempFolder folder;
  std::string reason;
};

TEST_F(OutputFileTest, MakesAFileAndNothingElse) {
  EXPECT_TRUE(Write("a.dat"));
  EXPECT_TRUE(Holds("a.dat", "new"));
  EXPECT_EQ(FilesInFolder(), 1U);
}

TEST_F(OutputFileTest, ReplacesAFile) {
  folder.Write("a.dat", "an old and longer one");
  EXPECT_TRUE(Write("a.dat"));
  EXPECT_TRUE(Holds("a.dat", "new"));
  EXPECT_EQ(FilesInFolder(), 1U);
}

TEST_F(OutputFileTest, NewFilesHaveTheUsualRights) {
  const mode_t before = umask(S_IWGRP | S_IRWXO);
  EXPECT_TRUE(Write("a.dat"));
  umask(before);
  EXPECT_EQ(fs::status(folder.Path("a.dat")).permissions(), fs::perms(0640));
}

TEST_F(OutputFileTest, BehindALinkTheFileIsReplacedAndTheLinkStays) {
  folder.Write("real.dat", "old");
  fs::create_symlink("real.dat", folder.Path("link.dat"));
  EXPECT_TRUE(Write("link.dat"));
  EXPECT_TRUE(fs::is_symlink(folder.Path("link.dat")));
  EXPECT_TRUE(Holds("real.dat", "new"));
}

TEST_F(OutputFileTest, WhatIsNoRegularFileIsNotReplaced) {
  ASSERT_EQ(mkfifo(folder.Path("fifo").c_str(), 0600), 0);
  EXPECT_FALSE(Write("fifo"));
  EXPECT_EQ(reason, "it exists and is not a regular file");
  EXPECT_TRUE(fs::is_fifo(folder.Path("fifo")));
  fs::create_directory(folder.Path("folder"));
  EXPECT_FALSE(Write("folder"));
  EXPECT_EQ(FilesInFolder(), 2U);
}

TEST_F(OutputFileTest, AFolderThatIsNotThereIsTheReason) {
  EXPECT_FALSE(Write("nowhere/a.dat"));
  EXPECT_EQ(reason, "No such file or directory");
}

TEST_F(OutputFileTest, AFullDiskLeavesTheOldFile) {
  folder.Write("a.dat", "old");
  std::signal(SIGXFSZ, SIG_IGN);
  SetLargestFile(2);
  EXPECT_FALSE(Write("a.dat"));
  SetLargestFile(RLIM_INFINITY);
  EXPECT_EQ(reason, "File too large");
  EXPECT_TRUE(Holds("a.dat", "old"));
  EXPECT_EQ(FilesInFolder(), 1U);
}

}  // namespace
}  // namespace hollin
