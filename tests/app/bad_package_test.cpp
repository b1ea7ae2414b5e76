// SPDX-License-Identifier: MIT
// A good package, then a bad one, then an update: wherever the bad one was found out, nothing of
// either is written and nothing is called a success.
#include <gtest/gtest.h>

#include <functional>
#include <ostream>

#include "app/update_loop.h"
#include "tests/package/examine_test.h"
#include "tests/package/literal_packages.h"
#include "tests/support/recorded_pause.h"

namespace hollin {
namespace {

struct Fault {
  const char* name;
  size_t pack;  // 0: of the file, 1 and 2: of that pack
  std::function<void(Bytes& package)> spoil;
};

Fault WrongSum(const char* name, size_t pack, size_t offset) {
  return {name, pack, [offset](Bytes& package) {
            package[offset]++;
            if (offset % 128 != 124) RepairHeaderSum(package, offset / 128);
          }};
}

Fault UnknownType(size_t pack) {
  return {"type", pack, [pack](Bytes& package) {
            PatchText(package, 128 * pack + 44, "ZZ");
            RepairHeaderSum(package, pack);
          }};
}

// The packages begin with the packs' shared description in the file header.
Fault NotLoading() {
  return {"description", 0, [](Bytes& package) {
            PatchText(package, 1, "X");
            RepairHeaderSum(package, 0);
            for (size_t pack = 1; pack <= package[123]; pack++) {
              PatchU32(package, 128 * pack + 72, 0x07EA + 'X' - 'C');
              RepairHeaderSum(package, pack);
            }
          }};
}

// An image that none can be loaded from.
Fault EmptyImage(size_t pack) {
  return {"image", pack, [pack](Bytes& package) {
            PatchU32(package, 128 * pack + 116, 0);
            PatchU32(package, 128 * pack + 120, 0);
            RepairHeaderSum(package, pack);
          }};
}

const Fault kFaults[] = {
    {"missing", 0, [](Bytes& package) { package.clear(); }},
    {"cut", 0, [](Bytes& package) { package.pop_back(); }},
    {"count", 0,
     [](Bytes& package) {
       package[123] = 3;
       RepairHeaderSum(package, 0);
     }},
    WrongSum("headerSum", 0, 124),
    WrongSum("headerSum", 1, 252),
    WrongSum("cnfgSum", 1, 200),
    WrongSum("dataSum", 1, 248),
    UnknownType(1),
    NotLoading(),
    EmptyImage(1),
    WrongSum("headerSum", 2, 380),
    WrongSum("cnfgSum", 2, 328),
    WrongSum("dataSum", 2, 376),
    UnknownType(2),
    EmptyImage(2),
};

struct BadPackage {
  size_t packsBefore;
  size_t packs;
  Fault fault;
};

void PrintTo(const BadPackage& package, std::ostream* out) { *out << package.fault.name; }

// A package of one pack has no second one to be wrong.
std::vector<BadPackage> BadPackages() {
  std::vector<BadPackage> packages;
  for (const size_t before : {1U, 2U}) {
    for (const size_t after : {1U, 2U}) {
      for (const Fault& fault : kFaults) {
        if (fault.pack <= after) packages.push_back({before, after, fault});
      }
    }
  }
  return packages;
}

class BadPackageTest : public ExamineTest, public ::testing::WithParamInterface<BadPackage> {
 protected:
  void ExpectUpdateRefused() {
    std::vector<int32_t> progress;
    EXPECT_EQ(RunUpdate(datFile, [&](int32_t value) { progress.push_back(value); }),
              UpdateOutcome::kFailed);
    EXPECT_EQ(progress, (std::vector<int32_t>{-2}));
    EXPECT_EQ(hidapi.calls, std::vector<std::string>{});
    EXPECT_TRUE(pauses.lengths.empty());
  }

  RecordedPause pauses;
};

TEST_P(BadPackageTest, NothingIsSentAndTheUpdateFails) {
  ASSERT_TRUE(Examine(GetParam().packsBefore == 1 ? OnePackPackage() : TwoPackPackage()));
  Bytes package = GetParam().packs == 1 ? SmallestOnePackPackage() : SmallestTwoPackPackage();
  GetParam().fault.spoil(package);

  EXPECT_FALSE(Examine(package));

  EXPECT_FALSE(datFile.IsFileReady());
  EXPECT_EQ(datFile.TotalStepCount(), 0);
  EXPECT_FALSE(datFile.RunUpdateStep(0));
  EXPECT_EQ(datFile.NotConnectedMessage(), "The TS30 is not connected.");
  ExpectUpdateRefused();
}

std::string NameOf(const ::testing::TestParamInfo<BadPackage>& info) {
  const auto& [before, packs, fault] = info.param;
  return fault.name + std::to_string(fault.pack) + "_" + std::to_string(before) + "to" +
         std::to_string(packs);
}

INSTANTIATE_TEST_SUITE_P(AfterAGoodOne, BadPackageTest, ::testing::ValuesIn(BadPackages()), NameOf);

using BadPackageFilesTest = ExamineTest;

TEST_F(BadPackageFilesTest, AfterATempFileThatCouldNotBeWrittenNothingIsSent) {
  ASSERT_TRUE(Examine(TwoPackPackage()));
  RemoveTempFiles();
  std::filesystem::create_directory("/tmp/TEMP2.BIN");
  EXPECT_FALSE(Examine(TwoPackPackage()));
  EXPECT_EQ(RunUpdate(datFile, [](int32_t value) { EXPECT_EQ(value, -2); }),
            UpdateOutcome::kFailed);
  EXPECT_EQ(hidapi.calls, std::vector<std::string>{});
}

}  // namespace
}  // namespace hollin
