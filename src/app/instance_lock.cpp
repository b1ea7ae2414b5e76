// SPDX-License-Identifier: MIT
#include "app/instance_lock.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "app/user_folders.h"
#include "base/descriptor.h"
#include "base/log.h"

namespace hollin {
namespace {

constexpr mode_t kOwnerOnly = S_IRUSR | S_IWUSR;
constexpr mode_t kEverybodyElse = S_IRWXG | S_IRWXO;

int OpenFolder(const std::string& path) {
  return open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
}

// Whoever else may write there could take the file away from under the lock.
bool IsPrivate(int folder) {
  struct stat status = {};
  return fstat(folder, &status) == 0 && status.st_uid == geteuid() &&
         (status.st_mode & kEverybodyElse) == 0;
}

int FailWith(int error) {
  errno = error;
  return -1;
}

// `folder`, if it is private, else -1.
int IfPrivate(int folder) {
  if (folder < 0 || IsPrivate(folder)) return folder;
  close(folder);
  return FailWith(EPERM);
}

int OpenOwnCacheFolder() {
  const std::string cache = UserCacheFolder();
  if (cache.empty()) return FailWith(ENOENT);
  const std::string path = cache + "/" + kApplicationId;
  if (const int error = MakeFolder(path); error != 0) return FailWith(error);
  const int folder = OpenFolder(path);
  static_cast<void>(fchmod(folder, S_IRWXU));  // fails where it is not ours
  return IfPrivate(folder);
}

int OpenLockFolder() {
  const int folder = IfPrivate(OpenFolder(UserRuntimeFolder()));
  return folder >= 0 ? folder : OpenOwnCacheFolder();
}

bool IsOwnFile(const struct stat& status) {
  return S_ISREG(status.st_mode) && status.st_uid == geteuid() && status.st_nlink == 1;
}

// Opens the file, and nothing that was put in its place.
int OpenLockFile(int folder, const char* name) {
  const int file = openat(
      folder, name, O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, kOwnerOnly);
  struct stat status = {};
  if (file < 0) return -1;
  if (fstat(file, &status) == 0 && IsOwnFile(status) && fchmod(file, kOwnerOnly) == 0) return file;
  close(file);
  return FailWith(EPERM);
}

// A lock on a file that somebody has removed meanwhile keeps nobody out.
bool IsStillThere(int folder, const char* name, int file) {
  struct stat opened = {};
  struct stat named = {};
  return fstat(file, &opened) == 0 && fstatat(folder, name, &named, AT_SYMLINK_NOFOLLOW) == 0 &&
         opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

LockState Unavailable() {
  const int error = errno;
  Log(fmt::format("No lock against a second Hollin: {}", std::strerror(error)));
  return LockState::kUnavailable;
}

// Locks the file in `folder`; `file` is the locked descriptor. False, with errno, when it is not.
bool LockFileIn(int folder, int& file) {
  const std::string name = std::string(kApplicationId) + ".lock";
  constexpr int kAttempts = 10;
  for (int attempt = 0; attempt < kAttempts; attempt++) {
    file = OpenLockFile(folder, name.c_str());
    if (file < 0) return false;
    const bool isLocked = flock(file, LOCK_EX | LOCK_NB) == 0;
    if (isLocked && IsStillThere(folder, name.c_str(), file)) return true;
    const int error = isLocked ? ENOENT : errno;
    close(file);
    file = -1;
    errno = error;
    if (!isLocked) return false;
  }
  return false;
}

}  // namespace

InstanceLock::~InstanceLock() {
  if (file >= 0) close(file);
}

LockState InstanceLock::Take() {
  if (file >= 0) return LockState::kHeld;
  const Descriptor folder(OpenLockFolder());
  if (!folder.IsOpen()) return Unavailable();
  if (LockFileIn(folder.number, file)) return LockState::kHeld;
  return errno == EWOULDBLOCK ? LockState::kBusy : Unavailable();
}

}  // namespace hollin
