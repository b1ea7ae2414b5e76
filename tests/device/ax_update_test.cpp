// SPDX-License-Identifier: MIT
// The updater base: its defaults and the commands that every updater speaks. Sums, numbers and the
// observer have files of their own.
#include "device/ax_update.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <limits>
#include <string>
#include <type_traits>
#include <vector>

#include "tests/support/hex_bytes.h"
#include "tests/support/link_test.h"
#include "tests/support/recorded_log.h"
#include "tests/support/recorded_pause.h"

namespace hollin {
namespace {

using ::testing::AllOf;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class AXUpdateTest : public LinkTest {
 protected:
  // A reply that comes after each message of up to 55 bytes.
  void AnswerEach(const Bytes& message) {
    hidapi.onWrite = [this, message](const Bytes& /*report*/) { hidapi.Reply(message); };
  }

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

// The place of a virtual operation among its class's slots, as the Itanium ABI writes it into a
// pointer to member (with a marking bit that differs between machines).
template <typename Method>
size_t SlotOf(Method method) {
  static_assert(sizeof(method) == 2 * sizeof(ptrdiff_t));
  ptrdiff_t offset = 0;
  std::memcpy(&offset, &method, sizeof offset);
  return static_cast<size_t>(offset) / sizeof(void*);
}

TEST_F(AXUpdateTest, VirtualSlotsStandInTheGivenOrder) {
  static_assert(std::has_virtual_destructor_v<AXUpdate>);  // slots 0 and 1
  EXPECT_EQ(SlotOf(&AXUpdate::LoadFiles), 2U);
  EXPECT_EQ(SlotOf(&AXUpdate::CheckConfig), 3U);
  EXPECT_EQ(SlotOf(&AXUpdate::PlanSteps), 4U);
  EXPECT_EQ(SlotOf(&AXUpdate::RunStep), 5U);
  EXPECT_EQ(SlotOf(&AXUpdate::VerifyImage), 6U);
  EXPECT_EQ(SlotOf(&AXUpdate::EnterUpdateMode), 7U);
}

TEST_F(AXUpdateTest, FieldsStandInTheGivenOrderAndWidth) {
  static_assert(std::is_same_v<decltype(updater.imageLength), int64_t>);
  static_assert(std::is_same_v<decltype(updater.checksum), uint16_t>);
  static_assert(std::is_same_v<decltype(updater.stepCount), uint32_t>);
  static_assert(std::is_same_v<decltype(updater.link), HidDevice*>);
  static_assert(std::is_same_v<decltype(updater.mode), uint32_t>);
  const std::vector<const void*> fields = {
      &updater.configPath, &updater.imagePath, &updater.image, &updater.imageLength,
      &updater.checksum,   &updater.stepCount, &updater.link,  &updater.mode};
  for (size_t i = 1; i < fields.size(); i++) EXPECT_LT(fields[i - 1], fields[i]) << i;
}

TEST_F(AXUpdateTest, TheConstructorKeepsThePathsAndHasNoImage) {
  EXPECT_EQ(updater.configPath, "the description");
  EXPECT_EQ(updater.imagePath, "the image");
  EXPECT_EQ(updater.image, nullptr);
  EXPECT_THAT(hidapi.calls, IsEmpty());
}

TEST_F(AXUpdateTest, LoadingAndPlanningAreFalseByDefault) {
  EXPECT_FALSE(updater.LoadFiles());
  EXPECT_FALSE(updater.CheckConfig());
  EXPECT_FALSE(updater.PlanSteps());
}

TEST_F(AXUpdateTest, SteppingAndVerifyingAreTrueByDefault) {
  EXPECT_TRUE(updater.RunStep(0));
  EXPECT_TRUE(updater.RunStep(0xFFFFFFFF));
  EXPECT_TRUE(updater.VerifyImage());
  EXPECT_THAT(hidapi.calls, IsEmpty());
}

TEST_F(AXUpdateTest, StepCountIsTheField) {
  updater.stepCount = 0x80000001;
  EXPECT_EQ(updater.StepCount(), 0x80000001U);
}

TEST_F(AXUpdateTest, SendAndReceiveForwardToTheLink) {
  OpenLink();
  EXPECT_TRUE(updater.Send(Hex("0B 00 02")));
  EXPECT_THAT(hidapi.SentMessages(), ElementsAre(Hex("0B 00 02")));
  hidapi.Reply(Hex("01 02"));
  Bytes reply(2);
  EXPECT_TRUE(updater.Receive(reply));
  EXPECT_EQ(reply, Hex("01 02"));
}

TEST_F(AXUpdateTest, SendAndReceiveReturnTheLinksResult) {
  OpenLink();
  hidapi.failingWrite = 1;
  EXPECT_FALSE(updater.Send(Hex("0B")));
  hidapi.ReplyFailure();
  Bytes reply(2);
  EXPECT_FALSE(updater.Receive(reply));
  EXPECT_FALSE(updater.Send({}));
}

// Deliberate oddity: the time-out is taken and has no effect.
TEST_F(AXUpdateTest, TheFormsWithATimeOutForwardInTheSameWay) {
  const RecordedPause pauses;
  OpenLink();
  EXPECT_TRUE(updater.Send(Hex("0B 00 02"), 0.1));
  hidapi.Reply(Hex("01 02"));
  Bytes reply(2);
  EXPECT_TRUE(updater.Receive(reply, 0.1));
  EXPECT_EQ(reply, Hex("01 02"));
  EXPECT_THAT(hidapi.calls, ElementsAre("hid_write", "hid_read"));
  EXPECT_THAT(pauses.lengths, IsEmpty());
  hidapi.failingWrite = 1;
  EXPECT_FALSE(updater.Send(Hex("0B"), 0.0));
  hidapi.ReplyFailure();
  EXPECT_FALSE(updater.Receive(reply, -1.0));
}

TEST_F(AXUpdateTest, EnterUpdateModeConnectsAndSendsTheModeCommand) {
  updater.mode = 1;
  hidapi.Reply(Hex("F1"));
  EXPECT_TRUE(updater.EnterUpdateMode(5));
  EXPECT_THAT(hidapi.calls, ElementsAre("hid_enumerate", "hid_free_enumeration", "hid_open",
                                        "hid_write", "hid_read"));
  EXPECT_THAT(hidapi.writes,
              ElementsAre(Hex("51  04 00 00 00  00 00 00 00  01 0A 4D 01") + Filled(51, 0)));
  EXPECT_NE(updater.link, nullptr);
}

TEST_F(AXUpdateTest, TheModeCommandCarriesTheLowByteOfTheMode) {
  AnswerEach(Hex("F1"));
  for (const uint32_t mode : {0U, 2U, 255U, 256U, 0x12345603U}) {
    updater.mode = mode;
    EXPECT_TRUE(updater.EnterUpdateMode(1));
  }
  EXPECT_THAT(hidapi.SentMessages(),
              ElementsAre(Hex("01 0A 4D 00"), Hex("01 0A 4D 02"), Hex("01 0A 4D FF"),
                          Hex("01 0A 4D 00"), Hex("01 0A 4D 03")));
}

TEST_F(AXUpdateTest, WithoutRetriesEnterUpdateModeConnectsAndFailsWithoutSendingAnything) {
  for (const int32_t retries : {0, -1, std::numeric_limits<int32_t>::min()}) {
    EXPECT_FALSE(updater.EnterUpdateMode(retries));
    EXPECT_THAT(hidapi.writes, IsEmpty());
    EXPECT_TRUE(HidDevice::IsOpen());
  }
  EXPECT_EQ(hidapi.CountOf("hid_open"), 1U);
}

TEST_F(AXUpdateTest, WithoutAKeyboardEnterUpdateModeSendsNothing) {
  hidapi.deviceCount = 0;
  EXPECT_FALSE(updater.EnterUpdateMode(5));
  EXPECT_THAT(hidapi.calls, ElementsAre("hid_enumerate", "hid_free_enumeration"));
}

TEST_F(AXUpdateTest, AKeyboardThatRefusesGetsTheCommandExactlyFiveTimes) {
  const RecordedPause pauses;
  AnswerEach(Hex("F0"));
  updater.mode = 2;
  EXPECT_FALSE(updater.EnterUpdateMode(5));
  EXPECT_THAT(hidapi.SentMessages(), AllOf(SizeIs(5), Each(Hex("01 0A 4D 02"))));
  EXPECT_THAT(pauses.lengths, IsEmpty());
  EXPECT_TRUE(HidDevice::IsOpen());
  EXPECT_EQ(hidapi.CountOf("hid_close"), 0U);
}

TEST_F(AXUpdateTest, OnlyF1MeansThatTheModeWasEntered) {
  for (int status = 0; status <= 0xFF; status++) {
    hidapi.ReplyReport(KeyboardReport(0, 1, Bytes{static_cast<uint8_t>(status)}));
    EXPECT_EQ(updater.EnterUpdateMode(1), status == 0xF1) << status;
  }
}

TEST_F(AXUpdateTest, TheFirstGoodAnswerEndsTheAttempts) {
  hidapi.Reply(Hex("F0"));
  hidapi.Reply(Hex("00"));
  hidapi.Reply(Hex("F1"));
  hidapi.Reply(Hex("F1"));
  EXPECT_TRUE(updater.EnterUpdateMode(5));
  EXPECT_THAT(hidapi.writes, SizeIs(3));
  EXPECT_EQ(hidapi.replies.size(), 1U);
}

TEST_F(AXUpdateTest, TheLastAttemptMaySucceed) {
  for (int i = 0; i < 4; i++) hidapi.Reply(Hex("F0"));
  hidapi.Reply(Hex("F1"));
  EXPECT_TRUE(updater.EnterUpdateMode(5));
}

TEST_F(AXUpdateTest, AFailedSendCountsAsAnAttemptAndReadsNothing) {
  hidapi.failingWrite = 1;
  hidapi.Reply(Hex("F1"));
  EXPECT_TRUE(updater.EnterUpdateMode(2));
  EXPECT_EQ(hidapi.CountOf("hid_write"), 2U);
  EXPECT_EQ(hidapi.CountOf("hid_read"), 1U);
}

TEST_F(AXUpdateTest, AFailedReceiveCountsAsAnAttempt) {
  hidapi.ReplyFailure();
  hidapi.ReplyFailure();
  hidapi.Reply(Hex("F1"));
  EXPECT_FALSE(updater.EnterUpdateMode(2));
  EXPECT_EQ(hidapi.CountOf("hid_write"), 2U);
}

TEST_F(AXUpdateTest, AModeReplyOfTwoBytesIsARefusal) {
  hidapi.Reply(Hex("F1 F1"));
  EXPECT_FALSE(updater.EnterUpdateMode(1));
}

TEST_F(AXUpdateTest, TheOpenLinkServesTheSecondUpdater) {
  AnswerEach(Hex("F1"));
  AXUpdate second("description 2", "image 2");
  EXPECT_TRUE(updater.EnterUpdateMode(5));
  hidapi.deviceCount = 2;
  EXPECT_TRUE(second.EnterUpdateMode(5));
  EXPECT_EQ(hidapi.CountOf("hid_enumerate"), 1U);
  EXPECT_EQ(hidapi.CountOf("hid_open"), 1U);
}

TEST_F(AXUpdateTest, VerifyRangeSendsTenBytesAndComparesEleven) {
  OpenLink();
  hidapi.Reply(Hex("08  78 56 34 12  04 03 02 01  CD AB"));
  EXPECT_TRUE(updater.VerifyRange(0x12345678, 0x01020304, 0xABCD));
  EXPECT_THAT(hidapi.SentMessages(), ElementsAre(Hex("08  78 56 34 12  04 03 02 01  00")));
  EXPECT_THAT(hidapi.calls, ElementsAre("hid_write", "hid_read"));
}

TEST_F(AXUpdateTest, EveryByteOfTheVerifyReplyIsCompared) {
  OpenLink();
  ExpectEveryByteCounts(Hex("08  78 56 34 12  04 03 02 01  CD AB"),
                        [this] { return updater.VerifyRange(0x12345678, 0x01020304, 0xABCD); });
}

TEST_F(AXUpdateTest, VerifyRangeComparesTheLowSixteenBitsOfTheSum) {
  OpenLink();
  AnswerEach(Hex("08  00 00 00 00  00 00 00 00  34 12"));
  for (const uint32_t sum : {0x1234U, 0x11234U, 0xFFFF1234U}) {
    EXPECT_TRUE(updater.VerifyRange(0, 0, sum)) << sum;
  }
  for (const uint32_t sum : {0x1233U, 0x1235U, 0x3412U, 0x12340000U}) {
    EXPECT_FALSE(updater.VerifyRange(0, 0, sum)) << sum;
  }
}

TEST_F(AXUpdateTest, AVerifyReplyThatIsCutNeverPasses) {
  OpenLink();
  ExpectNoCutPasses(Hex("08  00 00 00 00  00 00 00 00  00 00"),
                    [this] { return updater.VerifyRange(0, 0, 0); });
  ExpectNoCutPasses(Hex("08  FF FF FF FF  FF FF FF FF  FF FF"),
                    [this] { return updater.VerifyRange(0xFFFFFFFF, 0xFFFFFFFF, 0xFFFF); });
}

TEST_F(AXUpdateTest, AVerifyReplyOfTwelveBytesFails) {
  OpenLink();
  hidapi.Reply(Hex("08  00 00 00 00  00 00 00 00  00 00  00"));
  EXPECT_FALSE(updater.VerifyRange(0, 0, 0));
}

TEST_F(AXUpdateTest, AVerifyThatCannotBeSentOrAnsweredFails) {
  OpenLink();
  hidapi.failingWrite = 1;
  EXPECT_FALSE(updater.VerifyRange(0, 0, 0));
  EXPECT_EQ(hidapi.CountOf("hid_read"), 0U);
  hidapi.ReplyFailure();
  EXPECT_FALSE(updater.VerifyRange(0, 0, 0));
  EXPECT_TRUE(HidDevice::IsOpen());
}

TEST_F(AXUpdateTest, VerifyRangeDoesNotConnect) {
  EXPECT_FALSE(updater.VerifyRange(0, 0, 0));
  EXPECT_THAT(hidapi.calls, IsEmpty());
}

TEST_F(AXUpdateTest, FinishUpdateOfASuccessSendsZero) {
  OpenLink();
  hidapi.Reply(Hex("09 00 00 00"));
  EXPECT_TRUE(updater.FinishUpdate(true));
  EXPECT_THAT(hidapi.SentMessages(), ElementsAre(Hex("09 00 00 00")));
  EXPECT_THAT(hidapi.calls, ElementsAre("hid_write", "hid_read", "hid_close", "hid_exit"));
  EXPECT_FALSE(HidDevice::IsOpen());
}

TEST_F(AXUpdateTest, FinishUpdateOfAFailureSendsOne) {
  OpenLink();
  hidapi.Reply(Hex("09 01 00 00"));
  EXPECT_TRUE(updater.FinishUpdate(false));
  EXPECT_THAT(hidapi.SentMessages(), ElementsAre(Hex("09 01 00 00")));
  EXPECT_THAT(hidapi.calls, ElementsAre("hid_write", "hid_read", "hid_close", "hid_exit"));
}

TEST_F(AXUpdateTest, EveryByteOfTheEndReplyIsCompared) {
  ExpectEveryByteCounts(Hex("09 00 00 00"), [this] { return updater.FinishUpdate(true); });
  ExpectEveryByteCounts(Hex("09 01 00 00"), [this] { return updater.FinishUpdate(false); });
}

TEST_F(AXUpdateTest, AnEndReplyThatIsCutNeverPasses) {
  ExpectNoCutPasses(Hex("09 00 00 00"), [this] { return updater.FinishUpdate(true); });
  ExpectNoCutPasses(Hex("09 01 00 00"), [this] { return updater.FinishUpdate(false); });
}

TEST_F(AXUpdateTest, AnEndReplyOfFiveBytesFails) {
  hidapi.Reply(Hex("09 00 00 00 00"));
  EXPECT_FALSE(updater.FinishUpdate(true));
}

TEST_F(AXUpdateTest, FinishUpdateClosesTheLinkWhenTheKeyboardAnswersWrongly) {
  OpenLink();
  hidapi.Reply(Hex("09 01 00 00"));
  EXPECT_FALSE(updater.FinishUpdate(true));
  EXPECT_THAT(hidapi.calls, ElementsAre("hid_write", "hid_read", "hid_close", "hid_exit"));
  EXPECT_FALSE(HidDevice::IsOpen());
}

TEST_F(AXUpdateTest, FinishUpdateClosesTheLinkWhenTheEndCannotBeSent) {
  OpenLink();
  hidapi.failingWrite = 1;
  EXPECT_FALSE(updater.FinishUpdate(true));
  EXPECT_THAT(hidapi.calls, ElementsAre("hid_write", "hid_close", "hid_exit"));
  EXPECT_FALSE(HidDevice::IsOpen());
}

TEST_F(AXUpdateTest, FinishUpdateClosesTheLinkWhenTheKeyboardIsRemoved) {
  OpenLink();
  hidapi.ReplyFailure();
  EXPECT_FALSE(updater.FinishUpdate(true));
  EXPECT_THAT(hidapi.calls, ElementsAre("hid_write", "hid_read", "hid_close", "hid_exit"));
  EXPECT_EQ(HidDevice::handle, nullptr);
}

TEST_F(AXUpdateTest, FinishUpdateThatCannotConnectLeavesTheLinkAsItIs) {
  for (const size_t count : {size_t{0}, size_t{2}}) {
    hidapi.deviceCount = count;
    hidapi.calls.clear();
    EXPECT_FALSE(updater.FinishUpdate(false));
    EXPECT_THAT(hidapi.calls, ElementsAre("hid_enumerate", "hid_free_enumeration"));
  }
}

TEST_F(AXUpdateTest, AfterAFailedConnectFinishUpdateCountsAndOpensAgain) {
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

TEST_F(AXUpdateTest, AfterTheEndTheNextRunStartsAfresh) {
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
TEST_F(AXUpdateTest, AShortReportIsNoEchoOfTheEnd) {
  OpenLink();
  hidapi.ReplyReport(KeyboardReport(0, 4, {}, 9));
  EXPECT_FALSE(updater.FinishUpdate(true));
}

TEST_F(AXUpdateTest, CommandsPrintNothing) {
  const RecordedLog log;
  AnswerEach(Hex("F0"));
  EXPECT_FALSE(updater.EnterUpdateMode(5));
  EXPECT_FALSE(updater.VerifyRange(0, 0, 0));
  EXPECT_FALSE(updater.FinishUpdate(true));
  hidapi.deviceCount = 2;
  EXPECT_FALSE(updater.EnterUpdateMode(5));
  EXPECT_THAT(log.lines, IsEmpty());
}

}  // namespace
}  // namespace hollin
