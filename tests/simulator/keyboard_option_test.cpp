// SPDX-License-Identifier: MIT
#include "simulator/keyboard_option.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "simulator/number.h"

namespace hollin::simulator {
namespace {

TEST(SimulatorNumberTest, NumbersAreDecimalHexadecimalOrScaled) {
  const struct {
    const char* text;
    uint64_t value;
  } table[] = {{"0", 0}, {"12", 12}, {"0x1F", 31}, {"64K", 65536}, {"2M", 2097152}};
  for (const auto& row : table) {
    uint64_t value = 99;
    EXPECT_TRUE(ParseNumber(row.text, UINT32_MAX, value)) << row.text;
    EXPECT_EQ(value, row.value) << row.text;
  }
}

TEST(SimulatorNumberTest, AnythingElseIsNoNumber) {
  for (const char* text : {"", "K", "0x", "-1", "+1", " 1", "1 ", "1k", "0x1K", "12a", "1.5"}) {
    uint64_t value = 99;
    EXPECT_FALSE(ParseNumber(text, UINT32_MAX, value)) << text;
    EXPECT_EQ(value, 99U);
  }
}

TEST(SimulatorNumberTest, TheMostIsStillANumber) {
  uint64_t value = 0;
  EXPECT_TRUE(ParseNumber("254", 255, value));
  EXPECT_TRUE(ParseNumber("255", 255, value));
  EXPECT_FALSE(ParseNumber("256", 255, value));
  EXPECT_TRUE(ParseNumber("3M", UINT32_MAX, value));
  EXPECT_FALSE(ParseNumber("4096M", UINT32_MAX, value));
  EXPECT_FALSE(ParseNumber("99999999999999999999", UINT64_MAX, value));
}

class KeyboardOptionTest : public testing::Test {
 protected:
  void Set(const std::string& text) { EXPECT_TRUE(SetOption(text, options)) << text; }

  KeyboardOptions options;
};

TEST_F(KeyboardOptionTest, A1HasModeSizeBaseAndFile) {
  Set("a1.mode=5");
  Set("a1.size = 2M");
  Set("a1.base=0x10000");
  Set("a1.file=/tmp/with = sign");
  EXPECT_EQ(options.a1.mode, 5);
  EXPECT_EQ(options.a1.size, 2u * 1024 * 1024);
  EXPECT_EQ(options.a1.base, 0x10000U);
  EXPECT_EQ(options.a1.file, "/tmp/with = sign");
}

TEST_F(KeyboardOptionTest, A2SectorsAreAddressesAndRuns) {
  Set("a2.sectors=0x1400, 0x2000:0x1000:3, 0x8000");
  EXPECT_EQ(options.a2.sectors, (std::vector<uint32_t>{0x1400, 0x2000, 0x3000, 0x4000, 0x8000}));
}

TEST_F(KeyboardOptionTest, A2CommandsAreCyclesAndParameters) {
  Set("a2.mode=7");
  Set("a2.erase=5555:F0F0, 0:30");
  Set("a2.program=AAA:A0");
  Set("a2.write-buffer=1:2");
  Set("a2.write-buffer-parameters=1,2,3,4,0xFF");
  Set("a2.program-buffer=3:4");
  Set("a2.program-buffer-parameters=5,6");
  Set("a2.erase-time=1500");
  Set("a2.erased=0x1234");
  Set("a2.file=a2");
  EXPECT_EQ(options.a2.mode, 7);
  EXPECT_EQ(options.a2.erase, (std::vector<BusCycle>{{0x5555, 0xF0F0}, {0, 0x30}}));
  EXPECT_EQ(options.a2.program, (std::vector<BusCycle>{{0xAAA, 0xA0}}));
  EXPECT_EQ(options.a2.writeBuffer, (BufferCommand{{1, 2, 3, 4, 0xFF}, {{1, 2}}}));
  EXPECT_EQ(options.a2.programBuffer, (BufferCommand{{5, 6}, {{3, 4}}}));
  EXPECT_EQ(options.a2.eraseTime, std::chrono::milliseconds(1500));
  EXPECT_EQ(options.a2.erasedWord, 0x1234);
  EXPECT_EQ(options.a2.file, "a2");
}

TEST_F(KeyboardOptionTest, C1HasChipsUnitsLinesAndTimes) {
  Set("c1.mode=8");
  Set("c1.chip=0:0:0");
  Set("c1.chip=1:1:64K");
  Set("c1.erase-units=256,32K");
  Set("c1.lines=2");
  Set("c1.buffer=4K");
  Set("c1.erase-time=0");
  Set("c1.file=c1");
  EXPECT_EQ(options.c1.mode, 8);
  EXPECT_EQ(options.c1.capacities[0][0], 0U);
  EXPECT_EQ(options.c1.capacities[1][1], 65536U);
  EXPECT_EQ(options.c1.eraseUnits, (std::vector<uint32_t>{256, 32768}));
  EXPECT_EQ(options.c1.lines, 2U);
  EXPECT_EQ(options.c1.bufferSize, 4096U);
  EXPECT_EQ(options.c1.eraseTime.count(), 0);
  EXPECT_EQ(options.c1.file, "c1");
}

TEST_F(KeyboardOptionTest, EveryOptionIsDescribed) {
  EXPECT_EQ(OptionDescriptions().size(), 22U);
  for (const OptionDescription& option : OptionDescriptions()) {
    EXPECT_TRUE(std::string(option.name).find('.') == 2) << option.name;
  }
}

TEST_F(KeyboardOptionTest, BadOptionsAreRefused) {
  for (const char* text : {"",
                           "=",
                           "a1",
                           "a1.size",
                           "a1.size=",
                           "a1.size=0",
                           "a1.mode=256",
                           "A1.size=1",
                           "b.size=1",
                           "a2.sectors=",
                           "a2.sectors=0",
                           "a2.sectors=0,0",
                           "a2.sectors=2,1",
                           "a2.sectors=0:1",
                           "a2.sectors=0:1:0",
                           "a2.sectors=0:0x80000000:3",
                           "a2.sectors=0:1:2000000",
                           "a2.erase=555",
                           "a2.erase=555:AA:1",
                           "a2.erase=555:10000",
                           "a2.program=10000:AA",
                           "a2.write-buffer-parameters=1,2,3,4",
                           "a2.program-buffer-parameters=1,256",
                           "a2.erased=0x10000",
                           "c1.chip=0:0",
                           "c1.chip=2:0:1",
                           "c1.chip=0:2:1",
                           "c1.erase-units=0",
                           "c1.erase-units=16M",
                           "c1.lines=0",
                           "c1.lines=3",
                           "c1.lines=5",
                           "c1.buffer=0",
                           "c1.erase-time=x"}) {
    EXPECT_FALSE(SetOption(text, options)) << text;
  }
  EXPECT_EQ(options.a2.sectors, A2Profile().sectors);
  EXPECT_EQ(options.a2.erase, A2Profile().erase);
}

TEST_F(KeyboardOptionTest, ATextHoldsOneOptionALineAndComments) {
  std::string badLine;
  EXPECT_TRUE(SetOptions("# a comment\n\n  a1.size=64K\r\na1.base=1", options, badLine));
  EXPECT_EQ(options.a1.size, 65536U);
  EXPECT_EQ(options.a1.base, 1U);
}

TEST_F(KeyboardOptionTest, TheFirstBadLineIsTold) {
  std::string badLine;
  EXPECT_FALSE(SetOptions("a1.size=64K\nsize=1\na1.base=1\n", options, badLine));
  EXPECT_EQ(badLine, "size=1");
  EXPECT_EQ(options.a1.base, 0U);
}

}  // namespace
}  // namespace hollin::simulator
