// SPDX-License-Identifier: MIT
// The numbers of flash descriptions.
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "device/ax_update.h"

namespace hollin {
namespace {

constexpr uint32_t kBefore = 0xBEF0BEF0;

// Where `isNumber` is false, `value` is what the parser leaves behind.
struct Case {
  std::string_view text;
  bool isNumber;
  uint32_t value;
};

using Parser = bool (*)(std::string_view, uint32_t&);

void Check(Parser parse, const std::vector<Case>& cases) {
  for (const Case& c : cases) {
    SCOPED_TRACE("\"" + std::string(c.text) + "\"");
    uint32_t value = kBefore;
    EXPECT_EQ(parse(c.text, value), c.isNumber);
    EXPECT_EQ(value, c.value);
  }
}

TEST(AXUpdateNumberTest, EmptyTextIsNoNumberAndLeavesTheValueUntouched) {
  Check(AXUpdate::ParseNumber, {{"", false, kBefore}});
  Check(AXUpdate::ParseHex, {{"", false, kBefore}});
  Check(AXUpdate::ParseDecimal, {{"", false, kBefore}});
}

TEST(AXUpdateNumberTest, OneCharacterMustBeADigit) {
  Check(AXUpdate::ParseNumber, {{"0", true, 0},
                                {"7", true, 7},
                                {"9", true, 9},
                                {"/", false, kBefore},
                                {":", false, kBefore},
                                {"x", false, kBefore},
                                {"A", false, kBefore},
                                {"K", false, kBefore},
                                {"H", false, kBefore},
                                {"-", false, kBefore},
                                {" ", false, kBefore},
                                {"\u00E9", false, kBefore},        // two bytes, one character
                                {"\u0663", false, kBefore},        // a digit, but not of ASCII
                                {"\U0001F3B9", false, kBefore}});  // four bytes, one character
}

TEST(AXUpdateNumberTest, ATrimmedTextIsReadTheSame) {
  Check(AXUpdate::ParseTrimmed, {{"", false, kBefore},
                                 {"7", true, 7},
                                 {":", false, kBefore},
                                 {"\U0001F3B9", false, kBefore},  // four bytes, one character
                                 {"12", true, 12},
                                 {"1K", true, 1024},
                                 {"0x1F", true, 31},
                                 {"1FH", true, 31},
                                 {"0x", false, kBefore},
                                 {"\u00E91", true, (0xE9 - 48) * 10 + 1}});
}

TEST(AXUpdateNumberTest, BlanksAroundANumberAreTrimmed) {
  Check(AXUpdate::ParseNumber, {{" 12 ", true, 12},
                                {"\t12\r\n", true, 12},
                                {"\u00A0\u300012\u2028", true, 12},
                                {" 0x1F ", true, 31},
                                {" 1FH\n", true, 31},
                                {" 1K ", true, 1024}});
}

TEST(AXUpdateNumberTest, ATextThatTrimsToLessThanTwoCharactersIsNoNumber) {
  Check(AXUpdate::ParseNumber, {{"  ", false, kBefore},
                                {"\r\n", false, kBefore},
                                {" 7", false, kBefore},
                                {"7 ", false, kBefore},
                                {" \u00E9", false, kBefore},
                                {" \U0001F3B9 ", false, kBefore},
                                {" 77", true, 77}});
}

TEST(AXUpdateNumberTest, APrefixOrASuffixMakesANumberHexadecimal) {
  Check(AXUpdate::ParseNumber, {{"0x1F", true, 31},
                                {"1FH", true, 31},
                                {"0X1fh", true, 31},
                                {"0x1FH", true, 31},
                                {"1fh", true, 31},
                                {"0x10000", true, 65536},
                                {"10000H", true, 65536},
                                {"0h", true, 0},
                                {"0x0", true, 0},
                                {"0xAbCdEf", true, 0xABCDEF},
                                {"00x1", true, 72 * 10 + 1}});  // no prefix: decimal
}

TEST(AXUpdateNumberTest, NothingLeftForTheHexadecimalHalfIsNoNumber) {
  Check(AXUpdate::ParseNumber,
        {{"0x", false, kBefore}, {"0X", false, kBefore}, {"0xH", false, kBefore}});
}

TEST(AXUpdateNumberTest, ANonDigitInHexadecimalLeavesThePartialResultTimesSixteen) {
  Check(AXUpdate::ParseNumber, {{"0x1G", false, 0x10},
                                {"0xG", false, 0},
                                {"xH", false, 0},
                                {"HH", false, 0},
                                {"0x12 34", false, 0x120},
                                {"0x-1", false, 0},
                                {"1KH", false, 0x10},
                                {"0x1K", false, 0x10},
                                {"0x0x1", false, 0}});
}

TEST(AXUpdateNumberTest, HexadecimalDigits) {
  Check(AXUpdate::ParseHex, {{"0", true, 0},
                             {"9", true, 9},
                             {"a", true, 10},
                             {"f", true, 15},
                             {"A", true, 10},
                             {"F", true, 15},
                             {"/", false, 0},
                             {":", false, 0},
                             {"@", false, 0},
                             {"G", false, 0},
                             {"`", false, 0},
                             {"g", false, 0},
                             {"12G4", false, 0x120},
                             {" 1", false, 0},
                             {"1\u00E9", false, 0x10},
                             {"1\U0001F3B9", false, 0x10},
                             {"89abcdEF", true, 0x89ABCDEF}});
}

TEST(AXUpdateNumberTest, HexadecimalWrapsAt32Bits) {
  Check(AXUpdate::ParseNumber, {{"0xFFFFFFFF", true, 0xFFFFFFFF},
                                {"0x100000000", true, 0},
                                {"0x123456789", true, 0x23456789},
                                {"0xFFFFFFFFG", false, 0xFFFFFFF0}});
}

TEST(AXUpdateNumberTest, DecimalWrapsAt32Bits) {
  Check(AXUpdate::ParseNumber, {{"4294967295", true, 0xFFFFFFFF},
                                {"4294967296", true, 0},
                                {"4294967297", true, 1},
                                {"4194303K", true, 0xFFFFFC00},
                                {"4194304K", true, 0},
                                {"4194305K", true, 1024}});
}

TEST(AXUpdateNumberTest, KMultipliesBy1024) {
  Check(AXUpdate::ParseNumber,
        {{"64K", true, 65536}, {"64k", true, 65536}, {"0K", true, 0}, {"1K", true, 1024}});
}

TEST(AXUpdateNumberTest, MMultipliesBy1024LikeK) {
  Check(AXUpdate::ParseNumber,
        {{"1M", true, 1024}, {"2M", true, 2048}, {"2m", true, 2048}, {"0M", true, 0}});
}

// With a K or M anywhere the last character is dropped, whatever it is, and all others are digits.
TEST(AXUpdateNumberTest, KOrMCountsAnywhereAndTheLastCharacterIsDropped) {
  constexpr uint32_t kDigitK = 'K' - '0';  // 27
  constexpr uint32_t kDigitm = 'm' - '0';  // 61
  Check(AXUpdate::ParseNumber, {{"K1", true, kDigitK * 1024},
                                {"K12", true, (kDigitK * 10 + 1) * 1024},
                                {"1K2", true, (10 + kDigitK) * 1024},
                                {"m1", true, kDigitm * 1024},
                                {"1KB", true, (10 + kDigitK) * 1024},
                                {"KM", true, kDigitK * 1024},
                                {"KK", true, kDigitK * 1024},
                                {"12MK", true, (120 + ('M' - '0')) * 1024},
                                {"1K ", true, 1024}});
}

TEST(AXUpdateNumberTest, KOrMAloneIsZeroForTheDecimalHalf) {
  Check(AXUpdate::ParseDecimal, {{"K", true, 0}, {"k", true, 0}, {"M", true, 0}, {"m", true, 0}});
}

// Deliberate oddity: no check for digits, their distance from "0" counts.
TEST(AXUpdateNumberTest, DecimalTakesAnyCharacterForADigit) {
  Check(AXUpdate::ParseNumber, {{"1x", true, 10 + 72},
                                {"ab", true, (97 - 48) * 10 + (98 - 48)},
                                {"1 2", true, static_cast<uint32_t>((10 + (32 - 48)) * 10 + 2)},
                                {"-1", true, static_cast<uint32_t>((45 - 48) * 10 + 1)},
                                {"+5", true, static_cast<uint32_t>((43 - 48) * 10 + 5)},
                                {"12;x", true, ((10 + 2) * 10 + (59 - 48)) * 10 + 72},
                                {"H1", true, 24 * 10 + 1}});
}

TEST(AXUpdateNumberTest, ACharacterIsACodePoint) {
  Check(AXUpdate::ParseNumber, {{"1\u00E9", true, 10 + (0xE9 - 48)},
                                {"\u20AC2", true, (0x20AC - 48) * 10 + 2},
                                {"\U0001F3B9\U0001F3B9", true, (0x1F3B9 - 48) * 11},
                                {"e\u0301", true, ('e' - 48) * 10 + (0x301 - 48)},
                                {"1K\u00E9", true, (10 + 27) * 1024}});  // drops one character
}

// Letters are compared without regard to case in ASCII only.
TEST(AXUpdateNumberTest, OtherLettersAreNotFoldedOntoASuffix) {
  Check(AXUpdate::ParseNumber, {{"5\u212A", true, 50 + (0x212A - 48)},    // the Kelvin sign
                                {"5\u017F", true, 50 + (0x17F - 48)},     // the long s
                                {"5\uFF28", true, 50 + (0xFF28 - 48)}});  // the full-width H
}

TEST(AXUpdateNumberTest, InvalidTextIsNoNumber) {
  Check(AXUpdate::ParseNumber,
        {{"\xFF", false, kBefore}, {"12\xC3", false, kBefore}, {"\xED\xA0\x80 1", false, kBefore}});
}

TEST(AXUpdateNumberTest, LongNumbersWrapAndEnd) {
  const std::string ones(100000, '1');
  uint32_t value = 0;
  EXPECT_TRUE(AXUpdate::ParseNumber("0x" + ones, value));
  EXPECT_EQ(value, 0x11111111U);
}

}  // namespace
}  // namespace hollin
