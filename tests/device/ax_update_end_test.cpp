// SPDX-License-Identifier: MIT
// The verify command, and the end of an update, which closes the link whatever happens.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>

#include "device/ax_update.h"
#include "tests/support/hex_bytes.h"
#include "tests/support/link_test.h"

namespace hollin {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class AXUpdateEndTest : public LinkTest {
 protected:
  // Every byte of a good reply in turn, with all its bits turned round: none may pass.
  void ExpectEveryByteCounts(const Bytes& good, const std::function<bool()>& command) {
    for (size_t i = 0; i < good.size(); i++) {
      Bytes wrong = good;
      wrong[i] ^= 0xFF;
      hidapi.Reply(wrong);
      EXPECT_FALSE(command()) << "byte " << i;
      wrong[i] = good[i] ^ 0x01;
      hidapi.Reply(wrong);
      EXPECT_FALSE(command()) << "lowest bit of byte " << i;
    }
    hidapi.Reply(good);
    EXPECT_TRUE(command());
  }

  // Every cut of a good reply: what did not come never equals what should have.
  void ExpectNoCutPasses(const Bytes& good, const std::function<bool()>& command) {
    for (size_t size = 1; size < good.size(); size++) {
      hidapi.Reply(ByteView(good).first(size));
      EXPECT_FALSE(command()) << size << " bytes";
    }
  }

  AXUpdate updater{"the description", "the image"};
};

TEST_F(AXUpdateEndTest, VerifyRangeSendsTenBytesAndComparesEleven) {
  OpenLink();
  hidapi.Reply(Hex("08  78 56 34 12  04 03 02 01  CD AB"));
  EXPECT_TRUE(updater.VerifyRange(0x12345678, 0x01020304, 0xABCD));
  EXPECT_THAT(hidapi.SentMessages(), ElementsAre(Hex("08  78 56 34 12  04 03 02 01  00")));
  EXPECT_THAT(hidapi.calls, ElementsAre("hid_write", "hid_read"));
}

TEST_F(AXUpdateEndTest, EveryByteOfTheVerifyReplyIsCompared) {
  OpenLink();
  ExpectEveryByteCounts(Hex("08  78 56 34 12  04 03 02 01  CD AB"),
                        [this] { return updater.VerifyRange(0x12345678, 0x01020304, 0xABCD); });
}

TEST_F(AXUpdateEndTest, VerifyRangeComparesTheLowSixteenBitsOfTheSum) {
  OpenLink();
  AnswerEach(Hex("08  00 00 00 00  00 00 00 00  34 12"));
  for (const uint32_t sum : {0x1234U, 0x11234U, 0xFFFF1234U}) {
    EXPECT_TRUE(updater.VerifyRange(0, 0, sum)) << sum;
  }
  for (const uint32_t sum : {0x1233U, 0x1235U, 0x3412U, 0x12340000U}) {
    EXPECT_FALSE(updater.VerifyRange(0, 0, sum)) << sum;
  }
}

TEST_F(AXUpdateEndTest, AVerifyReplyThatIsCutNeverPasses) {
  OpenLink();
  ExpectNoCutPasses(Hex("08  00 00 00 00  00 00 00 00  00 00"),
                    [this] { return updater.VerifyRange(0, 0, 0); });
  ExpectNoCutPasses(Hex("08  FF FF FF FF  FF FF FF FF  FF FF"),
                    [this] { return updater.VerifyRange(0xFFFFFFFF, 0xFFFFFFFF, 0xFFFF); });
}

TEST_F(AXUpdateEndTest, AVerifyReplyOfTwelveBytesFails) {
  OpenLink();
  hidapi.Reply(Hex("08  00 00 00 00  00 00 00 00  00 00  00"));
  EXPECT_FALSE(updater.VerifyRange(0, 0, 0));
}

TEST_F(AXUpdateEndTest, AVerifyThatCannotBeSentOrAnsweredFails) {
  OpenLink();
  hidapi.failingWrite = 1;
  EXPECT_FALSE(updater.VerifyRange(0, 0, 0));
  EXPECT_EQ(hidapi.CountOf("hid_read"), 0U);
  hidapi.ReplyFailure();
  EXPECT_FALSE(updater.VerifyRange(0, 0, 0));
  EXPECT_TRUE(HidDevice::IsOpen());
}

TEST_F(AXUpdateEndTest, VerifyRangeDoesNotConnect) {
  EXPECT_FALSE(updater.VerifyRange(0, 0, 0));
  EXPECT_THAT(hidapi.calls, IsEmpty());
}

TEST_F(AXUpdateEndTest, FinishUpdateOfASuccessSendsZero) {
  OpenLink();
  hidapi.Reply(Hex("09 00 00 00"));
  EXPECT_TRUE(updater.FinishUpdate(true));
  EXPECT_THAT(hidapi.SentMessages(), ElementsAre(Hex("09 00 00 00")));
  EXPECT_THAT(hidapi.calls, ElementsAre("hid_write", "hid_read", "hid_close", "hid_exit"));
  EXPECT_FALSE(HidDevice::IsOpen());
}

TEST_F(AXUpdateEndTest, FinishUpdateOfAFailureSendsOne) {
  OpenLink();
  hidapi.Reply(Hex("09 01 00 00"));
  EXPECT_TRUE(updater.FinishUpdate(false));
  EXPECT_THAT(hidapi.SentMessages(), ElementsAre(Hex("09 01 00 00")));
  EXPECT_THAT(hidapi.calls, ElementsAre("hid_write", "hid_read", "hid_close", "hid_exit"));
}

TEST_F(AXUpdateEndTest, EveryByteOfTheEndReplyIsCompared) {
  ExpectEveryByteCounts(Hex("09 00 00 00"), [this] { return updater.FinishUpdate(true); });
  ExpectEveryByteCounts(Hex("09 01 00 00"), [this] { return updater.FinishUpdate(false); });
}

TEST_F(AXUpdateEndTest, AnEndReplyThatIsCutNeverPasses) {
  ExpectNoCutPasses(Hex("09 00 00 00"), [this] { return updater.FinishUpdate(true); });
  ExpectNoCutPasses(Hex("09 01 00 00"), [this] { return updater.FinishUpdate(false); });
}

TEST_F(AXUpdateEndTest, AnEndReplyOfFiveBytesFails) {
  hidapi.Reply(Hex("09 00 00 00 00"));
  EXPECT_FALSE(updater.FinishUpdate(true));
}

TEST_F(AXUpdateEndTest, FinishUpdateClosesTheLinkWhenTheKeyboardAnswersWrongly) {
  OpenLink();
  hidapi.Reply(Hex("09 01 00 00"));
  EXPECT_FALSE(updater.FinishUpdate(true));
  EXPECT_THAT(hidapi.calls, ElementsAre("hid_write", "hid_read", "hid_close", "hid_exit"));
  EXPECT_FALSE(HidDevice::IsOpen());
}

TEST_F(AXUpdateEndTest, FinishUpdateClosesTheLinkWhenTheEndCannotBeSent) {
  OpenLink();
  hidapi.failingWrite = 1;
  EXPECT_FALSE(updater.FinishUpdate(true));
  EXPECT_THAT(hidapi.calls, ElementsAre("hid_write", "hid_close", "hid_exit"));
  EXPECT_FALSE(HidDevice::IsOpen());
}

TEST_F(AXUpdateEndTest, FinishUpdateClosesTheLinkWhenTheKeyboardIsRemoved) {
  OpenLink();
  hidapi.ReplyFailure();
  EXPECT_FALSE(updater.FinishUpdate(true));
  EXPECT_THAT(hidapi.calls, ElementsAre("hid_write", "hid_read", "hid_close", "hid_exit"));
  EXPECT_EQ(HidDevice::handle, nullptr);
}

TEST_F(AXUpdateEndTest, FinishUpdateThatCannotConnectLeavesTheLinkAsItIs) {
  for (const size_t count : {size_t{0}, size_t{2}}) {
    hidapi.deviceCount = count;
    hidapi.calls.clear();
    EXPECT_FALSE(updater.FinishUpdate(false));
    EXPECT_THAT(hidapi.calls, ElementsAre("hid_enumerate", "hid_free_enumeration"));
  }
}

TEST_F(AXUpdateEndTest, AfterAFailedConnectFinishUpdateCountsAndOpensAgain) {
  hidapi.deviceCount = 0;
  EXPECT_FALSE(updater.EnterUpdateMode(5));
  hidapi.deviceCount = 1;
  hidapi.calls.clear();
  hidapi.Reply(Hex("09 01 00 00"));
  EXPECT_TRUE(updater.FinishUpdate(false));
  EXPECT_THAT(hidapi.calls, ElementsAre("hid_enumerate", "hid_free_enumeration", "hid_open",
                                        "hid_write", "hid_read", "hid_close", "hid_exit"));
  EXPECT_THAT(hidapi.SentMessages(), ElementsAre(Hex("09 01 00 00")));
}

TEST_F(AXUpdateEndTest, AfterTheEndTheNextRunStartsAfresh) {
  AnswerEach(Hex("F1"));
  ASSERT_TRUE(updater.EnterUpdateMode(5));
  hidapi.onWrite = {};
  hidapi.Reply(Hex("09 00 00 00"));
  ASSERT_TRUE(updater.FinishUpdate(true));
  hidapi.calls.clear();
  hidapi.Reply(Hex("F1"));
  EXPECT_TRUE(updater.EnterUpdateMode(5));
  EXPECT_THAT(hidapi.calls, ElementsAre("hid_enumerate", "hid_free_enumeration", "hid_open",
                                        "hid_write", "hid_read"));
}

// The buffer still holds the command: a report that brings a header only would echo it.
TEST_F(AXUpdateEndTest, AShortReportIsNoEchoOfTheEnd) {
  OpenLink();
  hidapi.ReplyReport(KeyboardReport(0, 4, {}, 9));
  EXPECT_FALSE(updater.FinishUpdate(true));
}

}  // namespace
}  // namespace hollin
