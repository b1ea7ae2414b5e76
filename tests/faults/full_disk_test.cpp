// SPDX-License-Identifier: MIT
// A disk that is full, a limit of file sizes, and memory that runs out: the package gets in whole,
// or not at all.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <iostream>
#include <numeric>

#include "tests/faults/child_process.h"
#include "tests/faults/limits.h"
#include "tests/faults/users.h"
#include "tests/faults/whole_program.h"

namespace hollin::faults {
namespace {

constexpr size_t kTwoPacks = 7;  // of the reference updates
constexpr size_t kPage = 4096;   // of a tmpfs

struct Report {
  bool isTmpPrivate = false;
  int exitCode = -1;
  bool holdsImages = false;
  bool isUntouched = false;
  unsigned tempFilesLeft = 0;
};

// An update of so many bytes.
campaign::ReferenceUpdate LargeUpdate(size_t size) {
  campaign::ReferenceUpdate update = campaign::ReferenceUpdates().at(0);
  update.packs = {campaign::ReferenceA1{.chipSize = static_cast<uint32_t>(2 * size),
                                        .blockLength = 0x8000,
                                        .image = Bytes(size, 0x33)}};
  update.keyboard.a1.size = static_cast<uint32_t>(size);
  return update;
}

// How long the temporary files of an update are.
std::vector<size_t> LengthsOf(const campaign::ReferenceUpdate& update) {
  std::vector<size_t> lengths;
  for (const campaign::ReferencePack& pack : update.packs) {
    lengths.push_back(DescriptionOf(pack).size());
    lengths.push_back(ImageOf(pack).size());
  }
  return lengths;
}

size_t PagesOf(const std::vector<size_t>& lengths) {
  return std::accumulate(lengths.begin(), lengths.end(), size_t{0}, [](size_t pages, size_t each) {
    return pages + (each + kPage - 1) / kPage;
  });
}

class LimitTest : public testing::Test {
 protected:
  // Updates behind `limit`, in a child; it works whole or nothing is sent.
  void UpdateBehind(const std::function<void(Report&)>& limit) {
    const Shared<Report> report;
    ChildProcess child([&] {
      // A new /tmp hides the package, but not from where one stands.
      setenv("XDG_RUNTIME_DIR", "/proc/self/cwd/.", 1);
      if (chdir(program->Folder().Path().c_str()) != 0) throw std::runtime_error("no folder");
      program->Plug();
      limit(*report);
      report->exitCode = program->Update("package.dat");
      report->holdsImages = program->HoldsImages();
      report->isUntouched = program->IsUntouched();
      report->tempFilesLeft = WholeProgram::TempFilesLeft();
    });
    EXPECT_EQ(child.Await(), "") << child.Output();
    last = *report;
    EXPECT_TRUE(last.exitCode == 0 || last.exitCode == 1 || last.exitCode == 3) << child.Output();
    EXPECT_EQ(last.exitCode == 0, last.holdsImages);
    EXPECT_TRUE(last.exitCode == 0 || last.isUntouched);
    EXPECT_EQ(last.tempFilesLeft, 0U);
  }

  [[nodiscard]] bool IsAccepted() const { return last.exitCode == 0; }

  campaign::ReferenceUpdate update = campaign::ReferenceUpdates().at(kTwoPacks);
  const std::vector<size_t> lengths = LengthsOf(update);
  const size_t longest = *std::max_element(lengths.begin(), lengths.end());
  std::unique_ptr<WholeProgram> program = std::make_unique<WholeProgram>(update);
  Report last;
};

// Who may mount nothing has a limit of each file's size in its place.
TEST_F(LimitTest, ADiskOfAnyFewPagesTakesThePackageWholeOrNotAtAll) {
  const size_t most = PagesOf(lengths) + 1;
  for (size_t pages = 1; pages <= most; pages++) {
    SCOPED_TRACE(pages);
    UpdateBehind([&](Report& report) {
      report.isTmpPrivate = EnterPrivateTmp(01777, "size=" + std::to_string(pages * kPage));
      if (!report.isTmpPrivate) LimitFileSize(pages * kPage);
    });
    EXPECT_EQ(IsAccepted(), last.isTmpPrivate ? pages >= most - 1 : pages * kPage >= longest);
  }
  std::cout << (last.isTmpPrivate ? "tiny tmpfs" : "limits of files") << " of 1 to " << most
            << " pages\n";
}

TEST_F(LimitTest, ADiskWithoutRoomForTheNamesTakesNothing) {
  for (size_t files = 1; files <= 5; files++) {
    SCOPED_TRACE(files);
    UpdateBehind([&](Report& report) {
      // The folder itself counts too.
      const std::string options = "nr_inodes=" + std::to_string(files + 1);
      report.isTmpPrivate = EnterPrivateTmp(01777, options);
    });
    EXPECT_EQ(IsAccepted(), files >= lengths.size() || !last.isTmpPrivate);
  }
}

TEST_F(LimitTest, AFileSizeLimitTakesThePackageWholeOrNotAtAll) {
  for (const size_t length : lengths) {
    for (const size_t limit : {length - 1, length, length + 1}) {
      SCOPED_TRACE(limit);
      UpdateBehind([&](Report& /*report*/) { LimitFileSize(limit); });
      EXPECT_EQ(IsAccepted(), limit >= longest);
    }
  }
}

TEST_F(LimitTest, MemoryThatIsShortAnywhereFailsTheUpdateAndNothingElse) {
  constexpr size_t kMebibyte = 1 << 20;
  program.reset();  // there is one keyboard and one log for all
  program = std::make_unique<WholeProgram>(LargeUpdate(kMebibyte / 4));
  size_t accepted = 0;
  // A thread alone wants eight mebibytes.
  for (size_t more = 0; more <= 16 * kMebibyte; more += kMebibyte) {
    SCOPED_TRACE(more);
    UpdateBehind([&](Report& /*report*/) { LimitMemory(more); });
    EXPECT_FALSE(IsAccepted() && more == 0);
    accepted += IsAccepted() ? 1 : 0;
  }
  EXPECT_TRUE(IsAccepted());
  std::cout << "17 limits, " << accepted << " of them let the update work\n";
}

}  // namespace
}  // namespace hollin::faults
