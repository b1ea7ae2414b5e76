// SPDX-License-Identifier: MIT
#include "app/data_folder.h"

#include <sys/stat.h>

#include <cerrno>

#include "app/user_folders.h"

namespace hollin {

std::string ApplicationDataFolder() {
  const std::string folder = UserDataFolder();
  return folder.empty() ? "" : folder + "/" + kApplicationId;
}

bool QueryFolder(const std::string& path, bool& isFolder, AppError& error) {
  struct stat status = {};
  if (stat(path.c_str(), &status) == 0) {
    isFolder = S_ISDIR(status.st_mode);
    return true;
  }
  error = SystemError(errno,
                      DataStoreText::tr("The folder for application data cannot be examined (%1).")
                          .arg(PathName(path)));
  if (error.code != ENOENT || path.empty()) return false;
  error.domain = kFileErrorDomain;
  error.code = kNoSuchFile;
  return false;
}

bool CreateFolder(const std::string& path, AppError& error) {
  const int number = MakeFolder(path);
  if (number == 0) return true;
  error =
      SystemError(number, DataStoreText::tr("The folder for application data cannot be made (%1).")
                              .arg(PathName(path)));
  return false;
}

}  // namespace hollin
