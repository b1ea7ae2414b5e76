// SPDX-License-Identifier: MIT
#include "updaters/address_set.h"

#include <gtest/gtest.h>

#include <vector>

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

TEST(AddressSetTest, ThousandsOfAddressesAndDuplicatesAreSortedOut) {
  std::vector<uint32_t> list;
  for (uint32_t address = 20000; address > 0; address -= 2) {
    list.push_back(address);
    list.push_back(7);
  }
  const AddressSet set(list);
  EXPECT_EQ(set.Size(), 10001U);
  for (const uint32_t address : {2U, 7U, 8192U, 12000U, 20000U}) {
    EXPECT_TRUE(set.Contains(address)) << address;
  }
  for (const uint32_t address : {0U, 5U, 8193U, 20001U}) {
    EXPECT_FALSE(set.Contains(address)) << address;
  }
}

TEST(AddressSetTest, ManyAddressesInNoOrderAreSorted) {
  constexpr uint32_t kCount = 20011;   // a prime, so that the products are all different
  constexpr uint32_t kApart = 200003;  // reaches into the highest byte
  std::vector<uint32_t> list;
  for (uint32_t i = 0; i < kCount; i++) list.push_back(i * 7919 % kCount * kApart);
  const AddressSet set(list);
  EXPECT_EQ(set.Size(), kCount);
  for (uint32_t i = 0; i < kCount; i++) {
    ASSERT_TRUE(set.Contains(i * kApart)) << i;
    ASSERT_FALSE(set.Contains(i * kApart + 1)) << i;
  }
}

TEST(AddressSetTest, ManyAddressesThatDifferInOneByteAreSorted) {
  for (const int shift : {0, 8, 16, 24}) {
    std::vector<uint32_t> list;
    for (uint32_t i = 0; i < 256; i++) list.push_back((i * 77 % 256) << shift);
    const AddressSet set(list);
    EXPECT_EQ(set.Size(), 256U);
    for (uint32_t i = 0; i < 256; i++) EXPECT_TRUE(set.Contains(i << shift)) << i << " " << shift;
  }
}

// The set remembers where it looked last: the order of the questions must not show.
TEST(AddressSetTest, QuestionsMayComeInAnyOrder) {
  const AddressSet set({10, 20, 30, 40});
  struct Question {
    uint32_t address;
    bool isIn;
  };
  const std::vector<Question> questions{{5, false},  {10, true},  {10, true},  {15, false},
                                        {20, true},  {21, false}, {40, true},  {41, false},
                                        {99, false}, {40, true},  {10, true},  {0, false},
                                        {30, true},  {29, false}, {31, false}, {20, true},
                                        {99, false}, {5, false},  {40, true},  {0xFFFFFFFF, false}};
  for (const Question& question : questions) {
    EXPECT_EQ(set.Contains(question.address), question.isIn) << question.address;
  }
}

TEST(AddressSetTest, TheSmallestAndTheLargestAddressCanBeIn) {
  const AddressSet set({0xFFFFFFFF, 0});
  EXPECT_TRUE(set.Contains(0));
  EXPECT_FALSE(set.Contains(1));
  EXPECT_FALSE(set.Contains(0xFFFFFFFE));
  EXPECT_TRUE(set.Contains(0xFFFFFFFF));
  EXPECT_TRUE(set.Contains(0));
}

}  // namespace
}  // namespace hollin
