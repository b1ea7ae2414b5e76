// SPDX-License-Identifier: MIT
// How an examination makes and loads its updaters, and which of them it keeps.
#include <limits>

#include "tests/package/examine_test.h"
#include "tests/package/literal_packages.h"
#include "tests/package/scripted_a1_update.h"

namespace hollin {
namespace {

using Story = std::vector<std::string>;

class UpdaterCreationTest : public ExamineTest {
 protected:
  ~UpdaterCreationTest() override { Scripted() = {}; }

  // Loads both packs, but plans these numbers of steps.
  static void PlanSteps(uint32_t first, uint32_t second) {
    Scripted().load = [first, second](A1Update& updater) {
      const bool loaded = LoadHonestly(updater);
      updater.stepCount = updater.configPath == "/tmp/TEMP1.INI" ? first : second;
      return loaded;
    };
  }

  void ExpectNothingReady() {
    EXPECT_FALSE(datFile.IsFileReady());
    EXPECT_EQ(datFile.Update1, nullptr);
    EXPECT_EQ(datFile.Update2, nullptr);
    EXPECT_EQ(datFile.TotalStepCount(), 0);
    EXPECT_FALSE(datFile.RunUpdateStep(0));
  }
};

TEST_F(UpdaterCreationTest, OnlyTheConstructorAndLoadFilesAreCalledPackByPack) {
  EXPECT_TRUE(Examine(TwoPackPackage()));
  EXPECT_EQ(Scripted().story,
            (Story{"A1Update(/tmp/TEMP1.INI, /tmp/TEMP1.BIN)", "LoadFiles /tmp/TEMP1.INI",
                   "A1Update(/tmp/TEMP2.INI, /tmp/TEMP2.BIN)", "LoadFiles /tmp/TEMP2.INI"}));
}

TEST_F(UpdaterCreationTest, OnePackMakesOneUpdater) {
  EXPECT_TRUE(Examine(OnePackPackage()));
  EXPECT_EQ(Scripted().story,
            (Story{"A1Update(/tmp/TEMP1.INI, /tmp/TEMP1.BIN)", "LoadFiles /tmp/TEMP1.INI"}));
}

TEST_F(UpdaterCreationTest, AllFilesAreWrittenBeforeTheFirstIsLoaded) {
  Scripted().load = [](A1Update& updater) {
    EXPECT_EQ(ContentsOf("/tmp/TEMP2.BIN"), TwoPackImage2());
    return LoadHonestly(updater);
  };
  EXPECT_TRUE(Examine(TwoPackPackage()));
}

TEST_F(UpdaterCreationTest, AnUnknownFirstTypeMakesNoUpdater) {
  Bytes package = TwoPackPackage();
  PatchText(package, 172, "B7");
  RepairHeaderSum(package, 1);
  EXPECT_FALSE(Examine(package));
  EXPECT_EQ(Scripted().story, Story{});
}

TEST_F(UpdaterCreationTest, AnUnknownSecondTypeFailsAfterTheFirstUpdaterWasMade) {
  Bytes package = TwoPackPackage();
  PatchText(package, 300, "B7");
  RepairHeaderSum(package, 2);
  EXPECT_FALSE(Examine(package));
  EXPECT_EQ(Scripted().story,
            (Story{"A1Update(/tmp/TEMP1.INI, /tmp/TEMP1.BIN)", "LoadFiles /tmp/TEMP1.INI"}));
  ExpectNothingReady();
}

TEST_F(UpdaterCreationTest, AFirstUpdaterThatDoesNotLoadEndsTheExamination) {
  Scripted().load = [](A1Update& /*updater*/) { return false; };
  EXPECT_FALSE(Examine(TwoPackPackage()));
  EXPECT_EQ(Scripted().story.size(), 2U);
  ExpectNothingReady();
}

TEST_F(UpdaterCreationTest, ASecondUpdaterThatDoesNotLoadDropsTheFirst) {
  Scripted().load = [](A1Update& updater) {
    return updater.configPath == "/tmp/TEMP1.INI" && LoadHonestly(updater);
  };
  EXPECT_FALSE(Examine(TwoPackPackage()));
  EXPECT_EQ(Scripted().story.size(), 4U);
  ExpectNothingReady();
}

TEST_F(UpdaterCreationTest, WhateverLoadingThrowsIsAFailedExamination) {
  Scripted().load = [](A1Update& /*updater*/) -> bool { throw std::bad_alloc(); };
  EXPECT_FALSE(Examine(OnePackPackage()));
  Scripted().load = [](A1Update& /*updater*/) -> bool { throw 7; };
  EXPECT_FALSE(Examine(OnePackPackage()));
  ExpectNothingReady();
}

// Each of the four files, swapped by somebody else between its writing and its loading.
TEST_F(UpdaterCreationTest, AFileSwappedBeforeItIsLoadedMakesTheExaminationFalse) {
  for (const char* swapped :
       {"/tmp/TEMP1.INI", "/tmp/TEMP1.BIN", "/tmp/TEMP2.INI", "/tmp/TEMP2.BIN"}) {
    Scripted().load = [swapped](A1Update& updater) {
      std::fstream file(swapped, std::ios::in | std::ios::out | std::ios::binary);
      file.put('!');  // of the same length
      file.close();
      return LoadHonestly(updater);
    };
    EXPECT_FALSE(Examine(TwoPackPackage())) << swapped;
    ExpectNothingReady();
  }
}

// A giant in its place would take as much memory as it claims to be long.
TEST_F(UpdaterCreationTest, AFileLargerThanBothRegionsIsNotRead) {
  Scripted().load = [](A1Update& updater) {
    const auto most = std::max(std::filesystem::file_size(updater.configPath),
                               std::filesystem::file_size(updater.imagePath));
    FileContents contents;
    std::filesystem::resize_file(updater.imagePath, most);
    EXPECT_TRUE(updater.readFile(updater.imagePath, contents));
    std::filesystem::resize_file(updater.imagePath, most + 1);
    EXPECT_FALSE(updater.readFile(updater.imagePath, contents));
    return LoadHonestly(updater);
  };
  EXPECT_FALSE(Examine(OnePackPackage()));
}

TEST_F(UpdaterCreationTest, AFileCutShortOrGrownBeforeItIsLoadedMakesTheExaminationFalse) {
  for (const char* swapped : {"/tmp/TEMP1.INI", "/tmp/TEMP1.BIN"}) {
    for (const int difference : {-1, 1}) {
      Scripted().load = [swapped, difference](A1Update& updater) {
        const auto size = static_cast<int64_t>(std::filesystem::file_size(swapped));
        std::filesystem::resize_file(swapped, static_cast<uintmax_t>(size + difference));
        return LoadHonestly(updater);
      };
      EXPECT_FALSE(Examine(OnePackPackage())) << swapped << difference;
    }
  }
}

TEST_F(UpdaterCreationTest, WhatCountsIsWhatTheUpdaterHoldsAndNotWhatTheFileHolds) {
  Scripted().load = [](A1Update& updater) {
    const bool loaded = LoadHonestly(updater);
    updater.image[99] ^= 1;
    return loaded;
  };
  EXPECT_FALSE(Examine(OnePackPackage()));
  Scripted().load = [](A1Update& updater) {
    const bool loaded = LoadHonestly(updater);
    updater.description.bytes[0] ^= 1;
    return loaded;
  };
  EXPECT_FALSE(Examine(OnePackPackage()));
}

TEST_F(UpdaterCreationTest, AnUpdaterWithoutAnImageMakesTheExaminationFalse) {
  Scripted().load = [](A1Update& updater) {
    return ReadWholeFile(updater.configPath, updater.description);
  };
  EXPECT_FALSE(Examine(OnePackPackage()));
}

TEST_F(UpdaterCreationTest, APlanOfOnePackBeyondASignedNumberMakesTheExaminationFalse) {
  PlanSteps(0x7FFFFFFE, 0);
  EXPECT_TRUE(Examine(OnePackPackage()));
  PlanSteps(0x7FFFFFFF, 0);
  EXPECT_TRUE(Examine(OnePackPackage()));
  EXPECT_EQ(datFile.TotalStepCount(), std::numeric_limits<int32_t>::max());
  for (const uint32_t steps : {0x80000000U, 0xFFFFFFFFU}) {
    PlanSteps(steps, 0);
    EXPECT_FALSE(Examine(OnePackPackage())) << steps;
    ExpectNothingReady();
  }
}

TEST_F(UpdaterCreationTest, APlanOfBothPacksBeyondASignedNumberMakesTheExaminationFalse) {
  PlanSteps(0x7FFFFFFC, 3);
  EXPECT_TRUE(Examine(TwoPackPackage()));
  PlanSteps(0x7FFFFFFD, 3);
  EXPECT_FALSE(Examine(TwoPackPackage()));
  ExpectNothingReady();
  PlanSteps(3, 0x7FFFFFFD);
  EXPECT_FALSE(Examine(TwoPackPackage()));
  PlanSteps(0xFFFFFFFD, 3);  // the 32-bit sum would be "no steps"
  EXPECT_FALSE(Examine(TwoPackPackage()));
  PlanSteps(0xFFFFFFFF, 0xFFFFFFFF);
  EXPECT_FALSE(Examine(TwoPackPackage()));
}

class Listener : public UpdateObserver {
  void CommandFailed(const CommandFailure& /*failure*/) override {}
};

TEST_F(UpdaterCreationTest, TheObserverIsLentToEveryUpdater) {
  Listener listener;
  datFile.observer = &listener;
  ASSERT_TRUE(Examine(TwoPackPackage()));
  EXPECT_EQ(datFile.Update1->observer, &listener);
  EXPECT_EQ(datFile.Update2->observer, &listener);
}

}  // namespace
}  // namespace hollin
