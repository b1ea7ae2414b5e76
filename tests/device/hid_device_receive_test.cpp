// SPDX-License-Identifier: MIT
// How a reply is put together: offset (1-4), total (5-8), up to 55 bytes; and when it stops.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "device/hid_device.h"
#include "tests/support/hex_bytes.h"
#include "tests/support/link_test.h"

namespace hollin {
namespace {

using ::testing::ElementsAre;

constexpr uint8_t kUntouched = 0xEE;

class HidDeviceReceiveTest : public LinkTest {
 protected:
  void SetUp() override { OpenLink(); }

  // Receives into a buffer of `capacity` bytes, kept for Buffer().
  bool Receive(size_t capacity) {
    buffer.assign(capacity, kUntouched);
    return HidDevice::ReceiveMessage(buffer);
  }

  // A case of a table begins with nothing queued.
  void StartAnew() {
    hidapi.replies.clear();
    hidapi.calls.clear();
  }

  // The first 55 bytes of a reply, for the cases about what comes second.
  void QueueFirst(uint32_t total) {
    hidapi.ReplyReport(KeyboardReport(0, total, Filled(55, 0x11)));
  }
  void QueueSecond(uint32_t offset, uint32_t total) {
    hidapi.ReplyReport(KeyboardReport(offset, total, Filled(55, 0x22)));
  }

  Bytes buffer;
};

TEST_F(HidDeviceReceiveTest, AReplyOfFourBytesInOneReportIsCopied) {
  hidapi.ReplyReport(Hex("00  00 00 00 00  04 00 00 00  09 01 02 03") + Filled(51, 0));
  EXPECT_TRUE(Receive(4));
  EXPECT_EQ(buffer, Hex("09 01 02 03"));
  EXPECT_THAT(hidapi.calls, ElementsAre("hid_read"));
}

// The keyboard answers in the opposite order: offset first, then the total.
TEST_F(HidDeviceReceiveTest, HeadersAreAsymmetric) {
  hidapi.ReplyReport(Hex("51  04 00 00 00  00 00 00 00  09 01 02 03") + Filled(51, 0));
  EXPECT_FALSE(Receive(4));
  EXPECT_EQ(buffer, Filled(4, kUntouched));
}

TEST_F(HidDeviceReceiveTest, TheFirstByteIsNotExamined) {
  for (const uint8_t first : Hex("00 51 FF")) {
    Bytes report = KeyboardReport(0, 1, Hex("F1"));
    report[0] = first;
    hidapi.ReplyReport(report);
    EXPECT_TRUE(Receive(1)) << int{first};
  }
}

TEST_F(HidDeviceReceiveTest, RepliesAreJoinedFromReportsOfFiftyFive) {
  const std::vector<std::pair<size_t, size_t>> cases = {{1, 1},   {54, 1},  {55, 1},  {56, 2},
                                                        {109, 2}, {110, 2}, {111, 3}, {300, 6}};
  for (const auto& [length, reports] : cases) {
    SCOPED_TRACE(length);
    StartAnew();
    hidapi.Reply(Counting(length));
    EXPECT_TRUE(Receive(length));
    EXPECT_EQ(buffer, Counting(length));
    EXPECT_EQ(hidapi.calls.size(), reports);
  }
}

TEST_F(HidDeviceReceiveTest, ALargerBufferKeepsItsRest) {
  hidapi.Reply(Hex("01 02"));
  EXPECT_TRUE(Receive(5));
  EXPECT_EQ(buffer, Hex("01 02 EE EE EE"));
}

TEST_F(HidDeviceReceiveTest, AFailedFirstReadFails) {
  hidapi.ReplyFailure();
  EXPECT_FALSE(Receive(4));
  EXPECT_THAT(hidapi.calls, ElementsAre("hid_read"));
}

TEST_F(HidDeviceReceiveTest, AFailedLaterReadFailsThoughSomethingWasTaken) {
  QueueFirst(56);
  hidapi.ReplyFailure();
  EXPECT_FALSE(Receive(56));
}

TEST_F(HidDeviceReceiveTest, AFirstReportAtAnotherOffsetFails) {
  for (const uint32_t offset : {1U, 55U, 0x100U, 0x10000U, 0x1000000U, 0x80000000U, 0xFFFFFFFFU}) {
    SCOPED_TRACE(offset);
    StartAnew();
    QueueSecond(offset, 0x7FFFFFFF);
    EXPECT_FALSE(Receive(200));
    EXPECT_EQ(buffer, Filled(200, kUntouched));
    EXPECT_THAT(hidapi.calls, ElementsAre("hid_read"));
  }
}

TEST_F(HidDeviceReceiveTest, ALaterReportAtAnotherOffsetEndsTheReply) {
  for (const uint32_t offset : {0U, 54U, 56U, 55U + 0x10000U, 0xFFFFFFFFU}) {
    SCOPED_TRACE(offset);
    StartAnew();
    QueueFirst(110);
    QueueSecond(offset, 110);
    EXPECT_TRUE(Receive(110));
    EXPECT_EQ(buffer, Filled(55, 0x11) + Filled(55, kUntouched));
    EXPECT_EQ(hidapi.calls.size(), 2U);
  }
  StartAnew();
  QueueFirst(110);
  QueueSecond(55, 110);
  EXPECT_TRUE(Receive(110));
  EXPECT_EQ(buffer, Filled(55, 0x11) + Filled(55, 0x22));
}

TEST_F(HidDeviceReceiveTest, ATotalBelowTheOffsetEndsTheReply) {
  const std::vector<std::pair<uint32_t, size_t>> cases = {{54, 55}, {55, 55}, {56, 56}};
  for (const auto& [total, received] : cases) {
    SCOPED_TRACE(total);
    StartAnew();
    QueueFirst(110);
    QueueSecond(55, total);
    EXPECT_TRUE(Receive(110));
    EXPECT_EQ(buffer,
              Filled(55, 0x11) + Filled(received - 55, 0x22) + Filled(110 - received, kUntouched));
    EXPECT_EQ(hidapi.calls.size(), 2U);
  }
}

TEST_F(HidDeviceReceiveTest, ATotalIsComparedAsASignedNumber) {
  for (const uint32_t total : {0x80000000U, 0xFFFFFFFFU}) {
    SCOPED_TRACE(total);
    StartAnew();
    QueueSecond(0, total);
    EXPECT_FALSE(Receive(200));
    EXPECT_EQ(buffer, Filled(200, kUntouched));
    EXPECT_EQ(hidapi.calls.size(), 1U);
  }
}

TEST_F(HidDeviceReceiveTest, ANegativeTotalAfterAGoodReportEndsTheReply) {
  QueueFirst(110);
  QueueSecond(55, 0x80000000U);
  EXPECT_TRUE(Receive(110));
  EXPECT_EQ(buffer, Filled(55, 0x11) + Filled(55, kUntouched));
}

TEST_F(HidDeviceReceiveTest, TheGreatestTotalTakesWhatComesUntilTheBufferIsFull) {
  QueueFirst(0x7FFFFFFFU);
  QueueSecond(55, 0x7FFFFFFFU);
  EXPECT_TRUE(Receive(109));
  EXPECT_EQ(buffer, Filled(55, 0x11) + Filled(54, kUntouched));
  EXPECT_EQ(hidapi.calls.size(), 2U);
}

TEST_F(HidDeviceReceiveTest, ATotalOfZeroFails) {
  hidapi.ReplyReport(KeyboardReport(0, 0, Filled(55, 0x11)));
  hidapi.Reply(Hex("F1"));
  EXPECT_FALSE(Receive(4));
  EXPECT_THAT(hidapi.calls, ElementsAre("hid_read"));
}

TEST_F(HidDeviceReceiveTest, ATotalThatFallsToZeroEndsTheReply) {
  QueueFirst(110);
  QueueSecond(55, 0);
  EXPECT_TRUE(Receive(110));
  EXPECT_EQ(buffer, Filled(55, 0x11) + Filled(55, kUntouched));
}

TEST_F(HidDeviceReceiveTest, ATotalBeyondTheCapacityFailsOnTheFirstReport) {
  const std::vector<std::pair<size_t, bool>> cases = {{0, false}, {3, false}, {4, true}, {5, true}};
  for (const auto& [capacity, succeeds] : cases) {
    SCOPED_TRACE(capacity);
    StartAnew();
    hidapi.Reply(Hex("01 02 03 04"));
    EXPECT_EQ(Receive(capacity), succeeds);
    EXPECT_THAT(hidapi.calls, ElementsAre("hid_read"));
    if (succeeds) continue;
    EXPECT_EQ(buffer, Filled(capacity, kUntouched));
  }
}

TEST_F(HidDeviceReceiveTest, ALongTotalIsNoticedAtTheReportThatOverflows) {
  const std::vector<std::pair<size_t, size_t>> cases = {{54, 0}, {55, 55}, {56, 56}, {57, 56}};
  for (const auto& [capacity, received] : cases) {
    SCOPED_TRACE(capacity);
    StartAnew();
    hidapi.Reply(Filled(56, 0x33));
    EXPECT_EQ(Receive(capacity), received > 0);
    EXPECT_EQ(buffer, Filled(received, 0x33) + Filled(capacity - received, kUntouched));
  }
}

TEST_F(HidDeviceReceiveTest, AShrinkingTotalMayCompleteTheReply) {
  QueueFirst(200);
  QueueSecond(55, 57);
  EXPECT_TRUE(Receive(200));
  EXPECT_EQ(buffer, Filled(55, 0x11) + Filled(2, 0x22) + Filled(143, kUntouched));
  EXPECT_EQ(hidapi.calls.size(), 2U);
}

TEST_F(HidDeviceReceiveTest, AGrowingTotalProlongsTheReply) {
  QueueFirst(60);
  QueueSecond(55, 111);
  hidapi.ReplyReport(KeyboardReport(110, 111, Hex("33")));
  EXPECT_TRUE(Receive(111));
  EXPECT_EQ(buffer, Filled(55, 0x11) + Filled(55, 0x22) + Hex("33"));
}

TEST_F(HidDeviceReceiveTest, ADuplicatedReportEndsTheReply) {
  QueueFirst(110);
  QueueFirst(110);
  QueueSecond(55, 110);
  EXPECT_TRUE(Receive(110));
  EXPECT_EQ(buffer, Filled(55, 0x11) + Filled(55, kUntouched));
  EXPECT_EQ(hidapi.replies.size(), 1U);
}

TEST_F(HidDeviceReceiveTest, AStaleReportIsReadAsTheAnswer) {
  hidapi.Reply(Hex("AA"));
  hidapi.Reply(Hex("F1"));
  ASSERT_TRUE(HidDevice::SendMessage(Hex("01 0A 4D 01")));
  ASSERT_TRUE(Receive(1));
  EXPECT_EQ(buffer, Hex("AA"));
}

TEST_F(HidDeviceReceiveTest, ReportsOfFewBytesStopTheReceive) {
  for (const size_t size : {size_t{0}, size_t{1}, size_t{8}, size_t{9}, size_t{63}}) {
    SCOPED_TRACE(size);
    StartAnew();
    hidapi.ReplyReport(KeyboardReport(0, 55, Filled(55, 0x11), size));
    EXPECT_FALSE(Receive(55));
    EXPECT_EQ(buffer, Filled(55, kUntouched));
    EXPECT_THAT(hidapi.calls, ElementsAre("hid_read"));
  }
}

TEST_F(HidDeviceReceiveTest, AReportNeedsItsHeaderAndItsPayloadOnly) {
  const std::vector<std::pair<size_t, bool>> cases = {
      {12, false}, {13, true}, {14, true}, {63, true}, {64, true}};
  for (const auto& [size, succeeds] : cases) {
    SCOPED_TRACE(size);
    StartAnew();
    hidapi.ReplyReport(KeyboardReport(0, 4, Hex("01 02 03 04"), size));
    EXPECT_EQ(Receive(4), succeeds);
  }
}

TEST_F(HidDeviceReceiveTest, AShortLaterReportEndsTheReply) {
  for (const size_t size : {size_t{0}, size_t{1}, size_t{8}, size_t{9}, size_t{63}}) {
    SCOPED_TRACE(size);
    StartAnew();
    QueueFirst(110);
    hidapi.ReplyReport(KeyboardReport(55, 110, Filled(55, 0x22), size));
    EXPECT_TRUE(Receive(110));
    EXPECT_EQ(buffer, Filled(55, 0x11) + Filled(55, kUntouched));
  }
}

// The buffer is shared: without the rule, the command that was just sent would echo itself.
TEST_F(HidDeviceReceiveTest, AShortReportDoesNotEchoTheCommand) {
  ASSERT_TRUE(HidDevice::SendMessage(Hex("09 00 00 00")));
  hidapi.ReplyReport(KeyboardReport(0, 4, {}, 9));
  EXPECT_FALSE(Receive(4));
  EXPECT_EQ(buffer, Filled(4, kUntouched));
}

// Nor do its header bytes pass for a reply's: a report of one byte leaves those of the command.
TEST_F(HidDeviceReceiveTest, AReportWithoutHeaderIsNoReportOfTheCommandsHeader) {
  HidDevice::report = {};
  HidDevice::report[5] = 4;
  hidapi.ReplyReport({0x00});
  EXPECT_FALSE(Receive(4));
}

TEST_F(HidDeviceReceiveTest, AnUnreadRestStaysQueued) {
  hidapi.Reply(Hex("01 02 03 04"));
  hidapi.Reply(Hex("05"));
  EXPECT_FALSE(Receive(3));
  EXPECT_TRUE(Receive(1));
  EXPECT_EQ(buffer, Hex("05"));
}

}  // namespace
}  // namespace hollin
