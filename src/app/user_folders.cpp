// SPDX-License-Identifier: MIT
#include "app/user_folders.h"

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

namespace hollin {
namespace {

std::string AbsolutePathIn(const char* variable) {
  const char* const value = std::getenv(variable);
  return value != nullptr && *value == '/' ? value : "";
}

std::string HomeFolder() {
  std::string home = AbsolutePathIn("HOME");
  if (!home.empty()) return home;
  const passwd* const user = getpwuid(geteuid());
  return user != nullptr && user->pw_dir != nullptr && *user->pw_dir == '/' ? user->pw_dir : "";
}

std::string FolderIn(const char* variable, const char* belowHome) {
  std::string folder = AbsolutePathIn(variable);
  if (!folder.empty()) return folder;
  const std::string home = HomeFolder();
  return home.empty() ? "" : home + belowHome;
}

bool IsFolder(const std::string& path) {
  struct stat status = {};
  return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

int MakeOneFolder(const std::string& path) {
  if (mkdir(path.c_str(), S_IRWXU) == 0) return 0;
  const int error = errno;
  return IsFolder(path) ? 0 : error;
}

}  // namespace

std::string UserDataFolder() { return FolderIn("XDG_DATA_HOME", "/.local/share"); }

std::string UserCacheFolder() { return FolderIn("XDG_CACHE_HOME", "/.cache"); }

std::string UserRuntimeFolder() { return AbsolutePathIn("XDG_RUNTIME_DIR"); }

int MakeFolder(const std::string& path) {
  if (path.empty()) return ENOENT;
  size_t end = path.find('/', 1);
  for (; end != std::string::npos; end = path.find('/', end + 1)) {
    const std::string above = path.substr(0, end);
    if (IsFolder(above)) continue;
    if (const int error = MakeOneFolder(above); error != 0) return error;
  }
  return MakeOneFolder(path);
}

}  // namespace hollin
