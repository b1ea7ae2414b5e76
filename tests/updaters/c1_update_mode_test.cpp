// SPDX-License-Identifier: MIT
// The first step of a C1 update: mode, configuration, and whether the image fits.
#include <optional>
#include <ostream>

#include "tests/updaters/c1_test.h"

namespace hollin {
namespace {

const Bytes kMode = Hex("01 0A 4D 03");
const Bytes kConfigure = Hex("0B 00 00 01 20 00 00");

class C1UpdateModeTest : public C1Test {
 protected:
  // 70 bytes are three data sectors, and with the reserved one 128 bytes of flash.
  C1UpdateModeTest() { static_cast<void>(Plan(Counting(70))); }

  void Refuse(uint8_t code, size_t times) {
    keyboard.AnswerNext(code, {code == 0x01 ? Hex("F0") : Hex("F0 00 00 00 01")}, times);
  }
};

TEST_F(C1UpdateModeTest, TheKeyboardIsSwitchedAndConfigured) {
  EXPECT_TRUE(update.EnterUpdateMode(5));
  EXPECT_EQ(hidapi.SentMessages(), (Messages{kMode, kConfigure}));
  EXPECT_EQ(update.flashCapacity, 0x1000000);
  EXPECT_TRUE(pauses.lengths.empty());
}

TEST_F(C1UpdateModeTest, TheConfigurationCarriesControllerChipSelectLinesAndSectorSize) {
  update.flash.spiNumber = 1;
  update.flash.chipSelectNumber = 2;
  update.flash.lineMode = 4;
  update.flash.sectorSize = 0x10203;
  EXPECT_TRUE(update.EnterUpdateMode(1));
  EXPECT_EQ(keyboard.commands[1], Hex("0B 01 02 04 03 02 01"));
}

TEST_F(C1UpdateModeTest, ASectorSizeOf16MebibytesOrMoreLosesItsUpperBits) {
  struct Case {
    uint32_t sectorSize;
    Bytes command;
  };
  const std::vector<Case> cases{{0x00FFFFFF, Hex("0B 00 00 01 FF FF FF")},
                                {0x01000000, Hex("0B 00 00 01 00 00 00")},
                                {0x01000001, Hex("0B 00 00 01 01 00 00")}};
  keyboard.capacity = Hex("FF FF FF 7F");
  for (const Case& c : cases) {
    keyboard.commands.clear();
    update.flash.sectorSize = c.sectorSize;
    ASSERT_TRUE(Plan(Counting(1)));
    EXPECT_TRUE(update.EnterUpdateMode(1));
    EXPECT_EQ(keyboard.commands[1], c.command);
  }
}

TEST_F(C1UpdateModeTest, WithoutAttemptsItConnectsAndFails) {
  for (const int32_t retries : {0, -1, INT32_MIN}) {
    HidDevice::Close();
    EXPECT_FALSE(update.EnterUpdateMode(retries));
    EXPECT_TRUE(HidDevice::opened);
  }
  EXPECT_TRUE(hidapi.writes.empty());
}

TEST_F(C1UpdateModeTest, WithoutAKeyboardItFails) {
  HidDevice::Close();
  hidapi.deviceCount = 0;
  EXPECT_FALSE(update.EnterUpdateMode(5));
  EXPECT_TRUE(hidapi.writes.empty());
}

// The link is lost behind the mode's reply, and nobody is there to be configured.
TEST_F(C1UpdateModeTest, WithoutALinkNothingIsConfigured) {
  ASSERT_TRUE(update.EnterUpdateMode(5));
  hidapi.writes.clear();
  hidapi.onWrite = [this, answer = hidapi.onWrite](const Bytes& report) {
    answer(report);
    HidDevice::opened = false;
    hidapi.deviceCount = 0;
  };
  EXPECT_FALSE(update.EnterUpdateMode(5));
  EXPECT_EQ(hidapi.SentMessages(), Messages{kMode});
  EXPECT_EQ(update.flashCapacity, 0);
}

TEST_F(C1UpdateModeTest, AReplyOfTotal0IsARefusal) {
  for (const uint8_t code : Bytes{0x01, 0x0B}) {
    keyboard.commands.clear();
    keyboard.AnswerTotal0(code);
    EXPECT_TRUE(update.EnterUpdateMode(2));
    EXPECT_EQ(keyboard.CountOf(code), 2U);
  }
}

struct Attempts {
  int32_t retries;
  size_t modeRefusals, configureRefusals;
  size_t modes, configures;  // what is sent
  bool succeeds;
};

// For the names of the cases; GoogleTest would print the bytes between the fields too.
void PrintTo(const Attempts& attempts, std::ostream* output) {
  *output << attempts.retries << " retries, mode refused " << attempts.modeRefusals
          << " times, configuration " << attempts.configureRefusals << " times";
}

class C1UpdateRetryTest : public C1UpdateModeTest, public testing::WithParamInterface<Attempts> {};

TEST_P(C1UpdateRetryTest, ModeAndConfigurationShareTheAttempts) {
  const Attempts& c = GetParam();
  Refuse(0x01, c.modeRefusals);
  Refuse(0x0B, c.configureRefusals);
  EXPECT_EQ(update.EnterUpdateMode(c.retries), c.succeeds);
  EXPECT_EQ(keyboard.CountOf(0x01), c.modes);
  EXPECT_EQ(keyboard.CountOf(0x0B), c.configures);
}

// What the first refusals take, the others lack: five attempts are at most four refused modes and
// one configuration, or one mode and five configurations.
INSTANTIATE_TEST_SUITE_P(
    Boundaries, C1UpdateRetryTest,
    testing::Values(Attempts{1, 0, 0, 1, 1, true}, Attempts{1, 1, 0, 1, 0, false},
                    Attempts{1, 0, 1, 1, 1, false}, Attempts{2, 1, 0, 2, 1, true},
                    Attempts{2, 0, 1, 1, 2, true}, Attempts{2, 1, 1, 2, 1, false},
                    Attempts{5, 3, 0, 4, 1, true}, Attempts{5, 4, 0, 5, 1, true},
                    Attempts{5, 5, 0, 5, 0, false}, Attempts{5, 4, 1, 5, 1, false},
                    Attempts{5, 3, 1, 4, 2, true}, Attempts{5, 3, 2, 4, 2, false},
                    Attempts{5, 2, 2, 3, 3, true}, Attempts{5, 2, 3, 3, 3, false},
                    Attempts{5, 0, 3, 1, 4, true}, Attempts{5, 0, 4, 1, 5, true},
                    Attempts{5, 0, 5, 1, 5, false}));

TEST_F(C1UpdateModeTest, AFailedReadIsARefusal) {
  keyboard.AnswerNext(0x01, {std::nullopt});
  keyboard.AnswerNext(0x0B, {std::nullopt});
  EXPECT_TRUE(update.EnterUpdateMode(3));
  EXPECT_EQ(hidapi.SentMessages(), (Messages{kMode, kMode, kConfigure, kConfigure}));
}

TEST_F(C1UpdateModeTest, AFailedSendIsARefusal) {
  for (const size_t send : {1U, 2U}) {
    hidapi.failingWrite = send;
    EXPECT_TRUE(update.EnterUpdateMode(2));
    hidapi.failingWrite = send;
    EXPECT_FALSE(update.EnterUpdateMode(1));
  }
}

TEST_F(C1UpdateModeTest, TheCapacityMustReachTheSpan) {
  struct Case {
    Bytes capacity;
    bool fits;
  };
  const std::vector<Case> cases{{Hex("7F 00 00 00"), false}, {Hex("80 00 00 00"), true},
                                {Hex("81 00 00 00"), true},  {Hex("FF FF FF 7F"), true},
                                {Hex("00 00 00 80"), false}, {Hex("FF FF FF FF"), false}};
  for (const Case& c : cases) {
    keyboard.capacity = c.capacity;
    EXPECT_EQ(update.EnterUpdateMode(5), c.fits) << testing::PrintToString(c.capacity);
  }
}

TEST_F(C1UpdateModeTest, ACapacityOf0FailsAndIsNotAskedForAgain) {
  keyboard.capacity = Hex("00 00 00 00");
  EXPECT_FALSE(update.EnterUpdateMode(5));
  EXPECT_EQ(keyboard.CountOf(0x0B), 1U);
}

// Each cut leaves low bytes that would be capacity enough by themselves.
TEST_F(C1UpdateModeTest, ACapacityThatDidNotComeWholeIsNegative) {
  ASSERT_TRUE(update.EnterUpdateMode(5));
  for (const Bytes& cut : {Hex("F1"), Hex("F1 FF"), Hex("F1 FF FF"), Hex("F1 FF FF FF")}) {
    keyboard.commands.clear();
    keyboard.AnswerNext(0x0B, {cut});
    EXPECT_FALSE(update.EnterUpdateMode(5)) << cut.size();
    EXPECT_LT(update.flashCapacity, 0) << cut.size();
    EXPECT_EQ(keyboard.CountOf(0x0B), 1U) << cut.size();
  }
}

TEST_F(C1UpdateModeTest, RefusedConfigurationsLeaveNoCapacityFromBefore) {
  ASSERT_TRUE(update.EnterUpdateMode(5));
  Refuse(0x0B, 5);
  EXPECT_FALSE(update.EnterUpdateMode(5));
  EXPECT_EQ(update.flashCapacity, 0);
}

TEST_F(C1UpdateModeTest, ASpanBeyond31BitsFitsNoFlash) {
  keyboard.capacity = Hex("FF FF FF 7F");
  update.flash.reservedSectors = {0};
  update.flash.sectorSize = 0x40000000;  // the second sector ends at 2^31
  ASSERT_TRUE(Plan(Counting(1)));
  EXPECT_FALSE(update.EnterUpdateMode(1));
  update.flash.sectorSize = 0x80000000;  // at 2^32, which is 0 in 32 bits
  ASSERT_TRUE(Plan(Counting(1)));
  EXPECT_FALSE(update.EnterUpdateMode(1));
  update.flash.sectorSize = 0x3FFFFFFF;
  ASSERT_TRUE(Plan(Counting(1)));
  EXPECT_TRUE(update.EnterUpdateMode(1));
}

class ReasonObserver : public UpdateObserver {
 public:
  void CommandFailed(const CommandFailure& failure) override { reason = failure.reason; }

  UpdateFailure reason = UpdateFailure::kNone;
};

TEST_F(C1UpdateModeTest, AFlashWithEverySectorReservedFails) {
  ReasonObserver observer;
  update.observer = &observer;
  update.flash.sectorSize = 0x80000000;
  update.flash.reservedSectors = {0, 0x80000000};
  keyboard.capacity = Hex("FF FF FF 7F");
  ASSERT_TRUE(Plan(Counting(1)));
  EXPECT_FALSE(update.EnterUpdateMode(1));
  EXPECT_EQ(observer.reason, UpdateFailure::kNoFreeSector);
}

TEST_F(C1UpdateModeTest, AFlashWithAFreeSectorBeyondItsCapacityIsTooSmall) {
  ReasonObserver observer;
  update.observer = &observer;
  update.flash.sectorSize = 0x1000;
  update.flash.reservedSectors = {0};
  keyboard.capacity = Hex("FF 1F 00 00");
  ASSERT_TRUE(Plan(Counting(1)));
  EXPECT_FALSE(update.EnterUpdateMode(1));
  EXPECT_EQ(observer.reason, UpdateFailure::kFlashTooSmall);
}

}  // namespace
}  // namespace hollin
