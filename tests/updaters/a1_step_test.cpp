// SPDX-License-Identifier: MIT
// One step of an A1 update: its block on the wire, and every way in which it fails.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <vector>

#include "tests/updaters/a1_update_fixture.h"

namespace hollin {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

// 1000 bytes that count up from 0. Their sum is 3 * 32640 + 231 * 232 / 2 = 124716, that is
// 0x1E72C.
const Bytes kHeader = Hex("07  00 00 00 00  E8 03  2C E7  00 00 00");
constexpr size_t kHeaderReports = 1;
constexpr size_t kDataReports = 15 * 2 + 1;  // 64 bytes take two reports, 40 bytes one

class A1StepTest : public A1Fixture {
 protected:
  // One block of 1000 bytes.
  void SetUp() override { Load(image); }

  [[nodiscard]] Bytes Part(size_t begin, size_t end) const {
    return {image.begin() + static_cast<ptrdiff_t>(begin),
            image.begin() + static_cast<ptrdiff_t>(end)};
  }

  // The only report of a step that ends after `calls` calls of hidapi.
  void ExpectFailureAfter(const std::vector<std::string>& calls) {
    EXPECT_FALSE(update->RunStep(0));
    EXPECT_EQ(hidapi.calls, calls);
    EXPECT_TRUE(HidDevice::IsOpen());
  }

  // The calls of a step up to the answer of its block.
  [[nodiscard]] static std::vector<std::string> CallsUpToStatus(size_t statuses) {
    std::vector<std::string> calls = {"hid_write", "hid_read"};
    calls.insert(calls.end(), kDataReports, "hid_write");
    calls.insert(calls.end(), statuses, "hid_read");
    return calls;
  }

  const Bytes image = Counting(1000);
};

TEST_F(A1StepTest, ABlockOf1000BytesIsAHeaderAndSixteenMessages) {
  AcceptBlock(kHeader);
  ASSERT_TRUE(update->RunStep(0));
  const std::vector<Bytes> messages = hidapi.SentMessages();
  ASSERT_THAT(messages, SizeIs(17));
  EXPECT_EQ(messages[0], kHeader);
  for (size_t i = 0; i < 15; i++) EXPECT_EQ(messages[i + 1], Part(64 * i, 64 * i + 64)) << i;
  EXPECT_EQ(messages[16], Part(960, 1000));
}

// Report by report, with what each leaves in the shared buffer for the next.
TEST_F(A1StepTest, TheWholeWireOfABlockOf1000Bytes) {
  AcceptBlock(kHeader);
  ASSERT_TRUE(update->RunStep(0));
  const auto& reports = hidapi.writes;
  ASSERT_THAT(reports, SizeIs(kHeaderReports + kDataReports));
  EXPECT_EQ(reports[0], Hex("51  0C 00 00 00  00 00 00 00") + kHeader + Filled(43, 0));
  const Bytes firstOf64 = Hex("51  40 00 00 00  00 00 00 00");
  const Bytes secondOf64 = Hex("51  40 00 00 00  37 00 00 00");
  for (size_t i = 0; i < 15; i++) {
    const size_t begin = 64 * i;
    EXPECT_EQ(reports[1 + 2 * i], firstOf64 + Part(begin, begin + 55)) << i;
    EXPECT_EQ(reports[2 + 2 * i],
              secondOf64 + Part(begin + 55, begin + 64) + Part(begin + 9, begin + 55))
        << i;
  }
  // Behind the last 40 bytes: the end of the buffer as the message before left it.
  EXPECT_EQ(reports[31], Hex("51  28 00 00 00  00 00 00 00") + Part(960, 1000) + Part(936, 951));
}

TEST_F(A1StepTest, TheEchoIsReadBeforeTheDataAndTheStatusesBehindIt) {
  AcceptBlock(kHeader);
  ASSERT_TRUE(update->RunStep(0));
  EXPECT_EQ(hidapi.calls, CallsUpToStatus(2));
  EXPECT_THAT(hidapi.replies, IsEmpty());
}

TEST_F(A1StepTest, AStepKeepsItsBooks) {
  AcceptBlock(kHeader);
  ASSERT_TRUE(update->RunStep(0));
  EXPECT_EQ(update->checksum, 0xE72C);
  EXPECT_EQ(update->blockLength, 1000U);
  EXPECT_EQ(update->sentTotal, 1000U);
  EXPECT_EQ(update->writeAddress, 1000U);
}

TEST_F(A1StepTest, SixtyFourBytesAreOneMessageAndSixtyFiveAreTwo) {
  const std::vector<std::pair<size_t, std::vector<size_t>>> cases = {
      {1, {1}},        {63, {63}},      {64, {64}},        {65, {64, 1}},
      {127, {64, 63}}, {128, {64, 64}}, {129, {64, 64, 1}}};
  for (const auto& [size, expected] : cases) {
    Load(Filled(size, 0));
    AcceptBlock(Hex("07 00 00 00 00") + Bytes{static_cast<uint8_t>(size)} +
                Hex("00 00 00 00 00 00"));
    ASSERT_TRUE(update->RunStep(0)) << size;
    std::vector<size_t> sizes;
    for (const Bytes& message : hidapi.SentMessages()) sizes.push_back(message.size());
    sizes.erase(sizes.begin());
    EXPECT_EQ(sizes, expected) << size;
  }
}

TEST_F(A1StepTest, AHeaderThatCannotBeSentFailsTheStep) {
  hidapi.failingWrite = 1;
  ExpectFailureAfter({"hid_write"});
}

TEST_F(A1StepTest, AHeaderThatIsNotAnsweredFailsTheStep) {
  hidapi.ReplyFailure();
  ExpectFailureAfter({"hid_write", "hid_read"});
}

TEST_F(A1StepTest, EveryByteOfTheEchoIsCompared) {
  for (size_t i = 0; i < kHeader.size(); i++) {
    Bytes echo = kHeader;
    echo[i] ^= 0x01;
    hidapi.calls.clear();
    hidapi.Reply(echo);
    ExpectFailureAfter({"hid_write", "hid_read"});
  }
}

TEST_F(A1StepTest, AnEchoThatIsCutFailsTheStep) {
  for (size_t size = 1; size < kHeader.size(); size++) {
    hidapi.calls.clear();
    hidapi.Reply(ByteView(kHeader).first(size));
    ExpectFailureAfter({"hid_write", "hid_read"});
  }
}

TEST_F(A1StepTest, AnEchoOfThirteenBytesFailsTheStep) {
  hidapi.Reply(kHeader + Hex("00"));
  ExpectFailureAfter({"hid_write", "hid_read"});
}

TEST_F(A1StepTest, AShortReportDoesNotEchoTheHeader) {
  hidapi.ReplyReport(KeyboardReport(0, 12, {}, 9));
  ExpectFailureAfter({"hid_write", "hid_read"});
}

TEST_F(A1StepTest, ADataReportThatCannotBeSentFailsTheStep) {
  for (size_t failing = 1; failing <= kDataReports; failing++) {
    hidapi.calls.clear();
    hidapi.Reply(kHeader);
    hidapi.failingWrite = kHeaderReports + failing;
    std::vector<std::string> calls = {"hid_write", "hid_read"};
    calls.insert(calls.end(), failing, "hid_write");
    ExpectFailureAfter(calls);
  }
}

TEST_F(A1StepTest, AnythingButF4FailsTheStep) {
  for (const uint8_t status : Hex("00 D4 F1 F3 F5 FF")) {
    hidapi.replies.clear();
    hidapi.calls.clear();
    hidapi.Reply(kHeader);
    hidapi.Reply(Bytes{status});
    hidapi.Reply(Hex("D4"));
    ExpectFailureAfter(CallsUpToStatus(1));
  }
}

TEST_F(A1StepTest, AnythingButD4BehindItFailsTheStep) {
  for (const uint8_t status : Hex("00 D3 D5 F4 F1 FF")) {
    hidapi.replies.clear();
    hidapi.calls.clear();
    hidapi.Reply(kHeader);
    hidapi.Reply(Hex("F4"));
    hidapi.Reply(Bytes{status});
    ExpectFailureAfter(CallsUpToStatus(2));
  }
}

TEST_F(A1StepTest, BothStatusesInOneMessageFailTheStep) {
  hidapi.Reply(kHeader);
  hidapi.Reply(Hex("F4 D4"));
  ExpectFailureAfter(CallsUpToStatus(1));
}

TEST_F(A1StepTest, AStatusThatDoesNotComeFailsTheStep) {
  for (const size_t statuses : {size_t{1}, size_t{2}}) {
    hidapi.calls.clear();
    hidapi.Reply(kHeader);
    if (statuses == 2) hidapi.Reply(Hex("F4"));
    hidapi.ReplyFailure();
    ExpectFailureAfter(CallsUpToStatus(statuses));
  }
}

TEST_F(A1StepTest, ABlockIsCountedAsSentBeforeItsHeaderGoesOut) {
  hidapi.failingWrite = 1;
  EXPECT_FALSE(update->RunStep(0));
  EXPECT_EQ(update->sentTotal, 1000U);
  EXPECT_EQ(update->writeAddress, 0U);
}

TEST_F(A1StepTest, AStepDoesNotConnect) {
  HidDevice::Close();
  hidapi.calls.clear();
  EXPECT_FALSE(update->RunStep(0));
  EXPECT_THAT(hidapi.calls, IsEmpty());
}

TEST_F(A1StepTest, IndexesBeyondThePlanAreRefusedWithNothingSent) {
  for (const uint32_t index : {1U, 2U, 3U, 0x7FFFFFFFU, std::numeric_limits<uint32_t>::max()}) {
    EXPECT_FALSE(update->RunStep(index)) << index;
  }
  EXPECT_THAT(hidapi.calls, IsEmpty());
}

TEST_F(A1StepTest, WithoutALoadEveryIndexIsBeyondThePlan) {
  A1Update unloaded("", "");
  for (const uint32_t steps : {0U, 1U, 2U}) {
    unloaded.stepCount = steps;
    for (const uint32_t index : {0U, 1U, 0xFFFFFFFEU, 0xFFFFFFFFU}) {
      EXPECT_FALSE(unloaded.RunStep(index)) << steps << " " << index;
    }
  }
  EXPECT_THAT(hidapi.calls, IsEmpty());
}

// The product of block size and index has more than 32 bits; it must not wrap into the image.
TEST_F(A1StepTest, ABlockBeyondTheImageIsRefusedBeforeItsHeader) {
  update->stepCount = 100;
  update->flash.dataLength = 0x80000000;
  for (const uint32_t index : {1U, 2U, 3U, 4U}) EXPECT_FALSE(update->RunStep(index)) << index;
  EXPECT_THAT(hidapi.calls, IsEmpty());
}

class ReasonObserver : public UpdateObserver {
 public:
  void CommandFailed(const CommandFailure& failure) override {
    reason = failure.reason;
    command.assign(failure.command.begin(), failure.command.end());
    expected.assign(failure.expected.begin(), failure.expected.end());
    reply.assign(failure.reply.begin(), failure.reply.end());
  }

  UpdateFailure reason = UpdateFailure::kNone;
  Bytes command;
  Bytes expected;
  Bytes reply;
};

TEST_F(A1StepTest, AnObserverIsToldOfAWrongStatusUnderTheHeader) {
  ReasonObserver observer;
  update->observer = &observer;
  hidapi.Reply(kHeader);
  hidapi.Reply(Hex("F4"));
  hidapi.Reply(Hex("D5"));
  EXPECT_FALSE(update->RunStep(0));
  EXPECT_EQ(observer.reason, UpdateFailure::kWrongReply);
  EXPECT_EQ(observer.command, kHeader);
  EXPECT_EQ(observer.expected, Hex("D4"));
  EXPECT_EQ(observer.reply, Hex("D5"));
}

TEST_F(A1StepTest, AnObserverIsToldOfDataThatCannotBeSent) {
  ReasonObserver observer;
  update->observer = &observer;
  hidapi.Reply(kHeader);
  hidapi.failingWrite = 5;
  EXPECT_FALSE(update->RunStep(0));
  EXPECT_EQ(observer.reason, UpdateFailure::kSendFailed);
  EXPECT_EQ(observer.command, kHeader);
}

TEST_F(A1StepTest, AnObserverIsToldOfAnIndexBeyondThePlan) {
  ReasonObserver observer;
  update->observer = &observer;
  EXPECT_FALSE(update->RunStep(1));
  EXPECT_EQ(observer.reason, UpdateFailure::kBeyondPlan);
}

}  // namespace
}  // namespace hollin
