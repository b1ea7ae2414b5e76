// SPDX-License-Identifier: MIT
// Whatever the bytes, inspecting a package and examining it give the same verdict and plan.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <random>

#include "package/package_inspection.h"
#include "tests/package/examine_test.h"
#include "tests/package/literal_packages.h"
#include "tests/package/package_recipes.h"

namespace hollin {
namespace {

// In four cases, so that none takes long where everything is slow: 100,000 in all.
constexpr size_t kMutations = 25000;

class InspectionAgreementTest : public ExamineTest, public ::testing::WithParamInterface<unsigned> {
 protected:
  // Hands the bytes over as OpenDatFile would, without a file for each of them.
  void ExpectAgreement(const Bytes& package) {
    datFile.datBuffer = std::make_unique<uint8_t[]>(package.size());
    std::copy(package.begin(), package.end(), datFile.datBuffer.get());
    datFile.fileLength = static_cast<int64_t>(package.size());
    const bool isValid = datFile.ExamineDatFile();
    const PackageInspection inspection = InspectPackage(package);
    ASSERT_EQ(inspection.isValid, isValid);
    ASSERT_EQ(inspection.totalSteps, static_cast<uint32_t>(datFile.TotalStepCount()));
    if (!isValid) return;
    valid++;
    ASSERT_EQ(inspection.productModel, datFile.ProductModelText());
    ASSERT_EQ(inspection.firmwareVersion, datFile.FirmwareVersionText());
  }

  size_t valid = 0;
};

// Changes packages at random, but the same every time.
class Mutator {
 public:
  explicit Mutator(unsigned seed) : random(seed) {
    for (auto recipes : {SoundPackages(), RefusedPackages(), PackagesWithFindings()}) {
      for (PackageRecipe& recipe : recipes) {
        if (recipe.package.size() <= kLargest) seeds.push_back(std::move(recipe.package));
      }
    }
    seeds.push_back(OnePackPackage());
    seeds.push_back(TwoPackPackage());
  }

  Bytes Next() {
    Bytes package = seeds[Below(seeds.size())];
    for (size_t count = 1 + Below(3); count > 0; count--) Change(package);
    // What is changed behind the sums would never be reached.
    if (Below(4) != 0) Mend(package);
    return package;
  }

 private:
  static constexpr size_t kLargest = 12000;

  size_t Below(size_t limit) { return random() % limit; }

  void Change(Bytes& package) {
    if (package.empty()) return;
    switch (Below(8)) {
      case 0:
        package[Below(package.size())] = static_cast<uint8_t>(random());
        break;
      case 1:
        package.resize(Below(package.size()) + 1);
        break;
      case 2:
        PatchHeader(package);
        break;
      default:
        ChangeText(package);
    }
  }

  // One of the numbers in the pack headers.
  void PatchHeader(Bytes& package) {
    constexpr std::array<size_t, 7> kFields = {44, 64, 68, 72, 112, 116, 120};
    const size_t offset = 128 * (1 + Below(2)) + kFields[Below(kFields.size())];
    if (offset + 4 > package.size()) return;
    const std::array<uint32_t, 6> values = {
        0,          1,          static_cast<uint32_t>(package.size()),
        0x80000000, 0xFFFFFFFF, static_cast<uint32_t>(random() % 4096)};
    PatchU32(package, offset, values[Below(values.size())]);
  }

  // A few bytes of a description, mostly by what means something there.
  void ChangeText(Bytes& package) {
    constexpr std::array<std::string_view, 20> kWords = {"\n",
                                                         "[",
                                                         "]",
                                                         "=",
                                                         ";",
                                                         "--",
                                                         "//",
                                                         "0x",
                                                         "H",
                                                         "K",
                                                         "M",
                                                         "0",
                                                         "9",
                                                         "\xFF",
                                                         "0\n",
                                                         " ",
                                                         "addr",
                                                         "data",
                                                         "[Reserved Sector]\n",
                                                         "\xEF\xBB\xBF"};
    const size_t block = 128 * (1 + Below(2));
    if (block + 128 > package.size()) return;
    const size_t address = ReadU32(package, block + 64);
    const size_t length = ReadU32(package, block + 68);
    if (length == 0 || address + length > package.size()) return;
    const std::string_view word = kWords[Below(kWords.size())];
    const size_t at = address + Below(length);
    for (size_t i = 0; i < word.size() && at + i < address + length; i++) {
      package[at + i] = static_cast<uint8_t>(word[i]);
    }
  }

  static void Mend(Bytes& package) {
    for (size_t block = 128; block <= 256 && block + 128 <= package.size(); block += 128) {
      if (block == 256 && package[123] != 2) break;
      MendRegion(package, block + 64);
      MendRegion(package, block + 112);
      RepairHeaderSum(package, block / 128);
    }
    if (package.size() >= 128) RepairHeaderSum(package, 0);
  }

  static void MendRegion(Bytes& package, size_t field) {
    const uint64_t address = ReadU32(package, field);
    const uint64_t length = ReadU32(package, field + 4);
    if (address + length > package.size()) return;
    uint32_t sum = 0;
    for (uint64_t i = address; i < address + length; i++) sum += package[i];
    PatchU32(package, field + 8, sum);
  }

  std::minstd_rand random;
  std::vector<Bytes> seeds;
};

class RecipeAgreementTest : public InspectionAgreementTest {};

TEST_P(RecipeAgreementTest, OnEveryRecipe) {
  for (const auto& recipes : {SoundPackages(), RefusedPackages(), PackagesWithFindings()}) {
    for (const PackageRecipe& recipe : recipes) {
      SCOPED_TRACE(recipe.code);
      ExpectAgreement(recipe.package);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Once, RecipeAgreementTest, ::testing::Values(0U));

TEST_P(InspectionAgreementTest, OnMutatedPackages) {
  Mutator mutator(GetParam());
  for (size_t i = 0; i < kMutations; i++) {
    ExpectAgreement(mutator.Next());
    ASSERT_FALSE(HasFatalFailure()) << "mutation " << i;
  }
  // Both verdicts were reached often.
  EXPECT_GT(valid, kMutations / 10);
  EXPECT_LT(valid, kMutations / 10 * 9);
}

INSTANTIATE_TEST_SUITE_P(Seeds, InspectionAgreementTest, ::testing::Values(1U, 2U, 3U, 4U));

}  // namespace
}  // namespace hollin
