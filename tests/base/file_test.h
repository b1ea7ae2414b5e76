// SPDX-License-Identifier: MIT
// The ground of the tests of files: a folder of their own, the log kept, and every descriptor
// closed in the end.
#pragma once

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <iterator>
#include <string>

#include "base/file.h"
#include "tests/base/system_calls.h"
#include "tests/support/hex_bytes.h"
#include "tests/support/recorded_log.h"
#include "tests/support/temp_folder.h"

namespace hollin {

constexpr uid_t kOrdinaryUser = 65534;

class FileTest : public ::testing::Test {
 protected:
  FileTest() : descriptorsBefore(OpenDescriptors()) {}
  ~FileTest() override { Calls() = {}; }

  void TearDown() override { EXPECT_EQ(OpenDescriptors(), descriptorsBefore); }

  static ptrdiff_t OpenDescriptors() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
  }

  // Makes the file at `path` somebody else's. Only root can give one away; for others, it is the
  // user who changes.
  static void GiveAway(const std::string& path) {
    if (RunsAsRoot()) {
      ASSERT_EQ(lchown(path.c_str(), kOrdinaryUser, kOrdinaryUser), 0);
    } else {
      Calls().onUser = [] { return getuid() + 1; };
    }
  }

  static bool RunsAsRoot() { return getuid() == 0; }

  TempFolder folder;
  RecordedLog log;

 private:
  ptrdiff_t descriptorsBefore;
};

// The rights of an ordinary user, as long as it lives: root may do anything. The folder becomes
// that user's.
class OrdinaryUser {
 public:
  explicit OrdinaryUser(const TempFolder& folder) {
    if (getuid() != 0) return;
    for (const auto& entry : std::filesystem::directory_iterator(folder.Path())) {
      EXPECT_EQ(lchown(entry.path().c_str(), kOrdinaryUser, kOrdinaryUser), 0);
    }
    EXPECT_EQ(chown(folder.Path().c_str(), kOrdinaryUser, kOrdinaryUser), 0);
    EXPECT_EQ(seteuid(kOrdinaryUser), 0);
  }
  ~OrdinaryUser() {
    if (getuid() != 0) return;
    EXPECT_EQ(seteuid(0), 0);
  }
  OrdinaryUser(const OrdinaryUser&) = delete;
  OrdinaryUser& operator=(const OrdinaryUser&) = delete;
};

}  // namespace hollin
