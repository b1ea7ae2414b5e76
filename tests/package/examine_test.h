// SPDX-License-Identifier: MIT
// The ground of every test that has a package examined: it writes the package into a folder of its
// own, keeps the log, and leaves the fixed temporary files of the examination as if they had never
// been.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "package/dat_file_examine.h"
#include "tests/support/hex_bytes.h"
#include "tests/support/link_test.h"
#include "tests/support/recorded_log.h"
#include "tests/support/temp_folder.h"

namespace hollin {

class ExamineTest : public LinkTest {
 protected:
  ExamineTest() { RemoveTempFiles(); }
  ~ExamineTest() override { RemoveTempFiles(); }

  // Opens and examines a package made of these bytes.
  bool Examine(ByteView package) {
    return datFile.OpenDatFile(folder.Write("package.dat", package)) && datFile.ExamineDatFile();
  }

  static bool Exists(const std::string& path) {
    return std::filesystem::exists(std::filesystem::symlink_status(path));
  }

  static Bytes ContentsOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file) << path;
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  }

  static void RemoveTempFiles() {
    for (const char* path :
         {"/tmp/TEMP1.INI", "/tmp/TEMP2.INI", "/tmp/TEMP1.BIN", "/tmp/TEMP2.BIN"}) {
      std::error_code ignored;
      std::filesystem::remove_all(path, ignored);
    }
  }

  TempFolder folder;
  RecordedLog log;
  DatFileExamine datFile;
};

}  // namespace hollin
