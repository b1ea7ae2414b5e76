// SPDX-License-Identifier: MIT
// A sample of the fault matrix; script/campaign runs all of it.
#include "tests/campaign/fault_matrix.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <random>

namespace hollin::campaign {
namespace {

constexpr size_t kSampleSize = 120;

// The same sample every day, or the one that is asked for.
unsigned Seed() {
  const char* given = std::getenv("HOLLIN_CAMPAIGN_SEED");
  return given == nullptr ? 30U : static_cast<unsigned>(std::strtoul(given, nullptr, 10));
}

class FaultMatrixTest : public testing::TestWithParam<size_t> {};

TEST_P(FaultMatrixTest, TheRunWithoutAFaultIsTheReferences) {
  CampaignUpdate update(ReferenceUpdates()[GetParam()]);
  const RunResult result = update.Run({});
  EXPECT_TRUE(update.IsReady());
  EXPECT_TRUE(result.succeeded);
  EXPECT_EQ(result.violations, std::vector<std::string>{});
}

TEST_P(FaultMatrixTest, ASampleOfFaultsBreaksNoRule) {
  CampaignUpdate update(ReferenceUpdates()[GetParam()]);
  ASSERT_TRUE(update.IsReady());
  std::vector<RunFault> faults = update.Faults();
  std::cout << "HOLLIN_CAMPAIGN_SEED=" << Seed() << "\n";
  std::shuffle(faults.begin(), faults.end(), std::mt19937(Seed()));
  faults.resize(std::min(faults.size(), kSampleSize));
  for (const RunFault& fault : faults) {
    const RunResult result = update.Run(fault);
    EXPECT_TRUE(result.hasStruck) << TextOf(fault);
    EXPECT_EQ(result.violations, std::vector<std::string>{}) << TextOf(fault);
  }
}

INSTANTIATE_TEST_SUITE_P(Updates, FaultMatrixTest, testing::Range<size_t>(0, 9));

}  // namespace
}  // namespace hollin::campaign
