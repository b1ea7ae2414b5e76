// SPDX-License-Identifier: MIT
#include "app/user_folders.h"

#include <gtest/gtest.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>

#include "tests/support/temp_folder.h"

namespace hollin {
namespace {

class UserFoldersTest : public ::testing::Test {
 protected:
  UserFoldersTest() {
    for (const char* name : {"XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_RUNTIME_DIR"}) unsetenv(name);
    Set("HOME", "/home/me");
  }
  static void Set(const char* name, const char* value) { setenv(name, value, 1); }
  [[nodiscard]] mode_t ModeOf(const std::string& name) const {
    struct stat status = {};
    EXPECT_EQ(stat(folder.Path(name).c_str(), &status), 0);
    return status.st_mode & 07777;
  }

  TempFolder folder;
};

TEST_F(UserFoldersTest, WithoutVariablesTheFoldersLieInTheHomeFolder) {
  EXPECT_EQ(UserDataFolder(), "/home/me/.local/share");
  EXPECT_EQ(UserCacheFolder(), "/home/me/.cache");
  EXPECT_EQ(UserRuntimeFolder(), "");
}

TEST_F(UserFoldersTest, AnAbsolutePathInTheVariableCounts) {
  Set("XDG_DATA_HOME", "/data");
  Set("XDG_CACHE_HOME", "/cache");
  Set("XDG_RUNTIME_DIR", "/run/me");
  EXPECT_EQ(UserDataFolder(), "/data");
  EXPECT_EQ(UserCacheFolder(), "/cache");
  EXPECT_EQ(UserRuntimeFolder(), "/run/me");
}

TEST_F(UserFoldersTest, ARelativeOrEmptyPathInTheVariableIsIgnored) {
  for (const char* path : {"", "data", "./data", "~/data"}) {
    for (const char* name : {"XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_RUNTIME_DIR"}) Set(name, path);
    EXPECT_EQ(UserDataFolder(), "/home/me/.local/share");
    EXPECT_EQ(UserCacheFolder(), "/home/me/.cache");
    EXPECT_EQ(UserRuntimeFolder(), "");
  }
}

TEST_F(UserFoldersTest, WithoutAHomeVariableTheUsersEntryTellsTheHomeFolder) {
  const std::string home = getpwuid(geteuid())->pw_dir;
  unsetenv("HOME");
  EXPECT_EQ(UserDataFolder(), home + "/.local/share");
  Set("HOME", "relative");
  EXPECT_EQ(UserCacheFolder(), home + "/.cache");
}

TEST_F(UserFoldersTest, MissingFoldersAreMadeForTheUserAlone) {
  umask(0);
  EXPECT_EQ(MakeFolder(folder.Path("a/b/c")), 0);
  for (const char* name : {"a", "a/b", "a/b/c"}) EXPECT_EQ(ModeOf(name), 0700U) << name;
}

TEST_F(UserFoldersTest, AFolderThatIsThereStaysAsItIs) {
  ASSERT_EQ(mkdir(folder.Path("a").c_str(), 0750), 0);
  EXPECT_EQ(MakeFolder(folder.Path("a")), 0);
  EXPECT_EQ(MakeFolder(folder.Path("a") + "/"), 0);
  EXPECT_EQ(ModeOf("a"), 0750U);
}

TEST_F(UserFoldersTest, ALinkToAFolderWillDo) {
  ASSERT_EQ(mkdir(folder.Path("target").c_str(), 0700), 0);
  std::filesystem::create_symlink(folder.Path("target"), folder.Path("link"));
  EXPECT_EQ(MakeFolder(folder.Path("link")), 0);
  EXPECT_EQ(MakeFolder(folder.Path("link/inner")), 0);
  EXPECT_EQ(ModeOf("target/inner"), 0700U);
}

TEST_F(UserFoldersTest, WhatStandsInTheWayIsAnError) {
  folder.Write("file", "");
  std::filesystem::create_symlink(folder.Path("nowhere"), folder.Path("dangling"));
  EXPECT_EQ(MakeFolder(folder.Path("file")), EEXIST);
  EXPECT_EQ(MakeFolder(folder.Path("file/inner")), EEXIST);
  EXPECT_EQ(MakeFolder(folder.Path("dangling")), EEXIST);
  EXPECT_EQ(MakeFolder(""), ENOENT);
  EXPECT_EQ(MakeFolder("/proc/none/inner"), ENOENT);
}

}  // namespace
}  // namespace hollin
