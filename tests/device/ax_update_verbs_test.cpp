// SPDX-License-Identifier: MIT
// What the base lends its subclasses: the verbs that steps are told in, loading and counting.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "device/ax_update.h"
#include "tests/support/hex_bytes.h"
#include "tests/support/link_test.h"
#include "tests/support/temp_folder.h"

namespace hollin {
namespace {

using ::testing::AllOf;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class OpenedUpdate : public AXUpdate {
 public:
  using AXUpdate::AwaitReply;
  using AXUpdate::AwaitStatus;
  using AXUpdate::AXUpdate;
  using AXUpdate::Exchange;
  using AXUpdate::ExchangePrefix;
  using AXUpdate::LoadImage;
  using AXUpdate::SendUntilEchoed;
  using AXUpdate::SetStepCount;
};

class AXUpdateVerbsTest : public LinkTest {
 protected:
  void SetUp() override { OpenLink(); }

  const Bytes command = Hex("02 AA BB");
  TempFolder folder;
  OpenedUpdate updater{"", folder.Path("image")};
};

TEST_F(AXUpdateVerbsTest, APrefixIsComparedAsFarAsItGoes) {
  const std::vector<std::pair<const char*, bool>> cases = {{"02 AA BB", true},  {"02 AA 00", true},
                                                           {"02 AB BB", false}, {"03 AA BB", false},
                                                           {"02 AA", true},     {"02", false}};
  for (const auto& [reply, isEqual] : cases) {
    hidapi.Reply(Hex(reply));
    EXPECT_EQ(updater.ExchangePrefix(command, command, 2), isEqual) << reply;
  }
}

TEST_F(AXUpdateVerbsTest, ACommandIsSentAgainUntilItIsEchoed) {
  for (int i = 0; i < 3; i++) hidapi.Reply(Hex("02 AA 00"));
  hidapi.Reply(command);
  EXPECT_TRUE(updater.SendUntilEchoed(command, 5, 0.1));
  EXPECT_THAT(hidapi.SentMessages(), AllOf(SizeIs(4), Each(command)));
}

TEST_F(AXUpdateVerbsTest, ResendsAreCountedOut) {
  for (const int resends : {0, 1, 2}) {
    hidapi.writes.clear();
    for (int i = 0; i <= resends; i++) hidapi.Reply(Hex("02 AA 00"));
    EXPECT_FALSE(updater.SendUntilEchoed(command, resends, 0.1));
    EXPECT_THAT(hidapi.writes, SizeIs(resends + 1));
  }
}

TEST_F(AXUpdateVerbsTest, TheLastResendMaySucceed) {
  hidapi.Reply(Hex("02 AA 00"));
  hidapi.Reply(Hex("02 AA 00"));
  hidapi.Reply(command);
  EXPECT_TRUE(updater.SendUntilEchoed(command, 2, 0.1));
}

TEST_F(AXUpdateVerbsTest, ALostTransferIsNotSentAgain) {
  hidapi.failingWrite = 1;
  EXPECT_FALSE(updater.SendUntilEchoed(command, 5, 0.1));
  EXPECT_THAT(hidapi.calls, ElementsAre("hid_write"));
  hidapi.ReplyFailure();
  EXPECT_FALSE(updater.SendUntilEchoed(command, 5, 0.1));
  EXPECT_THAT(hidapi.calls, ElementsAre("hid_write", "hid_write", "hid_read"));
}

TEST_F(AXUpdateVerbsTest, AStatusIsOneByte) {
  for (const auto& [reply, isEqual] : std::vector<std::pair<const char*, bool>>{
           {"F4", true}, {"F5", false}, {"0B", false}, {"F4 F4", false}}) {
    hidapi.Reply(Hex(reply));
    EXPECT_EQ(updater.AwaitStatus(0xF4), isEqual) << reply;
  }
  EXPECT_THAT(hidapi.writes, IsEmpty());
}

TEST_F(AXUpdateVerbsTest, AReplyByItselfKeepsTheBytesThatDidNotCome) {
  hidapi.Reply(Hex("01 02"));
  Bytes reply = Filled(4, 0xEE);
  EXPECT_TRUE(updater.AwaitReply(reply, 0.1));
  EXPECT_EQ(reply, Hex("01 02 EE EE"));
}

TEST_F(AXUpdateVerbsTest, StepCountsEndAt31Bits) {
  for (const uint64_t count : {uint64_t{1}, uint64_t{0x7FFFFFFE}, uint64_t{0x7FFFFFFF}}) {
    EXPECT_TRUE(updater.SetStepCount(count));
    EXPECT_EQ(updater.StepCount(), count);
  }
  for (const uint64_t count : {uint64_t{0x80000000}, uint64_t{0xFFFFFFFF}, uint64_t{0x100000003}}) {
    EXPECT_FALSE(updater.SetStepCount(count)) << count;
  }
}

TEST_F(AXUpdateVerbsTest, AnImageIsLoadedWholeAndMustNotBeEmpty) {
  EXPECT_FALSE(updater.LoadImage());
  folder.Write("image", "");
  EXPECT_FALSE(updater.LoadImage());
  EXPECT_EQ(updater.image, nullptr);
  folder.Write("image", Hex("00 01 FF"));
  ASSERT_TRUE(updater.LoadImage());
  EXPECT_EQ(updater.imageLength, 3);
  EXPECT_EQ(Bytes(updater.image.get(), updater.image.get() + 3), Hex("00 01 FF"));
}

}  // namespace
}  // namespace hollin
