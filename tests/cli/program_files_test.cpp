// SPDX-License-Identifier: MIT
// What the program needs where it is installed, and how it is called there.
#include <algorithm>
#include <sstream>

#include "tests/cli/whole_program_test.h"

namespace hollin {
namespace {

class ProgramFilesTest : public WholeProgramTest {};

TEST_F(ProgramFilesTest, TheProgramOnThePathIsALinkIntoTheBundle) {
  EXPECT_EQ(std::filesystem::read_symlink(HOLLIN_BIN_DIR "/hollin-cli"),
            "../Hollin.app/hollin-cli");
}

TEST_F(ProgramFilesTest, TellsTheProjectsVersion) {
  const Ended ended = Run({"--version"});
  EXPECT_EQ(ended.exitCode, 0);
  EXPECT_EQ(ended.out, "hollin-cli " HOLLIN_VERSION "\n");
}

TEST_F(ProgramFilesTest, UsageErrorsHaveOneExitCode) {
  EXPECT_EQ(Run({}).exitCode, 2);
  EXPECT_EQ(Run({"update"}).exitCode, 2);
  EXPECT_EQ(Run({"pack", "--nonsense"}).exitCode, 2);
}

TEST_F(ProgramFilesTest, NeedsNoLibraryBeyondTheSystemsOwnAndHidapi) {
  // The last three are the sanitizers' own, where the build has them.
  const std::vector<std::string> allowed = {"linux-vdso", "ld-linux",  "libc.",
                                            "libm.",      "libstdc++", "libgcc_s",
                                            "libudev.",   "libcap.",   "libhidapi-hidraw.",
                                            "libasan.",   "libubsan.", "libtsan."};
  Subprocess ldd({.command = {"/usr/bin/ldd", HOLLIN_BIN_DIR "/hollin-cli"}});
  ASSERT_EQ(ldd.Wait(), 0);
  std::istringstream lines(ldd.Out());
  for (std::string line; std::getline(lines, line);) {
    EXPECT_TRUE(std::any_of(allowed.begin(), allowed.end(), [&](const std::string& name) {
      return line.find(name) != std::string::npos;
    })) << line;
  }
  EXPECT_NE(ldd.Out().find("libhidapi-hidraw."), std::string::npos);
}

}  // namespace
}  // namespace hollin
