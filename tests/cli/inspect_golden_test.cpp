// SPDX-License-Identifier: MIT
// What inspect says of one package for each reason to refuse one and for each finding, letter for
// letter.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <set>
#include <sstream>

#include "cli/finding_words.h"
#include "cli/inspect_command.h"
#include "cli/inspection_json.h"
#include "cli/inspection_text.h"
#include "cli/refusal_words.h"
#include "package/package_inspection.h"
#include "tests/cli/golden.h"
#include "tests/package/package_recipes.h"
#include "updaters/a1_update.h"

namespace hollin {
namespace {

std::string TextOf(const PackageInspection& inspection) {
  std::ostringstream text;
  for (const std::string& line : InspectionText("package.dat", inspection)) PrintLine(text, line);
  return text.str();
}

std::string JsonOf(const PackageInspection& inspection) {
  std::ostringstream text;
  PrintJson(text, InspectionJson("package.dat", inspection));
  return text.str();
}

void ExpectGoldens(const std::string& name, const PackageInspection& inspection) {
  SCOPED_TRACE(name);
  ExpectGolden(name + ".txt", TextOf(inspection));
  ExpectGolden(name + ".json", JsonOf(inspection));
}

void ExpectGoldens(const PackageRecipe& recipe) {
  ExpectGoldens(recipe.Name(), InspectPackage(recipe.package));
}

std::set<std::string> CodesIn(const FindingList& findings) {
  std::set<std::string> codes;
  for (const Finding& finding : findings.All()) codes.emplace(words::CodeOf(finding.code));
  return codes;
}

TEST(InspectGoldenTest, SoundPackagesAreValidAndHaveNoFindings) {
  for (const PackageRecipe& recipe : SoundPackages()) {
    ExpectGoldens(recipe);
    const PackageInspection inspection = InspectPackage(recipe.package);
    EXPECT_TRUE(inspection.isValid) << recipe.code;
    EXPECT_EQ(CodesIn(inspection.findings), std::set<std::string>{}) << recipe.code;
  }
}

TEST(InspectGoldenTest, RefusedPackagesHaveTheReason) {
  for (const PackageRecipe& recipe : RefusedPackages()) {
    ExpectGoldens(recipe);
    const PackageInspection inspection = InspectPackage(recipe.package);
    ASSERT_FALSE(inspection.isValid) << recipe.code;
    EXPECT_EQ(recipe.code, words::OfInvalid(inspection).code) << recipe.Name();
  }
}

// Few findings come with others: what makes one may make another.
TEST(InspectGoldenTest, FindingsAreFoundInPackagesThatAreValid) {
  const std::set<std::string> inRefused = {"reserved-list-empty"};
  for (const PackageRecipe& recipe : PackagesWithFindings()) {
    ExpectGoldens(recipe);
    const PackageInspection inspection = InspectPackage(recipe.package);
    EXPECT_EQ(inspection.isValid, inRefused.count(recipe.code) == 0) << recipe.code;
    EXPECT_THAT(CodesIn(inspection.findings), ::testing::Contains(recipe.code));
  }
}

template <typename Recipes>
bool Covers(const Recipes& recipes, std::string_view code) {
  return std::any_of(recipes.begin(), recipes.end(),
                     [code](const PackageRecipe& recipe) { return recipe.code == code; });
}

PackageInspection InspectionOfSound(std::string_view code) {
  const std::vector<PackageRecipe> recipes = SoundPackages();
  const auto recipe = std::find_if(recipes.begin(), recipes.end(),
                                   [code](const auto& sound) { return sound.code == code; });
  return InspectPackage(recipe->package);
}

// A sound package whose packs got another verdict.
PackageInspection Refused(std::string_view code, const LoadVerdict& verdict) {
  PackageInspection inspection = InspectionOfSound(code);
  inspection.isValid = false;
  inspection.load = verdict;
  inspection.totalSteps = 0;
  inspection.effort = {};
  return inspection;
}

TEST(InspectGoldenTest, TooManyStepsAreARefusal) {
  const PackageInspection inspection =
      Refused("sound-c1-a2", {.defect = LoadDefect::kTooManySteps, .pack = 1});
  EXPECT_EQ(words::OfInvalid(inspection).code, "steps-too-many");
  ExpectGoldens("steps-too-many", inspection);
}

TEST(InspectGoldenTest, ALackOfMemoryIsARefusal) {
  PackageInspection inspection = Refused(
      "sound-a1", {.defect = LoadDefect::kRefused, .pack = 0, .refusal = LoadRefusal::kUnreadable});
  inspection.updaters[0] = std::make_unique<A1Update>("", "");
  EXPECT_EQ(words::OfInvalid(inspection).code, "out-of-memory");
  ExpectGoldens("out-of-memory", inspection);
}

TEST(InspectGoldenTest, ARegionThatNoSumProtectsIsAFinding) {
  PackageInspection inspection = InspectionOfSound("sound-a1");
  inspection.headers.packs[0].data.length = 0x80000000;
  inspection.headers.packs[0].data.sum = 0;
  inspection.fileLength += 0x80000000 - 1000;
  inspection.findings.Add({.code = FindingCode::kRegionUnsummed,
                           .pack = 0,
                           .text = "image of pack 1",
                           .number = 0x80000000});
  ExpectGoldens("region-unsummed", inspection);
}

// A package of 2 GiB is too much for a test that runs every day, as is a lack of memory: their
// inspections are made by hand.
TEST(InspectGoldenTest, EveryCodeHasItsPackage) {
  const std::set<std::string_view> tooLarge = {"region-unsummed", "steps-too-many",
                                               "out-of-memory"};
  for (const std::string_view code : words::AllRefusalCodes()) {
    EXPECT_NE(Covers(RefusedPackages(), code), tooLarge.count(code) == 1) << code;
  }
  for (const FindingCode code : words::AllFindingCodes()) {
    const std::string_view name = words::CodeOf(code);
    EXPECT_NE(Covers(PackagesWithFindings(), name), tooLarge.count(name) == 1) << name;
  }
}

TEST(InspectGoldenTest, CodesAreDistinct) {
  std::set<std::string_view> codes;
  for (const FindingCode code : words::AllFindingCodes()) {
    EXPECT_TRUE(codes.insert(words::CodeOf(code)).second) << words::CodeOf(code);
    EXPECT_NE(words::MendOf(code), "");
  }
  EXPECT_EQ(codes.size(), static_cast<size_t>(FindingCode::kValueTruncated) + 1);
}

}  // namespace
}  // namespace hollin
