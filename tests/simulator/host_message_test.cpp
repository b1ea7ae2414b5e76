// SPDX-License-Identifier: MIT
#include "simulator/host_message.h"

#include <gtest/gtest.h>

#include <numeric>

namespace hollin::simulator {
namespace {

// A report with the low bytes of total and offset; the payload counts up from `first`.
Bytes Report(uint8_t total, uint8_t offset, uint8_t first) {
  Bytes report(64);
  std::iota(report.begin() + 9, report.end(), first);
  std::fill(report.begin(), report.begin() + 9, uint8_t{0});
  report[0] = 0x51;
  report[1] = total;
  report[5] = offset;
  return report;
}

class MessageAssemblerTest : public testing::Test {
 protected:
  MessageAssembler assembler;
  Bytes message;
};

TEST_F(MessageAssemblerTest, FiftyFiveBytesAreOneReport) {
  ASSERT_TRUE(assembler.Take(Report(55, 0, 1), message));
  EXPECT_EQ(message.size(), 55U);
  EXPECT_EQ(message.front(), 1);
  EXPECT_EQ(message.back(), 55);
}

TEST_F(MessageAssemblerTest, FiftySixBytesAreTwoReports) {
  EXPECT_FALSE(assembler.Take(Report(56, 0, 1), message));
  ASSERT_TRUE(assembler.Take(Report(56, 55, 200), message));
  EXPECT_EQ(message.size(), 56U);
  EXPECT_EQ(message.back(), 200);
}

TEST_F(MessageAssemblerTest, StaleBytesBehindTheMessageAreNotPartOfIt) {
  ASSERT_TRUE(assembler.Take(Report(1, 0, 9), message));
  EXPECT_EQ(message, Bytes{9});
}

TEST_F(MessageAssemblerTest, AReportWithAnotherFirstByteIsDropped) {
  Bytes report = Report(1, 0, 1);
  report[0] = 0x50;
  EXPECT_FALSE(assembler.Take(report, message));
  EXPECT_EQ(assembler.dropped, 1U);
}

TEST_F(MessageAssemblerTest, ReportsOfOtherSizesAreDropped) {
  for (const size_t size : {0U, 1U, 8U, 9U, 63U, 65U}) {
    Bytes report = Report(1, 0, 1);
    report.resize(size);
    EXPECT_FALSE(assembler.Take(report, message)) << size;
  }
  EXPECT_EQ(assembler.dropped, 6U);
}

TEST_F(MessageAssemblerTest, AMessageOfNoBytesIsDropped) {
  EXPECT_FALSE(assembler.Take(Report(0, 0, 1), message));
  EXPECT_EQ(assembler.dropped, 1U);
}

TEST_F(MessageAssemblerTest, AMessageBeyondTheMemoryIsDropped) {
  Bytes report = Report(1, 0, 1);
  report[3] = 0x10;  // one byte more than a MiB
  EXPECT_FALSE(assembler.Take(report, message));
  EXPECT_EQ(assembler.dropped, 1U);
  report[1] = 0;
  EXPECT_FALSE(assembler.Take(report, message));
  EXPECT_EQ(assembler.dropped, 1U);
}

TEST_F(MessageAssemblerTest, AGapDropsTheMessage) {
  EXPECT_FALSE(assembler.Take(Report(120, 0, 1), message));
  EXPECT_FALSE(assembler.Take(Report(120, 110, 1), message));
  EXPECT_FALSE(assembler.Take(Report(120, 55, 1), message));
  EXPECT_EQ(assembler.dropped, 2U);
}

TEST_F(MessageAssemblerTest, AnotherTotalDropsTheMessage) {
  EXPECT_FALSE(assembler.Take(Report(56, 0, 1), message));
  EXPECT_FALSE(assembler.Take(Report(57, 55, 1), message));
  EXPECT_EQ(assembler.dropped, 1U);
}

TEST_F(MessageAssemblerTest, OffsetZeroBeginsAfreshWhateverWentBefore) {
  EXPECT_FALSE(assembler.Take(Report(56, 0, 1), message));
  ASSERT_TRUE(assembler.Take(Report(2, 0, 7), message));
  EXPECT_EQ(message, (Bytes{7, 8}));
}

TEST(ReplyReportsTest, CarryTheOffsetBeforeTheTotal) {
  const auto reports = ReplyReports(Bytes(56, 0xAB));
  ASSERT_EQ(reports.size(), 2U);
  const Bytes header(reports[1].begin(), reports[1].begin() + 11);
  EXPECT_EQ(header, (Bytes{0x51, 55, 0, 0, 0, 56, 0, 0, 0, 0xAB, 0x00}));
  EXPECT_EQ(reports[0].size(), 64U);
  EXPECT_EQ(reports[1].size(), 64U);
}

}  // namespace
}  // namespace hollin::simulator
