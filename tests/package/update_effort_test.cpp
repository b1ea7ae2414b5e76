// SPDX-License-Identifier: MIT
// Every figure is counted by hand from the tables of the protocol.
#include "package/update_effort.h"

#include <gtest/gtest.h>

#include "package/package_inspection.h"
#include "tests/package/literal_packages.h"
#include "tests/package/package_recipes.h"

namespace hollin {
namespace {

UpdateEffort EffortOfRecipe(const std::string& code) {
  for (const PackageRecipe& recipe : SoundPackages()) {
    if (recipe.code == code) return InspectPackage(recipe.package).effort;
  }
  return {};
}

// Mode 2; block of 1000 bytes: header 2, 15 messages of 64 bytes (2 each), one of 40 (1), status 2;
// verify 2; end 2. Three steps.
TEST(UpdateEffortTest, OfA1) {
  const UpdateEffort effort = EffortOfRecipe("sound-a1");
  EXPECT_EQ(effort.reports, 2U + 2 + 30 + 1 + 2 + 2 + 2);
  EXPECT_EQ(effort.pauses, 1500U);
  EXPECT_EQ(effort.Milliseconds(), 1541U);
}

// Blocks of 64 and 36 bytes: 2 + 2 + 2 and 2 + 1 + 2.
TEST(UpdateEffortTest, OfA1InSeveralBlocks) {
  const UpdateEffort effort = InspectPackage(OnePackPackage()).effort;
  EXPECT_EQ(effort.reports, 2U + 6 + 5 + 2 + 2);
  EXPECT_EQ(effort.pauses, 2000U);
}

// Mode 2, end 2. Two sectors: erase cycles 4, polls 4, program cycles 2, verify 2 each. Their
// blocks of 512 bytes (2 + 10 + 2): four in the first; in the second, which has 952 bytes, one, and
// one of 440 (2 + 8 + 2).
TEST(UpdateEffortTest, OfA2) {
  const UpdateEffort effort = EffortOfRecipe("sound-a2");
  EXPECT_EQ(effort.reports, 2U + 2 + 12 * 2 + 14 * 4 + 14 + 12);
  EXPECT_EQ(effort.pauses, 4 * 500U + 2 * 720);
}

// As above, with the write buffer's cycles (2) and the program buffer's (2) for each sector.
TEST(UpdateEffortTest, OfA2ThroughTheWriteBuffer) {
  EXPECT_EQ(EffortOfRecipe("sound-a2-buffer").reports, 2U + 2 + 14 * 2 + 14 * 4 + 14 + 12);
}

// Mode 2, configure 2, end 2. Three sectors: erase 2, poll 2, verify 2, header 2 and status 1 each;
// their data 4096 (75), 4096 and 1808 (33) bytes.
TEST(UpdateEffortTest, OfC1) {
  const UpdateEffort effort = EffortOfRecipe("sound-c1");
  EXPECT_EQ(effort.reports, 2U + 2 + 2 + 9 * 3 + 75 + 75 + 33);
  EXPECT_EQ(effort.pauses, 5 * 500U + 3 * 20);
}

// Six erases a sector: 4 reports of cycles and a poll of 2 each, and 2 for a second look inside all
// but the innermost. Their pauses are 700 ms each, and 20 before each second look.
TEST(UpdateEffortTest, OfA2WithAnEraseTimeBelowTheFirstLook) {
  for (const PackageRecipe& recipe : PackagesWithFindings()) {
    if (recipe.code != "a2-erase-time-short") continue;
    const UpdateEffort effort = InspectPackage(recipe.package).effort;
    EXPECT_EQ(effort.reports, 2U + 2 + (24 + 12 + 10 + 4) * 2 + 14 * 4 + 14 + 12);
    EXPECT_EQ(effort.pauses, 4 * 500U + 2 * (6 * 700 + 5 * 20));
    return;
  }
  FAIL() << "no such recipe";
}

TEST(UpdateEffortTest, OfTwoPacksHasOneEnd) {
  EXPECT_EQ(EffortOfRecipe("sound-c1-a2").reports,
            EffortOfRecipe("sound-c1").reports + EffortOfRecipe("sound-a2").reports - 2);
}

}  // namespace
}  // namespace hollin
