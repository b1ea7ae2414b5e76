// SPDX-License-Identifier: MIT
// Temporary files that are swapped between their making and their loading: at every call of the
// program, one by one, and by another process that does nothing else, as quick as it can. What is
// flashed is what the package holds, or nothing is.
#include <gtest/gtest.h>
#include <sched.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <iostream>
#include <numeric>
#include <random>

#include "app/update_loop.h"
#include "device/hid_device.h"
#include "package/dat_file_examine.h"
#include "tests/faults/child_process.h"
#include "tests/faults/prepared_files.h"
#include "tests/faults/sampling.h"
#include "tests/faults/swapped_files.h"
#include "tests/faults/system_faults.h"
#include "tests/faults/users.h"
#include "tests/faults/whole_program.h"
#include "tests/support/eventually.h"

namespace hollin::faults {
namespace {

constexpr size_t kTwoPacks = 7;  // of the reference updates
constexpr size_t kSampleOfSwaps = 50;
constexpr size_t kSampleOfRaces = 100;
constexpr size_t kRacesOfAProcess = 500;  // where all are run
constexpr size_t kAllRaces = 10'000;

// What an update among swaps may end as; nothing when it is right.
std::string Wrong(int exitCode, const WholeProgram& program) {
  if (exitCode == 0) return program.HoldsImages() ? "" : "something else was flashed";
  if (exitCode == 3) return program.IsUntouched() ? "" : "refused after something was sent";
  return "exit code " + std::to_string(exitCode);
}

struct Report {
  size_t accepted = 0, refused = 0;
  size_t calls = 0;
  size_t rounds = 0;      // of the one who swaps
  char wrong[100] = "?";  // until the child has come to its end

  void Accept(const std::string& message) {
    accepted++;
    if (*wrong == '\0') message.copy(wrong, sizeof wrong - 1);
  }
};

// One swap at one call.
struct Moment {
  size_t call = 0;
  const Swap* swap = nullptr;
  const char* path = nullptr;
};

void UpdateWith(const Moment& moment, WholeProgram& program, Report& report) {
  program.Plug();
  *report.wrong = '\0';
  Faults().interruptedCall = moment.call;
  Faults().interruption = [&] { moment.swap->make(moment.path); };
  Arm();
  const int exitCode = program.Update();
  Disarm();
  const auto& counted = Faults().counted;
  report.calls = std::accumulate(counted.begin(), counted.end(), size_t{0}) -
                 counted.at(static_cast<size_t>(Call::kAllocate));
  report.accepted = exitCode == 0 ? 1 : 0;
  Wrong(exitCode, program).copy(report.wrong, sizeof report.wrong - 1);
}

class SwapAtEveryCallTest : public testing::Test {
 protected:
  void RunAt(const Moment& moment) {
    const Shared<Report> report;
    ChildProcess child([&] { UpdateWith(moment, program, *report); });
    const std::string end = child.Await();
    if (!end.empty() || *report->wrong != '\0') {
      ADD_FAILURE() << "call " << moment.call << ": " << moment.path << " "
                    << (moment.swap != nullptr ? moment.swap->name : "") << ": " << end
                    << report->wrong << "\n"
                    << child.Output();
    }
    last = *report;
    for (const char* path : kTempFiles) RemoveLeftovers(path);
    WholeProgram::RemoveTempFiles();
  }

  WholeProgram program{campaign::ReferenceUpdates().at(kTwoPacks)};
  Report last;
};

TEST_F(SwapAtEveryCallTest, NothingIsFlashedThatThePackageDoesNotHold) {
  RunAt({});
  std::vector<Moment> moments;
  for (size_t call = 1; call <= last.calls; call++) {
    for (const Swap& swap : Swaps()) {
      for (const char* path : kTempFiles) moments.push_back({call, &swap, path});
    }
  }
  Reduce(moments, kSampleOfSwaps);
  size_t accepted = 0;
  for (const Moment& moment : moments) {
    RunAt(moment);
    accepted += last.accepted;
  }
  std::cout << moments.size() << " swaps, " << accepted << " accepted\n";
}

size_t RacesOfAProcess() { return RunsAll() ? kRacesOfAProcess : kSampleOfRaces; }

// Who swaps, and whether everybody may remove everybody's files in /tmp.
struct Race {
  const char* name;
  uid_t swapper;
  mode_t modeOfTmp;
};

// For GoogleTest, which would print addresses.
void PrintTo(const Race& race, std::ostream* out) { *out << race.name; }

[[noreturn]] void SwapForEver(std::atomic<size_t>& rounds, unsigned seed) {
  std::mt19937 random(seed);
  const auto choose = [&](size_t count) { return random() % count; };
  while (true) {
    const std::string path = kTempFiles.at(choose(kTempFiles.size()));
    Swaps()[choose(Swaps().size())].make(path);
    // What lies there too long only keeps packages out.
    if (choose(2) == 0) {
      for (const char* each : kTempFiles) unlink(each);
      for (const char* each : kTempFiles) rmdir(each);
    }
    rounds++;
  }
}

// Whether the updaters hold what the package does, or a keyboard got it.
bool HoldsPack(const AXUpdate& updater, const campaign::ReferencePack& pack) {
  const ByteView image(updater.image.get(), static_cast<size_t>(updater.imageLength));
  return updater.description.Text() == DescriptionOf(pack) &&
         std::ranges::equal(image, ImageOf(pack));
}

std::string WrongAccepted(DatFileExamine& datFile, bool isWritten, WholeProgram& program) {
  static const campaign::ReferenceUpdate reference = campaign::ReferenceUpdates().at(kTwoPacks);
  if (!HoldsPack(*datFile.Update1, reference.packs[0]) ||
      !HoldsPack(*datFile.Update2, reference.packs[1])) {
    return "something else was loaded";
  }
  if (!isWritten) return "";
  program.Plug();
  const UpdateOutcome outcome = RunUpdate(datFile, [](int32_t /*value*/) {});
  return outcome == UpdateOutcome::kSucceeded && program.HoldsImages() ? "" : "not flashed";
}

// Lets others go first now and then between two calls: where processors are few, nobody would be
// quick enough otherwise.
void YieldBetweenCalls(unsigned seed) {
  static std::mt19937 random(seed);
  Faults().interruptedCall = 1;
  Faults().interruption = [] {
    sched_yield();
    Faults().interruptedCall = 1 + random() % 30;
  };
  Arm();
}

// Every tenth package that is accepted is written as well; that takes far longer than examining.
void ExamineAgainAndAgain(WholeProgram& program, unsigned seed, Report& report) {
  Become(kUser);
  YieldBetweenCalls(seed);
  HidDevice::vendorId = simulator::KeyboardOptions().vendorId;
  HidDevice::productId = simulator::KeyboardOptions().productId;
  *report.wrong = '\0';
  DatFileExamine datFile;
  for (size_t i = 0; i < RacesOfAProcess(); i++) {
    const bool isAccepted = datFile.OpenDatFile(program.PackagePath()) && datFile.ExamineDatFile();
    if (!isAccepted) {
      report.refused++;
    } else {
      report.Accept(WrongAccepted(datFile, report.accepted % 10 == 0, program));
    }
    datFile.DeleteTempFiles();
  }
}

void Play(const Race& race, unsigned seed, Report& report) {
  static_cast<void>(EnterPrivateTmp(race.modeOfTmp));
  WholeProgram program(campaign::ReferenceUpdates().at(kTwoPacks));
  Give(program.Folder().Path(), kUser);
  const TempFolder folder;
  const Scene scene = MakeScene(folder.Path());
  const std::vector<std::string> others = SnapshotOf(scene);
  const Shared<std::atomic<size_t>> rounds;
  ChildProcess swapper([&] {
    Become(race.swapper);
    SwapForEver(*rounds, seed);
  });
  if (!Eventually([&] { return *rounds > 0; })) throw std::runtime_error("nobody swaps");
  ChildProcess user([&] { ExamineAgainAndAgain(program, seed, report); });
  const std::string end = user.Await();
  report.rounds = *rounds;
  const bool isSwapping = Eventually([&] { return *rounds > report.rounds; });
  swapper.Kill();
  static_cast<void>(swapper.Await());
  for (const char* path : kTempFiles) RemoveLeftovers(path);
  if (!end.empty()) throw std::runtime_error(end + user.Output());
  if (!isSwapping) throw std::runtime_error("nobody swapped to the end");
  if (SnapshotOf(scene) != others) throw std::runtime_error("a file of others was changed");
}

class SwapRaceTest : public testing::TestWithParam<Race> {};

TEST_P(SwapRaceTest, NothingIsFlashedThatThePackageDoesNotHold) {
  const size_t processes = RunsAll() ? kAllRaces / kRacesOfAProcess : 1;
  Report all;
  for (size_t i = 0; i < processes; i++) {
    const Shared<Report> report;
    ChildProcess scene([&] { Play(GetParam(), Seed() + static_cast<unsigned>(i), *report); });
    EXPECT_EQ(scene.Await(), "") << scene.Output();
    EXPECT_STREQ(report->wrong, "");
    EXPECT_EQ(report->accepted + report->refused, RacesOfAProcess());
    all.accepted += report->accepted;
    all.refused += report->refused;
    all.rounds += report->rounds;
  }
  std::cout << ProtectionsOfTheKernel() << (IsRoot() ? "two users" : "one user") << ", "
            << all.accepted + all.refused << " examinations among " << all.rounds << " swaps, "
            << all.accepted << " accepted\n";
}

INSTANTIATE_TEST_SUITE_P(Swappers, SwapRaceTest,
                         testing::Values(Race{"Stranger", kStranger, 01777},
                                         Race{"StrangerWithoutTheStickyBit", kStranger, 0777},
                                         Race{"TheSameUser", kUser, 01777}),
                         [](const auto& race) { return race.param.name; });

}  // namespace
}  // namespace hollin::faults
