// SPDX-License-Identifier: MIT
// How a message is cut into reports: 0x51, total, offset, up to 55 bytes of it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mman.h>

#include <cstddef>
#include <utility>
#include <vector>

#include "device/hid_device.h"
#include "tests/support/hex_bytes.h"
#include "tests/support/link_test.h"

namespace hollin {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class HidDeviceSendTest : public LinkTest {
 protected:
  void SetUp() override { OpenLink(); }
};

TEST_F(HidDeviceSendTest, AFourByteMessageIsOneReportWithTheTotalBeforeTheOffset) {
  ASSERT_TRUE(HidDevice::SendMessage(Hex("01 0A 4D 02")));
  EXPECT_THAT(hidapi.writes,
              ElementsAre(Hex("51  04 00 00 00  00 00 00 00  01 0A 4D 02") + Filled(51, 0)));
}

TEST_F(HidDeviceSendTest, FiftyFiveBytesTakeOneReport) {
  const Bytes message = Counting(55, 1);
  ASSERT_TRUE(HidDevice::SendMessage(message));
  EXPECT_THAT(hidapi.writes, ElementsAre(Hex("51  37 00 00 00  00 00 00 00") + message));
}

TEST_F(HidDeviceSendTest, FiftySixBytesTakeTwoReports) {
  const Bytes message = Counting(56, 1);
  ASSERT_TRUE(HidDevice::SendMessage(message));
  ASSERT_EQ(hidapi.writes.size(), 2U);
  EXPECT_EQ(hidapi.writes[0], Hex("51  38 00 00 00  00 00 00 00") + Counting(55, 1));
  // One byte of payload, and behind it the first report's payload from its second byte on.
  EXPECT_EQ(hidapi.writes[1], Hex("51  38 00 00 00  37 00 00 00  38") + Counting(54, 2));
}

TEST_F(HidDeviceSendTest, AMessageTakesAsManyReportsAsItHasFiftyFives) {
  const std::vector<std::pair<size_t, size_t>> cases = {{1, 1},   {54, 1},  {55, 1},  {56, 2},
                                                        {64, 2},  {109, 2}, {110, 2}, {111, 3},
                                                        {164, 3}, {165, 3}, {166, 4}};
  for (const auto& [length, reports] : cases) {
    SCOPED_TRACE(length);
    hidapi.writes.clear();
    ASSERT_TRUE(HidDevice::SendMessage(Counting(length)));
    EXPECT_EQ(hidapi.writes.size(), reports);
    EXPECT_THAT(hidapi.SentMessages(), ElementsAre(Counting(length)));
  }
}

TEST_F(HidDeviceSendTest, OffsetsGoUpInFiftyFives) {
  ASSERT_TRUE(HidDevice::SendMessage(Counting(300)));
  const std::vector<Bytes> headers = {
      Hex("51 2C 01 00 00 00 00 00 00"), Hex("51 2C 01 00 00 37 00 00 00"),
      Hex("51 2C 01 00 00 6E 00 00 00"), Hex("51 2C 01 00 00 A5 00 00 00"),
      Hex("51 2C 01 00 00 DC 00 00 00"), Hex("51 2C 01 00 00 13 01 00 00")};
  ASSERT_EQ(hidapi.writes.size(), headers.size());
  for (size_t i = 0; i < headers.size(); i++) {
    EXPECT_EQ(Bytes(hidapi.writes[i].begin(), hidapi.writes[i].begin() + 9), headers[i]);
  }
}

TEST_F(HidDeviceSendTest, TotalAndOffsetAreFourBytesWide) {
  ASSERT_TRUE(HidDevice::SendMessage(Filled(0x010203, 7)));
  // 66051 bytes: 1200 whole reports, then 51 bytes at offset 66000 (0x0101D0).
  ASSERT_EQ(hidapi.writes.size(), 1201U);
  const Bytes& last = hidapi.writes.back();
  EXPECT_EQ(Bytes(last.begin(), last.begin() + 9), Hex("51  03 02 01 00  D0 01 01 00"));
}

// Deliberate oddity: the end of a short report is whatever the buffer held before.
TEST_F(HidDeviceSendTest, StaleBytesOfTheMessageBeforeGoOutWithAShortOne) {
  ASSERT_TRUE(HidDevice::SendMessage(Filled(55, 0xAA)));
  ASSERT_TRUE(HidDevice::SendMessage(Hex("09 00 00 00")));
  EXPECT_EQ(hidapi.writes[1], Hex("51  04 00 00 00  00 00 00 00  09 00 00 00") + Filled(51, 0xAA));
}

TEST_F(HidDeviceSendTest, StaleBytesOfTheReplyBeforeGoOutWithAShortMessage) {
  hidapi.ReplyReport(Hex("77  00 00 00 00  01 00 00 00  F1") + Filled(54, 0xBB));
  Bytes reply(1);
  ASSERT_TRUE(HidDevice::ReceiveMessage(reply));
  ASSERT_TRUE(HidDevice::SendMessage(Hex("09 00")));
  EXPECT_THAT(hidapi.writes,
              ElementsAre(Hex("51  02 00 00 00  00 00 00 00  09 00") + Filled(53, 0xBB)));
}

TEST_F(HidDeviceSendTest, AnEmptyMessageFailsWithoutTouchingTheDevice) {
  EXPECT_FALSE(HidDevice::SendMessage({}));
  EXPECT_THAT(hidapi.calls, IsEmpty());
}

TEST_F(HidDeviceSendTest, AFailedWriteEndsTheMessageAtOnce) {
  for (const size_t failing : {size_t{1}, size_t{2}, size_t{3}}) {
    SCOPED_TRACE(failing);
    hidapi.writes.clear();
    hidapi.failingWrite = failing;
    EXPECT_FALSE(HidDevice::SendMessage(Counting(165)));
    EXPECT_EQ(hidapi.writes.size(), failing);
  }
}

TEST_F(HidDeviceSendTest, AFailedWriteLeavesTheLinkOpen) {
  hidapi.failingWrite = 1;
  EXPECT_FALSE(HidDevice::SendMessage(Hex("01")));
  EXPECT_TRUE(HidDevice::IsOpen());
  EXPECT_THAT(hidapi.calls, ElementsAre("hid_write"));
}

// Only a negative result is a failure.
TEST_F(HidDeviceSendTest, AWriteThatReportsAnotherCountSucceeds) {
  for (const int result : {0, 1, 63, 64, 65}) {
    hidapi.writeResult = result;
    EXPECT_TRUE(HidDevice::SendMessage(Counting(56))) << result;
  }
  hidapi.writeResult = -1;
  EXPECT_FALSE(HidDevice::SendMessage(Counting(56)));
}

TEST_F(HidDeviceSendTest, NothingIsReadOrFlushedBeforeSending) {
  hidapi.ReplyReport(KeyboardReport(0, 1, Hex("F1")));
  ASSERT_TRUE(HidDevice::SendMessage(Hex("01")));
  EXPECT_THAT(hidapi.calls, ElementsAre("hid_write"));
  EXPECT_EQ(hidapi.replies.size(), 1U);
}

// A length is a number of 32 bits; what does not fit is not cut but refused.
TEST_F(HidDeviceSendTest, AMessageOfTwoToTheThirtySecondIsRefused) {
  const size_t size = size_t{1} << 32;
  void* const memory =
      mmap(nullptr, size, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  ASSERT_NE(memory, MAP_FAILED);
  EXPECT_FALSE(HidDevice::SendMessage({static_cast<const uint8_t*>(memory), size}));
  EXPECT_THAT(hidapi.calls, IsEmpty());
  munmap(memory, size);
}

}  // namespace
}  // namespace hollin
