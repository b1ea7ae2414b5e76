// SPDX-License-Identifier: MIT
#include "cli/update_plan.h"

#include <gtest/gtest.h>

namespace hollin {
namespace {

UpdatePlan PlanFor(const std::vector<UpdatePlan::Pack>& packs) {
  return {.productModel = "", .firmwareVersion = "", .packs = packs};
}

TEST(UpdatePlanTest, APackBeginsWithTheModeAndEndsWithVerifying) {
  const UpdatePlan plan = PlanFor({{"A1", 4}});
  EXPECT_EQ(plan.TotalSteps(), 4);
  EXPECT_EQ(plan.StepName(0), "enter update mode");
  EXPECT_EQ(plan.StepName(1), "write block 1 of 2");
  EXPECT_EQ(plan.StepName(2), "write block 2 of 2");
  EXPECT_EQ(plan.StepName(3), "verify");
  EXPECT_EQ(plan.StepName(4), "");
}

TEST(UpdatePlanTest, TheOtherKindsAreWrittenBySector) {
  EXPECT_EQ(PlanFor({{"A2", 3}}).StepName(1), "write sector 1 of 1");
  EXPECT_EQ(PlanFor({{"C1", 3}}).StepName(1), "write sector 1 of 1");
}

TEST(UpdatePlanTest, WithTwoPacksEveryStepNamesItsOwn) {
  const UpdatePlan plan = PlanFor({{"A1", 3}, {"A2", 4}});
  EXPECT_EQ(plan.TotalSteps(), 7);
  EXPECT_EQ(plan.StepName(2), "verify (pack 1)");
  EXPECT_EQ(plan.StepName(3), "enter update mode (pack 2)");
  EXPECT_EQ(plan.StepName(5), "write sector 2 of 2 (pack 2)");
  EXPECT_EQ(plan.StepName(6), "verify (pack 2)");
  EXPECT_EQ(plan.StepName(7), "");
}

}  // namespace
}  // namespace hollin
