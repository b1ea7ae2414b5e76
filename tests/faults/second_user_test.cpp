// SPDX-License-Identifier: MIT
// The temporary files have fixed names in a folder where everybody may prepare something. Whatever
// lies there when a package is examined: no file of others is changed, and what is flashed is what
// the package holds. Run by root, the tests play both users; run by anybody else, files of the
// same user are taken for a stranger's.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <iostream>

#include "tests/faults/child_process.h"
#include "tests/faults/prepared_files.h"
#include "tests/faults/system_faults.h"
#include "tests/faults/users.h"
#include "tests/faults/whole_program.h"

namespace hollin::faults {
namespace {

constexpr size_t kTwoPacks = 7;  // of the reference updates

struct Report {
  bool isTold = false;
  bool isTmpPrivate = false;
  int exitCode = -1;
  bool holdsImages = false;
  bool isUntouched = false;
  bool areOthersTheSame = false;  // files elsewhere
  bool isItselfTheSame = false;   // what lay at the name
  bool isItselfGone = false;
  bool hasFifoGotBytes = false;
};

// A reader that waits for a FIFO's bytes, where there is one.
class WaitingReader {
 public:
  explicit WaitingReader(const std::string& path) {
    struct stat status = {};
    if (lstat(path.c_str(), &status) != 0 || !S_ISFIFO(status.st_mode)) return;
    file = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  }
  ~WaitingReader() {
    if (file >= 0) close(file);
  }
  WaitingReader(const WaitingReader&) = delete;
  WaitingReader& operator=(const WaitingReader&) = delete;

  [[nodiscard]] bool HasGotBytes() const {
    char byte = 0;
    return file >= 0 && read(file, &byte, 1) > 0;
  }

 private:
  int file = -1;
};

void UpdateAsUser(WholeProgram& program, bool pretendsStranger, Report& report) {
  Become(kUser);
  if (pretendsStranger) Faults().userOffset = 1;
  program.Plug();
  report.exitCode = program.Update();
  report.holdsImages = program.HoldsImages();
  report.isUntouched = program.IsUntouched();
}

void Play(const PreparedFile& file, const std::string& path, mode_t modeOfTmp, Report& report) {
  report.isTmpPrivate = EnterPrivateTmp(modeOfTmp);
  WholeProgram program(campaign::ReferenceUpdates().at(kTwoPacks));
  Give(program.Folder().Path(), kUser);  // the lock is made there
  const TempFolder folder;
  const Scene scene = MakeScene(folder.Path());
  Prepare(file, path, scene);
  const std::vector<std::string> others = SnapshotOf(scene);
  const std::string itself = StateOf(path);
  const WaitingReader reader(path);

  ChildProcess user([&] { UpdateAsUser(program, file.isStrangers && !IsRoot(), report); });
  const std::string end = user.Await();
  std::cout << end << user.Output();
  report.isTold = end.empty();
  report.areOthersTheSame = SnapshotOf(scene) == others;
  report.isItselfTheSame = StateOf(path) == itself;
  report.isItselfGone = StateOf(path).empty();
  report.hasFifoGotBytes = reader.HasGotBytes();
}

void Check(const PreparedFile& file, const Report& report) {
  EXPECT_TRUE(report.isTold);
  EXPECT_EQ(report.exitCode, file.isAccepted ? 0 : 3);
  EXPECT_EQ(report.holdsImages, file.isAccepted);
  EXPECT_EQ(report.isUntouched, !file.isAccepted);
  EXPECT_TRUE(report.areOthersTheSame);
  EXPECT_FALSE(report.hasFifoGotBytes);
  EXPECT_TRUE(report.isItselfTheSame || !file.isStrangers);
  EXPECT_TRUE(report.isItselfGone || !file.isAccepted);
}

class PreparedFilesTest : public testing::TestWithParam<size_t> {
 protected:
  static void PlayAll(const std::string& path, mode_t modeOfTmp) {
    size_t accepted = 0;
    bool isTmpPrivate = false;
    for (const PreparedFile& file : PreparedFiles()) {
      const Shared<Report> report;
      ChildProcess scene([&] { Play(file, path, modeOfTmp, *report); });
      SCOPED_TRACE(std::string(file.name) + " at " + path);
      EXPECT_EQ(scene.Await(), "");
      Check(file, *report);
      if (HasFailure()) std::cout << scene.Output();
      if (report->exitCode == 0) accepted++;
      isTmpPrivate = report->isTmpPrivate;
    }
    std::cout << ProtectionsOfTheKernel() << (IsRoot() ? "two users" : "one user") << ", "
              << (isTmpPrivate ? "own" : "shared") << " /tmp, " << PreparedFiles().size()
              << " states, " << accepted << " accepted\n";
  }
};

TEST_P(PreparedFilesTest, InAFolderAsTmpIsHarmNobody) { PlayAll(kTempFiles.at(GetParam()), 01777); }

// Where everybody may remove everybody's files.
TEST_P(PreparedFilesTest, InAFolderWithoutTheStickyBitHarmNobody) {
  PlayAll(kTempFiles.at(GetParam()), 0777);
}

INSTANTIATE_TEST_SUITE_P(Names, PreparedFilesTest, testing::Range<size_t>(0, kTempFiles.size()));

}  // namespace
}  // namespace hollin::faults
