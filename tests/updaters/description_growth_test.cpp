// SPDX-License-Identifier: MIT
// Descriptions that are full of one thing, up to two million lines: a text sixteen times as long
// takes about sixteen times as long to read, as an update reads it and as an inspection does.
#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <string>

#include "base/log.h"
#include "tests/support/processor_time.h"
#include "updaters/a2_description.h"
#include "updaters/address_set.h"
#include "updaters/c1_description.h"

namespace hollin {
namespace {

constexpr size_t kShort = 131072;  // bytes
constexpr size_t kLong = 16 * kShort;

using Line = std::function<std::string(size_t index)>;

std::string TextOf(const std::string& header, const Line& line, size_t length) {
  std::string text = header;
  for (size_t index = 0; text.size() < length; index++) text += line(index);
  return text;
}

template <typename Description>
void Read(const std::string& text, const DescriptionListener& listener) {
  Description description;
  EXPECT_TRUE(description.Read(text, listener));
  const AddressSet reserved(description.reservedSectors);
  EXPECT_LE(reserved.Size(), description.reservedSectors.size());
}

template <typename Description>
void ExpectGrowthWithLength(const std::string& header, const Line& line) {
  SetLogFunction([](const std::string& /*line*/) {});
  const std::string few = TextOf(header, line, kShort);
  const std::string many = TextOf(header, line, kLong);
  size_t remarks = 0;
  const DescriptionListener inspection = [&remarks](const DescriptionNote&) { remarks++; };
  for (const DescriptionListener& listener : {DescriptionListener(LogUnknown), inspection}) {
    const double growth = LeastGrowth([&] { Read<Description>(few, listener); },
                                      [&] { Read<Description>(many, listener); });
    EXPECT_LT(growth, kMostGrowthOf16Times) << header;
  }
  EXPECT_GT(remarks, 0U);
  SetLogFunction({});
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
