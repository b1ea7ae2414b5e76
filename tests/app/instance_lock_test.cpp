// SPDX-License-Identifier: MIT
#include "app/instance_lock.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <optional>

#include "tests/support/eventually.h"
#include "tests/support/recorded_log.h"
#include "tests/support/temp_folder.h"

namespace hollin {
namespace {

constexpr const char* kFileName = "com.tovari.Hollin.lock";

// A process of its own that takes the lock and waits to be killed.
class OtherProcess {
 public:
  OtherProcess() {
    std::array<int, 2> ends{};
    EXPECT_EQ(pipe(ends.data()), 0);
    process = fork();
    if (process == 0) HoldLock(ends[1]);
    close(ends[1]);
    char state = 0;
    EXPECT_EQ(read(ends[0], &state, 1), 1);
    close(ends[0]);
    holdsLock = state == 'h';
  }
  ~OtherProcess() {
    kill(process, SIGKILL);
    waitpid(process, nullptr, 0);
  }
  OtherProcess(const OtherProcess&) = delete;
  OtherProcess& operator=(const OtherProcess&) = delete;

  bool holdsLock = false;

 private:
  [[noreturn]] static void HoldLock(int tell) {
    InstanceLock lock;
    const char state = lock.Take() == LockState::kHeld ? 'h' : '-';
    [[maybe_unused]] const ssize_t told = write(tell, &state, 1);
    while (true) pause();
  }

  pid_t process = -1;
};

class InstanceLockTest : public ::testing::Test {
 protected:
  InstanceLockTest() {
    setenv("XDG_RUNTIME_DIR", folder.Path().c_str(), 1);
    setenv("XDG_CACHE_HOME", cache.Path().c_str(), 1);
  }
  static LockState TakeOnce() {
    InstanceLock lock;
    return lock.Take();
  }
  [[nodiscard]] static mode_t ModeOf(const std::string& path) {
    struct stat status = {};
    EXPECT_EQ(lstat(path.c_str(), &status), 0) << path;
    return status.st_mode & 07777;
  }
  [[nodiscard]] std::string File() const { return folder.Path(kFileName); }
  [[nodiscard]] std::string CacheFile() const {
    return cache.Path(std::string("com.tovari.Hollin/") + kFileName);
  }

  TempFolder folder, cache;
  RecordedLog log;
};

TEST_F(InstanceLockTest, TheFirstTakesItAndTheSecondIsToldThatItIsBusy) {
  InstanceLock first;
  InstanceLock second;
  EXPECT_EQ(first.Take(), LockState::kHeld);
  EXPECT_EQ(first.Take(), LockState::kHeld);
  EXPECT_EQ(second.Take(), LockState::kBusy);
  EXPECT_EQ(second.Take(), LockState::kBusy);
  EXPECT_EQ(log.lines, std::vector<std::string>{});
}

TEST_F(InstanceLockTest, ItGoesWithItsObjectAndTheFileStays) {
  EXPECT_EQ(TakeOnce(), LockState::kHeld);
  EXPECT_TRUE(std::filesystem::exists(File()));
  EXPECT_EQ(TakeOnce(), LockState::kHeld);
}

TEST_F(InstanceLockTest, ItKeepsOtherProcessesOutUntilTheyAreKilled) {
  std::optional<OtherProcess> other(std::in_place);
  EXPECT_TRUE(other->holdsLock);
  InstanceLock lock;
  EXPECT_EQ(lock.Take(), LockState::kBusy);
  other.reset();
  EXPECT_EQ(lock.Take(), LockState::kHeld);
  EXPECT_FALSE(OtherProcess().holdsLock);
}

TEST_F(InstanceLockTest, TheFileIsForTheUserAlone) {
  umask(0);
  EXPECT_EQ(TakeOnce(), LockState::kHeld);
  EXPECT_EQ(ModeOf(File()), 0600U);
  ASSERT_EQ(chmod(File().c_str(), 0666), 0);
  EXPECT_EQ(TakeOnce(), LockState::kHeld);
  EXPECT_EQ(ModeOf(File()), 0600U);
}

TEST_F(InstanceLockTest, WithoutARuntimeFolderItLiesInAPrivateFolderOfTheCache) {
  unsetenv("XDG_RUNTIME_DIR");
  umask(0);
  InstanceLock lock;
  EXPECT_EQ(lock.Take(), LockState::kHeld);
  EXPECT_EQ(ModeOf(CacheFile()), 0600U);
  EXPECT_EQ(ModeOf(cache.Path("com.tovari.Hollin")), 0700U);
  EXPECT_EQ(TakeOnce(), LockState::kBusy);
}

TEST_F(InstanceLockTest, ARuntimeFolderThatIsNotPrivateIsNotUsed) {
  for (const mode_t mode : {0701U, 0720U, 0777U, 01777U}) {
    ASSERT_EQ(chmod(folder.Path().c_str(), mode), 0);
    EXPECT_EQ(TakeOnce(), LockState::kHeld);
    EXPECT_FALSE(std::filesystem::exists(File()));
    EXPECT_TRUE(std::filesystem::remove(CacheFile()));
  }
}

TEST_F(InstanceLockTest, ARuntimeFolderThatIsMissingIsNotMade) {
  setenv("XDG_RUNTIME_DIR", folder.Path("missing").c_str(), 1);
  EXPECT_EQ(TakeOnce(), LockState::kHeld);
  EXPECT_FALSE(std::filesystem::exists(folder.Path("missing")));
  EXPECT_TRUE(std::filesystem::exists(CacheFile()));
}

TEST_F(InstanceLockTest, AForeignRuntimeFolderIsNotUsed) {
  if (geteuid() != 0) {
    setenv("XDG_RUNTIME_DIR", "/root", 1);
  } else {
    ASSERT_EQ(chown(folder.Path().c_str(), 65534, 65534), 0);
  }
  EXPECT_EQ(TakeOnce(), LockState::kHeld);
  EXPECT_TRUE(std::filesystem::exists(CacheFile()));
}

TEST_F(InstanceLockTest, AWideFolderOfOurOwnInTheCacheIsMadePrivate) {
  unsetenv("XDG_RUNTIME_DIR");
  ASSERT_EQ(mkdir(cache.Path("com.tovari.Hollin").c_str(), 0700), 0);
  ASSERT_EQ(chmod(cache.Path("com.tovari.Hollin").c_str(), 0777), 0);
  EXPECT_EQ(TakeOnce(), LockState::kHeld);
  EXPECT_EQ(ModeOf(cache.Path("com.tovari.Hollin")), 0700U);
}

TEST_F(InstanceLockTest, AFolderOfTheCacheThatIsALinkIsNotFollowed) {
  unsetenv("XDG_RUNTIME_DIR");
  std::filesystem::create_directory_symlink(folder.Path(), cache.Path("com.tovari.Hollin"));
  EXPECT_EQ(TakeOnce(), LockState::kUnavailable);
  EXPECT_FALSE(std::filesystem::exists(File()));
}

TEST_F(InstanceLockTest, WhatStandsInTheFilesPlaceIsLeftAloneAndNamedInTheLog) {
  const std::string target = folder.Write("target", "contents");
  const std::vector<std::function<void()>> prepared = {
      [&] { std::filesystem::create_symlink(target, File()); },
      [&] { std::filesystem::create_symlink(folder.Path("nowhere"), File()); },
      [&] { std::filesystem::create_hard_link(target, File()); },
      [&] { std::filesystem::create_directory(File()); },
      [&] { ASSERT_EQ(mkfifo(File().c_str(), 0600), 0); },
  };
  for (const auto& prepare : prepared) {
    prepare();
    log.lines.clear();
    EXPECT_EQ(TakeOnce(), LockState::kUnavailable);
    ASSERT_EQ(log.lines.size(), 1U);
    EXPECT_TRUE(log.lines[0].starts_with("No lock against a second Hollin: ")) << log.lines[0];
    std::filesystem::remove_all(File());
  }
  EXPECT_EQ(folder.Read("target"), Bytes({'c', 'o', 'n', 't', 'e', 'n', 't', 's'}));
  EXPECT_FALSE(std::filesystem::exists(folder.Path("nowhere")));
}

TEST_F(InstanceLockTest, WithNoPlaceForTheFileThereIsNoLock) {
  unsetenv("XDG_RUNTIME_DIR");
  setenv("XDG_CACHE_HOME", cache.Write("file", "").c_str(), 1);
  EXPECT_EQ(TakeOnce(), LockState::kUnavailable);
  EXPECT_EQ(log.lines, std::vector<std::string>{"No lock against a second Hollin: File exists"});
}

TEST_F(InstanceLockTest, ALockOnARemovedFileDoesNotCountForNewcomers) {
  InstanceLock first;
  EXPECT_EQ(first.Take(), LockState::kHeld);
  ASSERT_TRUE(std::filesystem::remove(File()));
  InstanceLock second;
  EXPECT_EQ(second.Take(), LockState::kHeld);
  EXPECT_EQ(TakeOnce(), LockState::kBusy);
}

TEST_F(InstanceLockTest, ItIsNotHandedToProgramsThatAreStarted) {
  std::optional<InstanceLock> lock(std::in_place);
  EXPECT_EQ(lock->Take(), LockState::kHeld);
  const pid_t child = fork();
  if (child == 0) {
    execl("/bin/sleep", "sleep", "60", nullptr);
    _exit(127);
  }
  // Until the other program has begun, it still has what its parent had.
  const std::string program = "/proc/" + std::to_string(child) + "/exe";
  std::error_code failed;
  const auto own = std::filesystem::read_symlink("/proc/self/exe");
  EXPECT_TRUE(Eventually([&] { return std::filesystem::read_symlink(program, failed) != own; }));
  lock.reset();
  EXPECT_EQ(TakeOnce(), LockState::kHeld);
  kill(child, SIGKILL);
  waitpid(child, nullptr, 0);
}

}  // namespace
}  // namespace hollin
