// SPDX-License-Identifier: MIT
// A whole update, from the bytes of a package to the bytes on the wire: every call of hidapi, every
// report, every pause and every number of progress, in order.
#include <gtest/gtest.h>

#include "app/update_loop.h"
#include "tests/package/examine_test.h"
#include "tests/package/literal_packages.h"
#include "tests/support/recorded_pause.h"

namespace hollin {
namespace {

using Calls = std::vector<std::string>;
using std::chrono::milliseconds;

class WholeUpdateTest : public ExamineTest {
 protected:
  // A reply of one report whose tail is no zeros: it is what later reports carry behind their own
  // bytes.
  void Answer(ByteView message) {
    Bytes payload = Bytes{} + message;
    payload.resize(55, 0xEE);
    hidapi.ReplyReport(KeyboardReport(0, static_cast<uint32_t>(message.size()), payload));
  }

  void AnswerOnePack() {
    Answer(Hex("F1"));
    Answer(Hex("07 00000000 4000 E02E 000000"));
    Answer(Hex("F4"));
    Answer(Hex("D4"));
    Answer(Hex("07 40000000 2400 6621 000000"));
    Answer(Hex("F4"));
    Answer(Hex("D4"));
    Answer(Hex("08 10000000 64000000 4650"));
    Answer(Hex("09 00 0000"));
  }

  void AnswerTwoPacks() {
    Answer(Hex("F1"));
    Answer(Hex("07 00000000 0300 2100 000000"));
    Answer(Hex("F4"));
    Answer(Hex("D4"));
    Answer(Hex("08 00000000 03000000 2100"));
    Answer(Hex("F1"));
    Answer(Hex("07 00000000 4000 E017 000000"));
    Answer(Hex("F4"));
    Answer(Hex("D4"));
    Answer(Hex("07 40000000 0600 0F03 000000"));
    Answer(Hex("F4"));
    Answer(Hex("D4"));
    Answer(Hex("08 64000000 46000000 EF1A"));
    Answer(Hex("09 00 0000"));
  }

  UpdateOutcome Update() {
    return RunUpdate(datFile, [this](int32_t value) { progress.push_back(value); });
  }

  RecordedPause pauses;
  std::vector<int32_t> progress;
};

TEST_F(WholeUpdateTest, OnePackCallByCallAndReportByReport) {
  ASSERT_TRUE(Examine(OnePackPackage()));
  AnswerOnePack();

  EXPECT_EQ(Update(), UpdateOutcome::kSucceeded);

  EXPECT_EQ(hidapi.calls, (Calls{"hid_enumerate", "hid_free_enumeration",
                                 "hid_open",                   //
                                 "hid_write",     "hid_read",  // mode
                                 "hid_write",     "hid_read",  // header
                                 "hid_write",     "hid_write",
                                 "hid_read",      "hid_read",  // 64 bytes
                                 "hid_write",     "hid_read",  // header
                                 "hid_write",     "hid_read",
                                 "hid_read",                   // 36 bytes
                                 "hid_write",     "hid_read",  // verify
                                 "hid_write",     "hid_read",
                                 "hid_close",     "hid_exit"}));  // end
  EXPECT_EQ(hidapi.enumeratedIds, (std::vector<ScriptedHidapi::Ids>{{0x1234, 0xABCD}}));
  EXPECT_EQ(hidapi.openedIds, (std::vector<ScriptedHidapi::Ids>{{0x1234, 0xABCD}}));

  const Bytes ee = Filled(55, 0xEE);
  const auto tail = [&ee](size_t sent) { return ByteView(ee).subspan(sent); };
  ASSERT_EQ(hidapi.writes.size(), 8U);
  EXPECT_EQ(hidapi.writes[0], Hex("51 04000000 00000000 01 0A 4D 05") + Filled(51, 0));
  EXPECT_EQ(hidapi.writes[1], Hex("51 0C000000 00000000 07 00000000 4000 E02E 000000") + tail(12));
  // 9C to D2; then D3 to DB, and behind them what the report before has left there: A5 to D2.
  EXPECT_EQ(hidapi.writes[2], Hex("51 40000000 00000000") + Counting(55, 0x9C));
  EXPECT_EQ(hidapi.writes[3], Hex("51 40000000 37000000") + Counting(9, 0xD3) + Counting(46, 0xA5));
  EXPECT_EQ(hidapi.writes[4], Hex("51 0C000000 00000000 07 40000000 2400 6621 000000") + tail(12));
  EXPECT_EQ(hidapi.writes[5], Hex("51 24000000 00000000") + Counting(36, 0xDC) + tail(36));
  EXPECT_EQ(hidapi.writes[6], Hex("51 0A000000 00000000 08 10000000 64000000 00") + tail(10));
  EXPECT_EQ(hidapi.writes[7], Hex("51 04000000 00000000 09 00 0000 00 64000000 4650") + tail(11));

  EXPECT_EQ(progress, (std::vector<int32_t>{0, 1, 2, 3, -1}));
  EXPECT_EQ(pauses.lengths, std::vector<milliseconds>(4, milliseconds(500)));
  EXPECT_EQ(log.lines, (Calls{"0", "1", "2", "3"}));
}

TEST_F(WholeUpdateTest, TwoPacksMessageByMessage) {
  ASSERT_TRUE(Examine(TwoPackPackage()));
  AnswerTwoPacks();

  EXPECT_EQ(Update(), UpdateOutcome::kSucceeded);

  EXPECT_EQ(hidapi.SentMessages(),
            (std::vector<Bytes>{
                Hex("01 0A 4D 02"),                   // the mode of a description without one
                Hex("07 00000000 0300 2100 000000"),  //
                Hex("0A 0B 0C"),                      //
                Hex("08 00000000 03000000 00"),       //
                Hex("01 0A 4D 03"),                   //
                Hex("07 00000000 4000 E017 000000"),  //
                Counting(64, 0x40),                   //
                Hex("07 40000000 0600 0F03 000000"),  //
                Hex("80 81 82 83 84 85"),             //
                Hex("08 64000000 46000000 00"),       // verified at the start address
                Hex("09 00 0000"),                    // one end for both
            }));
  EXPECT_EQ(hidapi.CountOf("hid_enumerate"), 1U);  // the second pack finds the link open
  EXPECT_EQ(hidapi.CountOf("hid_open"), 1U);
  EXPECT_EQ(hidapi.CountOf("hid_close"), 1U);
  EXPECT_EQ(progress, (std::vector<int32_t>{0, 1, 2, 3, 4, 5, 6, -1}));
  EXPECT_EQ(pauses.lengths, std::vector<milliseconds>(7, milliseconds(500)));
}

TEST_F(WholeUpdateTest, ASecondUpdateSendsTheSameAsTheFirst) {
  ASSERT_TRUE(Examine(TwoPackPackage()));
  AnswerTwoPacks();
  ASSERT_EQ(Update(), UpdateOutcome::kSucceeded);
  const auto first = hidapi.SentMessages();
  hidapi.writes.clear();
  AnswerTwoPacks();
  ASSERT_EQ(Update(), UpdateOutcome::kSucceeded);
  EXPECT_EQ(hidapi.SentMessages(), first);
  EXPECT_EQ(hidapi.CountOf("hid_open"), 2U);
}

TEST_F(WholeUpdateTest, AKeyboardThatRefusesUpdateModeIsAskedFiveTimes) {
  ASSERT_TRUE(Examine(OnePackPackage()));
  for (int i = 0; i < 5; i++) Answer(Hex("F0"));
  Answer(Hex("09 01 0000"));

  EXPECT_EQ(Update(), UpdateOutcome::kFailed);

  std::vector<Bytes> expected(5, Hex("01 0A 4D 05"));
  expected.push_back(Hex("09 01 0000"));
  EXPECT_EQ(hidapi.SentMessages(), expected);
  EXPECT_EQ(progress, (std::vector<int32_t>{-2}));
  EXPECT_TRUE(pauses.lengths.empty());
  EXPECT_TRUE(log.lines.empty());
  EXPECT_FALSE(HidDevice::IsOpen());
}

TEST_F(WholeUpdateTest, WithoutAKeyboardNothingIsSent) {
  ASSERT_TRUE(Examine(OnePackPackage()));
  hidapi.deviceCount = 0;
  EXPECT_EQ(Update(), UpdateOutcome::kFailed);
  EXPECT_EQ(progress, (std::vector<int32_t>{-2}));
  EXPECT_EQ(hidapi.writes, std::vector<Bytes>{});
}

TEST_F(WholeUpdateTest, AVerifyOfAnotherSumFailsTheUpdate) {
  ASSERT_TRUE(Examine(OnePackPackage()));
  AnswerOnePack();
  hidapi.replies[7] = KeyboardReport(0, 11, Hex("08 10000000 64000000 4750"));
  hidapi.replies[8] = KeyboardReport(0, 4, Hex("09 01 0000"));
  EXPECT_EQ(Update(), UpdateOutcome::kFailed);
  EXPECT_EQ(progress, (std::vector<int32_t>{0, 1, 2, -2}));
}

TEST_F(WholeUpdateTest, IndexesBeyondThePlanAreRefusedWithNothingSent) {
  ASSERT_TRUE(Examine(OnePackPackage()));
  AnswerOnePack();
  ASSERT_TRUE(datFile.RunUpdateStep(0));
  hidapi.calls.clear();
  for (const uint32_t index : {4U, 5U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
    EXPECT_FALSE(datFile.RunUpdateStep(index)) << index;
  }
  EXPECT_EQ(hidapi.calls, Calls{});
}

}  // namespace
}  // namespace hollin
