// SPDX-License-Identifier: MIT
// Descriptions that are full of one thing: a text sixteen times as long takes about sixteen times
// as long to read. Looking back at all that was read before takes 256 times as long.
#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <string>

#include "tests/support/processor_time.h"
#include "updaters/a2_description.h"
#include "updaters/address_set.h"
#include "updaters/c1_description.h"

namespace hollin {
namespace {

constexpr size_t kShort = 32768;
constexpr size_t kLong = 16 * kShort;
constexpr int kMostGrowth = 100;  // what the machine does meanwhile makes no difference of six

using Line = std::function<std::string(size_t index)>;

std::string TextOf(const std::string& header, const Line& line, size_t length) {
  std::string text = header;
  for (size_t index = 0; text.size() < length; index++) text += line(index);
  return text;
}

template <typename Description>
void ExpectGrowthWithLength(const std::string& header, const Line& line) {
  const auto timeOf = [&](size_t length) {
    const std::string text = TextOf(header, line, length);
    return ProcessorTimeOf([&text] {
      size_t unknown = 0;
      Description description;
      EXPECT_TRUE(description.Read(text, [&unknown](const DescriptionNote&) { unknown++; }));
      EXPECT_GT(unknown, 0);
      const AddressSet reserved(description.reservedSectors);
      EXPECT_LE(reserved.Size(), description.reservedSectors.size());
    });
  };
  const auto shortTime = timeOf(kShort);
  EXPECT_LT(timeOf(kLong), shortTime * kMostGrowth) << header;
}

Line Always(const std::string& line) {
  return [line](size_t /*index*/) { return line; };
}

TEST(DescriptionGrowthTest, ReservedEntriesInAnyOrderCostTheirNumber) {
  const auto shuffled = [](size_t index) {
    return std::to_string(index * 2654435761U % 999999937) + "\n";
  };
  const auto ascending = [](size_t index) { return std::to_string(index * 4) + "\n"; };
  const auto descending = [](size_t index) { return std::to_string(9000000 - index) + "\n"; };
  for (const Line& line : {Line(shuffled), Line(ascending), Line(descending), Always("1\n")}) {
    ExpectGrowthWithLength<C1Description>("[reserved sector]\n", line);
    ExpectGrowthWithLength<A2Description>("[Reserved Sector]\n", line);
  }
}

TEST(DescriptionGrowthTest, UnknownLinesAndKeysCostTheirNumber) {
  ExpectGrowthWithLength<C1Description>("[unknown]\n", Always("y\n"));
  ExpectGrowthWithLength<A2Description>("[Time]\n", Always("=1\n"));
}

TEST(DescriptionGrowthTest, SettingsTextsAndCyclesCostTheirNumber) {
  ExpectGrowthWithLength<C1Description>("[line mode]\n", Always("=1\n"));
  ExpectGrowthWithLength<A2Description>("[Flash Modle]\n", Always("x\n"));
  ExpectGrowthWithLength<A2Description>("[Sector Erase Cycle]\n", Always("addr=1\n"));
}

TEST(DescriptionGrowthTest, HeadersCommentsAndNothingCostTheirNumber) {
  for (const char* line : {"[]\n", "[line mode]\n", ";\n", "\n", " ", "\xE3\x80\x80", "\xFF\n"}) {
    ExpectGrowthWithLength<C1Description>("[reserved sector]\n", Always(line));
  }
}

}  // namespace
}  // namespace hollin
