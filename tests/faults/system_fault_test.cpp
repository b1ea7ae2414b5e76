// SPDX-License-Identifier: MIT
// Every system call and every allocation of hollin-cli's update fails once, in every way that it
// can fail: a sample of that in every run of the tests, all of it where HOLLIN_CAMPAIGN_ALL is set,
// as script/campaign sets it.
#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <iostream>
#include <iterator>
#include <sstream>
#include <vector>

#include "tests/faults/child_process.h"
#include "tests/faults/sampling.h"
#include "tests/faults/system_faults.h"
#include "tests/faults/whole_program.h"

namespace hollin::faults {
namespace {

constexpr size_t kSampleSize = 25;  // of system calls, and as many of allocations

struct NamedCall {
  const char* name;
  std::vector<Failure> failures;  // without an index
};

const NamedCall& Known(Call call) {
  const auto failing = [](Call each, std::initializer_list<int> errors) {
    std::vector<Failure> failures;
    for (const int error : errors) failures.push_back({.call = each, .error = error});
    return failures;
  };
  const auto moving = [&](Call each, std::initializer_list<int> errors) {
    std::vector<Failure> failures = failing(each, errors);
    for (const size_t most : {0U, 1U, 100U}) failures.push_back({.call = each, .atMost = most});
    return failures;
  };
  static const std::array<NamedCall, kCalls> known = {{
      {"open", failing(Call::kOpen,
                       {EACCES, EMFILE, ENFILE, ENOMEM, ENOENT, ENOSPC, EROFS, ELOOP, EINTR, EIO})},
      {"status", failing(Call::kStatus, {EACCES, ENOENT, ENOMEM, EIO})},
      {"read", moving(Call::kRead, {EINTR, EIO, EAGAIN, EISDIR})},
      {"write", moving(Call::kWrite, {EINTR, EIO, ENOSPC, EDQUOT, EFBIG})},
      {"truncate", failing(Call::kTruncate, {EINTR, EIO, EPERM})},
      {"mode", failing(Call::kMode, {EIO, EPERM, EROFS})},
      {"close", failing(Call::kClose, {EINTR, EIO, ENOSPC, EDQUOT})},
      {"remove", failing(Call::kRemove, {EACCES, EPERM, EBUSY, EROFS, EIO})},
      {"lock", failing(Call::kLock, {EINTR, ENOLCK, EWOULDBLOCK})},
      {"readlink", failing(Call::kReadLink, {EACCES, ENOENT, ENOMEM, EIO})},
      {"thread", failing(Call::kThread, {EAGAIN, EPERM})},
      {"allocate", failing(Call::kAllocate, {ENOMEM})},
  }};
  return known.at(static_cast<size_t>(call));
}

std::string TextOf(const Failure& failure) {
  std::ostringstream text;
  text << Known(failure.call).name << " " << failure.index;
  if (failure.error != 0) return text.str() + ": " + strerror(failure.error);
  text << ": at most " << failure.atMost << " bytes";
  return text.str();
}

// What a child finds out about a run with a failure and a sound run behind it.
struct Report {
  int exitCode = -1;
  bool holdsImages = false;
  bool isUntouched = false;
  bool hasStruck = false;
  long liveAllocations = 0;
  ptrdiff_t descriptors = 0;  // more than before
  unsigned tempFilesLeft = 0;
  std::array<size_t, kCalls> counted{};

  int secondExitCode = -1;
  bool secondHoldsImages = false;
  unsigned secondTempFilesLeft = 0;
};

ptrdiff_t OpenDescriptors() {
  return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

void RunWith(const Failure& failure, WholeProgram& program, Report& report) {
  program.Plug();
  const ptrdiff_t before = OpenDescriptors();
  Arm(failure);
  report.exitCode = program.Update();
  Disarm();
  report.descriptors = OpenDescriptors() - before;
  report.holdsImages = program.HoldsImages();
  report.isUntouched = program.IsUntouched();
  report.hasStruck = Faults().hasStruck;
  report.liveAllocations = Faults().liveAllocations;
  report.counted = Faults().counted;
  report.tempFilesLeft = WholeProgram::TempFilesLeft();

  program.Plug();
  report.secondExitCode = program.Update();
  report.secondHoldsImages = program.HoldsImages();
  report.secondTempFilesLeft = WholeProgram::TempFilesLeft();
}

// Faults that a program has to get over.
bool IsHarmless(const Failure& failure) {
  switch (failure.call) {
    case Call::kRead:
    case Call::kWrite:
      return failure.error == EINTR || (failure.error == 0 && failure.atMost > 0);
    case Call::kLock:
      return failure.error != EWOULDBLOCK;
    case Call::kClose:
    case Call::kRemove:
    case Call::kReadLink:
      return true;
    default:
      return false;
  }
}

// Only removing them can leave temporary files, and then one.
bool MayLeaveFile(const Failure& failure) {
  return failure.call == Call::kRemove || failure.call == Call::kStatus;
}

// Whether what is made once a process, like the configuration, is there already: only then nothing
// else may be left when the program has ended.
enum class Start { kCold, kWarm };

class Verdict {
 public:
  Verdict(const Failure& failure, const Report& report, Start start)
      : failure(failure), report(report), start(start) {
    Expect(report.hasStruck, "did not strike");
    CheckOutcome();
    CheckNothingIsLeft();
    Expect(report.secondExitCode == 0 && report.secondHoldsImages, "the run behind it failed");
    Expect(report.secondTempFilesLeft == 0, "the run behind it left temporary files");
  }

  [[nodiscard]] const std::vector<std::string>& Violations() const { return violations; }

 private:
  void Expect(bool holds, const std::string& otherwise) {
    if (!holds) violations.push_back(otherwise);
  }

  void CheckOutcome() {
    const int code = report.exitCode;
    const bool isBusy = failure.call == Call::kLock && failure.error == EWOULDBLOCK;
    Expect(code == 0 || code == 1 || code == 3 || code == 5, "exit code " + std::to_string(code));
    Expect((code == 5) == isBusy, "another answer to a lock that is held");
    Expect(code != 0 || report.holdsImages, "a success without the images in the flash");
    Expect(code < 3 || report.isUntouched, "a refusal after reports were sent");
    Expect(code == 0 || !IsHarmless(failure), "a failure that should have been got over");
  }

  void CheckNothingIsLeft() {
    Expect(report.descriptors == 0, std::to_string(report.descriptors) + " descriptors left");
    Expect(start == Start::kCold || report.liveAllocations == 0,
           std::to_string(report.liveAllocations) + " blocks of memory left");
    const unsigned left = report.tempFilesLeft;
    const bool isOneAtMost = (left & (left - 1)) == 0;
    Expect(left == 0 || (MayLeaveFile(failure) && isOneAtMost), "temporary files left");
  }

  const Failure& failure;
  const Report& report;
  Start start;
  std::vector<std::string> violations;
};

struct Figures {
  size_t runs = 0, succeeded = 0, violations = 0;
  size_t pessimistic = 0;  // failures told although the flash holds the images
};

// One update and all that can go wrong in it.
class FaultedUpdate {
 public:
  FaultedUpdate(size_t number, Start start)
      : program(campaign::ReferenceUpdates().at(number)), start(start) {
    program.Folder().Write("Config.ini", "IDC_VID = 0x1c3e\n");
    if (start == Start::kWarm) MakeLastingThings();
    Report healthy;
    EXPECT_EQ(Run({}, healthy), "");
    EXPECT_EQ(healthy.exitCode, 0);
    EXPECT_TRUE(healthy.holdsImages);
    EXPECT_TRUE(start == Start::kCold || healthy.liveAllocations == 0);
    counted = healthy.counted;
  }

  void RunFailures() {
    std::vector<Failure> allocations;
    std::vector<Failure> others;
    for (size_t call = 0; call < kCalls; call++) {
      for (const Failure& failure : FailuresOf(static_cast<Call>(call))) {
        (failure.call == Call::kAllocate ? allocations : others).push_back(failure);
      }
    }
    Reduce(allocations, kSampleSize);
    Reduce(others, kSampleSize);
    for (const Failure& failure : allocations) RunAndCheck(failure);
    for (const Failure& failure : others) RunAndCheck(failure);
    Print();
  }

 private:
  [[nodiscard]] std::vector<Failure> FailuresOf(Call call) const {
    std::vector<Failure> failures;
    for (Failure failure : Known(call).failures) {
      const size_t count = counted.at(static_cast<size_t>(call));
      for (failure.index = 1; failure.index <= count; failure.index++) failures.push_back(failure);
    }
    return failures;
  }

  void RunAndCheck(const Failure& failure) {
    Report report;
    const std::string end = Run(failure, report);
    figures.runs++;
    if (report.exitCode == 0) figures.succeeded++;
    if (report.exitCode == 1 && report.holdsImages) figures.pessimistic++;
    const Verdict verdict(failure, report, start);
    if (end.empty() && verdict.Violations().empty()) return;
    figures.violations++;
    ADD_FAILURE() << TextOf(failure) << ": " << end << testing::PrintToString(verdict.Violations())
                  << "\n"
                  << output;
  }

  void Print() const {
    std::cout << "HOLLIN_CAMPAIGN_SEED=" << Seed() << "\ncalls:";
    for (size_t call = 0; call < kCalls; call++) {
      std::cout << " " << counted[call] << " " << Known(static_cast<Call>(call)).name;
    }
    std::cout << "\nruns: " << figures.runs << ", succeeded " << figures.succeeded << ", failed "
              << figures.runs - figures.succeeded << " (" << figures.pessimistic
              << " of them with the whole image written), violations " << figures.violations
              << "\n";
  }

  void MakeLastingThings() {
    sigset_t signals;
    pthread_sigmask(SIG_SETMASK, nullptr, &signals);
    std::ostringstream unread;
    std::streambuf* const out = std::cout.rdbuf(unread.rdbuf());
    program.Plug();
    EXPECT_EQ(program.Update(), 0);
    std::cout.rdbuf(out);
    pthread_sigmask(SIG_SETMASK, &signals, nullptr);
  }

  std::string Run(const Failure& failure, Report& report) {
    WholeProgram::RemoveTempFiles();
    *shared = {};
    ChildProcess child([&] { RunWith(failure, program, *shared); });
    std::string end = child.Await();
    output = child.Output();
    report = *shared;
    return end;
  }

  WholeProgram program;
  Start start;
  Shared<Report> shared;
  std::array<size_t, kCalls> counted{};
  std::string output;  // of the last run
  Figures figures;
};

TEST(SystemFaultTest, AnyCallOfTheFirstRunMayFail) {
  FaultedUpdate update(1, Start::kCold);
  update.RunFailures();
}

// A1, A2, C1, and two packs.
class SystemFaultsOfUpdateTest : public testing::TestWithParam<size_t> {};

TEST_P(SystemFaultsOfUpdateTest, LeaveNothingBehindAndTheTruthIsTold) {
  FaultedUpdate update(GetParam(), Start::kWarm);
  update.RunFailures();
}

INSTANTIATE_TEST_SUITE_P(Updates, SystemFaultsOfUpdateTest, testing::Values(1, 2, 5, 7));

}  // namespace
}  // namespace hollin::faults
