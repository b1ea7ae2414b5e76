// SPDX-License-Identifier: MIT
// The update's temporary files, which have fixed names: a case that may leave some takes them away.
#pragma once

#include <algorithm>
#include <array>
#include <filesystem>
#include <system_error>

namespace hollin {

inline constexpr std::array<const char*, 4> kTempFiles = {"/tmp/TEMP1.INI", "/tmp/TEMP1.BIN",
                                                          "/tmp/TEMP2.INI", "/tmp/TEMP2.BIN"};

[[nodiscard]] inline bool TempFilesExist() {
  return std::ranges::any_of(kTempFiles, [](const char* path) {
    return std::filesystem::exists(std::filesystem::symlink_status(path));
  });
}

// There are none at its beginning, and none are left at its end.
class NoTempFiles {
 public:
  NoTempFiles() { Remove(); }
  ~NoTempFiles() { Remove(); }
  NoTempFiles(const NoTempFiles&) = delete;
  NoTempFiles& operator=(const NoTempFiles&) = delete;

 private:
  static void Remove() {
    std::error_code ignored;
    for (const char* path : kTempFiles) std::filesystem::remove(path, ignored);
  }
};

}  // namespace hollin
