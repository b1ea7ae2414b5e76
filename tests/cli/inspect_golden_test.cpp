// SPDX-License-Identifier: MIT
// What inspect says of one package for each reason to refuse one and for each finding, letter for
// letter.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
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

void ExpectGoldens(const PackageRecipe& recipe) {
  SCOPED_TRACE(recipe.code);
  const PackageInspection inspection = InspectPackage(recipe.package);
  ExpectGolden(recipe.code + ".txt", TextOf(inspection));
  ExpectGolden(recipe.code + ".json", JsonOf(inspection));
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
    EXPECT_THAT(recipe.code, ::testing::StartsWith(std::string(words::OfInvalid(inspection).code)));
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
  return std::any_of(recipes.begin(), recipes.end(), [code](const PackageRecipe& recipe) {
    return recipe.code.substr(0, code.size()) == code;
  });
}

// A package of 2 GiB is too much for a test that runs every day, as is a lack of memory.
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
