// SPDX-License-Identifier: MIT
// The updater base: its defaults and the commands that every updater speaks. Sums, numbers and the
// observer have files of their own.
#include "device/ax_update.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
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
