// SPDX-License-Identifier: MIT
// A sample of the fault matrix; script/campaign runs all of it.
#include "tests/campaign/fault_matrix.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <random>

#include "tests/campaign/keyboard_link.h"

namespace hollin::campaign {
namespace {

constexpr size_t kSampleSize = 120;

// The same sample every day, or the one that is asked for.
unsigned Seed() {
  const char* given = std::getenv("HOLLIN_CAMPAIGN_SEED");
  return given == nullptr ? 30U : static_cast<unsigned>(std::strtoul(given, nullptr, 10));
}

// Notes which of a keyboard's reports, from 1, continue a reply.
class NotingLink : public KeyboardLink {
 public:
  using KeyboardLink::KeyboardLink;

  int Read(std::span<uint8_t> report) override {
    const int size = KeyboardLink::Read(report);
    reads++;
    if (size >= 0 && ReadU32(report, 1) != 0) continuing.push_back(reads);
    return size;
  }

  std::vector<uint64_t> continuing;

 private:
  uint64_t reads = 0;
};

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

TEST(LongReplyTest, NoFaultAtEitherOfItsReportsBreaksARule) {
  const ReferenceUpdate reference = ReferenceUpdates()[2];
  simulator::Keyboard keyboard(reference.keyboard);
  NotingLink link(keyboard);
  ASSERT_TRUE(ReferenceHost(link).Update(reference.packs));
  ASSERT_EQ(link.continuing.size(), 8U);  // one a sector
  CampaignUpdate update(reference);
  for (const RunFault& fault : update.Faults()) {
    const bool isSuch =
        fault.fault && fault.fault->moment == simulator::FaultMoment::kKeyboardReport &&
        fault.fault->index + 1 >= link.continuing[0] && fault.fault->index <= link.continuing[0];
    if (!isSuch) continue;
    const RunResult result = update.Run(fault);
    EXPECT_TRUE(result.hasStruck) << TextOf(fault);
    EXPECT_EQ(result.violations, std::vector<std::string>{}) << TextOf(fault);
  }
}

INSTANTIATE_TEST_SUITE_P(Updates, FaultMatrixTest, testing::Range<size_t>(0, 9));

}  // namespace
}  // namespace hollin::campaign
