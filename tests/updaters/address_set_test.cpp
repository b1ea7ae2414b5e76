// SPDX-License-Identifier: MIT
#include "updaters/address_set.h"

#include <gtest/gtest.h>

namespace hollin {
namespace {

TEST(AddressSetTest, ASetThatWasNotFilledHoldsNothing) {
  const AddressSet set;
  EXPECT_EQ(set.Size(), 0U);
  EXPECT_FALSE(set.Contains(0));
}

TEST(AddressSetTest, ItHoldsExactlyItsAddresses) {
  const AddressSet set({5, 0xFFFFFFFF, 0, 9});
  for (const uint32_t address : {0U, 5U, 9U, 0xFFFFFFFFU}) EXPECT_TRUE(set.Contains(address));
  for (const uint32_t address : {1U, 4U, 6U, 8U, 10U, 0xFFFFFFFEU}) {
    EXPECT_FALSE(set.Contains(address));
  }
}

TEST(AddressSetTest, DuplicatesCountOnce) {
  const AddressSet set({7, 3, 7, 7, 3});
  EXPECT_EQ(set.Size(), 2U);
  EXPECT_TRUE(set.Contains(3));
  EXPECT_TRUE(set.Contains(7));
}

}  // namespace
}  // namespace hollin
