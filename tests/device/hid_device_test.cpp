// SPDX-License-Identifier: MIT
// Counting, opening and closing; sending and receiving have files of their own.
#include "device/hid_device.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <type_traits>
#include <vector>

#include "device/ax_update.h"
#include "tests/support/hex_bytes.h"
#include "tests/support/link_test.h"
#include "tests/support/recorded_log.h"

namespace hollin {
namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::IsEmpty;
using ::testing::Pair;
using ::testing::StartsWith;

class HidDeviceTest : public LinkTest {
 protected:
  AXUpdate updater{"description", "image"};
};

TEST_F(HidDeviceTest, TheFirstConnectMakesTheLinkObjectAndCountsItsMaking) {
  ASSERT_TRUE(HidDevice::Connect(updater));
  EXPECT_NE(HidDevice::instance, nullptr);
  EXPECT_EQ(HidDevice::instanceCount, 1);
  EXPECT_EQ(updater.link, HidDevice::instance);
}

TEST_F(HidDeviceTest, TheWindowMayMakeTheLinkObjectFirst) {
  HidDevice* const made = HidDevice::Instance();
  EXPECT_EQ(HidDevice::instanceCount, 1);
  ASSERT_TRUE(HidDevice::Connect(updater));
  EXPECT_EQ(HidDevice::instance, made);
  EXPECT_EQ(HidDevice::instanceCount, 1);
}

TEST_F(HidDeviceTest, TheLinkObjectIsMadeEvenWhenNoKeyboardIsThere) {
  hidapi.deviceCount = 0;
  EXPECT_FALSE(HidDevice::Connect(updater));
  EXPECT_EQ(HidDevice::instanceCount, 1);
}

TEST_F(HidDeviceTest, TheLinkObjectHoldsNoDataAndOutlivesEveryClose) {
  static_assert(std::is_empty_v<HidDevice>);
  HidDevice* const made = HidDevice::Instance();
  ASSERT_TRUE(HidDevice::Connect(updater));
  HidDevice::Close();
  ASSERT_TRUE(HidDevice::Connect(updater));
  EXPECT_EQ(HidDevice::instance, made);
  EXPECT_EQ(HidDevice::instanceCount, 1);
}

TEST_F(HidDeviceTest, MakingTheLinkObjectTouchesNoDevice) {
  HidDevice::Instance();
  EXPECT_THAT(hidapi.calls, IsEmpty());
  EXPECT_EQ(HidDevice::handle, nullptr);
}

TEST_F(HidDeviceTest, CountingListsTheConfiguredIdsAndFreesTheList) {
  hidapi.deviceCount = 3;
  EXPECT_EQ(HidDevice::DeviceCount(), 3U);
  EXPECT_THAT(hidapi.calls, ElementsAre("hid_enumerate", "hid_free_enumeration"));
  EXPECT_THAT(hidapi.enumeratedIds, ElementsAre(Pair(0x1234, 0xABCD)));
  EXPECT_EQ(hidapi.unfreedLists, 0U);
  EXPECT_FALSE(HidDevice::IsOpen());
}

TEST_F(HidDeviceTest, AnEmptyListCountsAsNone) {
  hidapi.deviceCount = 0;
  EXPECT_EQ(HidDevice::DeviceCount(), 0U);
}

TEST_F(HidDeviceTest, CountingLeavesAnOpenLinkOpen) {
  OpenLink();
  EXPECT_EQ(HidDevice::DeviceCount(), 1U);
  EXPECT_THAT(hidapi.calls, ElementsAre("hid_enumerate", "hid_free_enumeration"));
  EXPECT_TRUE(HidDevice::IsOpen());
  EXPECT_NE(HidDevice::handle, nullptr);
}

TEST_F(HidDeviceTest, ConnectOpensWhenExactlyOneKeyboardIsThere) {
  const std::vector<std::pair<size_t, bool>> cases = {
      {0, false}, {1, true}, {2, false}, {3, false}};
  for (const auto& [count, opens] : cases) {
    SCOPED_TRACE(count);
    hidapi.deviceCount = count;
    hidapi.calls.clear();
    EXPECT_EQ(HidDevice::Connect(updater), opens);
    EXPECT_EQ(HidDevice::IsOpen(), opens);
    EXPECT_EQ(hidapi.CountOf("hid_open"), opens ? 1U : 0U);
    HidDevice::Close();
  }
}

TEST_F(HidDeviceTest, ConnectCountsFirstAndOpensThen) {
  ASSERT_TRUE(HidDevice::Connect(updater));
  EXPECT_THAT(hidapi.calls, ElementsAre("hid_enumerate", "hid_free_enumeration", "hid_open"));
}

TEST_F(HidDeviceTest, OpenAsksForTheConfiguredIdsAndNoSerialNumber) {
  HidDevice::vendorId = 0xFFFE;
  HidDevice::productId = 0x0001;
  ASSERT_TRUE(HidDevice::Open());
  EXPECT_THAT(hidapi.openedIds, ElementsAre(Pair(0xFFFE, 0x0001)));
  EXPECT_TRUE(HidDevice::opened);
  EXPECT_NE(HidDevice::handle, nullptr);
}

TEST_F(HidDeviceTest, OpenSucceedsAtOnceWhileAHandleIsHeld) {
  OpenLink();
  EXPECT_TRUE(HidDevice::Open());
  EXPECT_THAT(hidapi.calls, IsEmpty());
}

TEST_F(HidDeviceTest, AKeyboardThatCannotBeOpenedFailsWithoutASecondAttempt) {
  hidapi.failingOpen = 1;
  EXPECT_FALSE(HidDevice::Connect(updater));
  EXPECT_EQ(hidapi.CountOf("hid_open"), 1U);
  EXPECT_FALSE(HidDevice::IsOpen());
  EXPECT_EQ(HidDevice::handle, nullptr);
  EXPECT_TRUE(HidDevice::Connect(updater));
}

TEST_F(HidDeviceTest, WhyAKeyboardCannotBeOpenedIsLoggedOnceInTheLibrarysWords) {
  const RecordedLog log;
  hidapi.failingOpen = 1;
  hidapi.error = L"Failed to open a device with path '/dev/hidraw0': Zugriff verweigert \u00FC";
  EXPECT_FALSE(HidDevice::Connect(updater));
  EXPECT_THAT(log.lines, ElementsAre("Cannot open the keyboard: Failed to open a device with path "
                                     "'/dev/hidraw0': Zugriff verweigert \xC3\xBC"));
}

TEST_F(HidDeviceTest, AnOpenWithoutWordsOrWithWordsThatAreNoTextIsLoggedToo) {
  const RecordedLog log;
  const wchar_t noText[] = {L'a', static_cast<wchar_t>(0x7FFFFFFF), 0xD800, L'\n', L'b', 0};
  for (const wchar_t* words : {static_cast<const wchar_t*>(nullptr), L"", noText}) {
    hidapi.failingOpen = 1;
    hidapi.error = words;
    EXPECT_FALSE(HidDevice::Open());
  }
  ASSERT_EQ(log.lines.size(), 3U);
  EXPECT_EQ(log.lines[0], "Cannot open the keyboard: ");
  EXPECT_EQ(log.lines[1], "Cannot open the keyboard: ");
  EXPECT_THAT(log.lines[2], AllOf(StartsWith("Cannot open the keyboard: a"), EndsWith("\\x0Ab")));
}

TEST_F(HidDeviceTest, AKeyboardThatIsNotThereOrNotAloneIsNotLogged) {
  const RecordedLog log;
  for (const size_t count : {0U, 2U}) {
    hidapi.deviceCount = count;
    EXPECT_FALSE(HidDevice::Connect(updater));
  }
  EXPECT_THAT(log.lines, IsEmpty());
}

TEST_F(HidDeviceTest, WithTheLinkClosedASecondKeyboardMakesConnectFail) {
  hidapi.deviceCount = 2;
  EXPECT_FALSE(HidDevice::Connect(updater));
  EXPECT_EQ(hidapi.CountOf("hid_open"), 0U);
}

TEST_F(HidDeviceTest, WithTheLinkOpenASecondKeyboardDoesNotMatterAndNothingIsCounted) {
  ASSERT_TRUE(HidDevice::Connect(updater));
  hidapi.calls.clear();
  for (const size_t count : {size_t{0}, size_t{1}, size_t{2}}) {
    hidapi.deviceCount = count;
    EXPECT_TRUE(HidDevice::Connect(updater));
  }
  EXPECT_THAT(hidapi.calls, IsEmpty());
}

TEST_F(HidDeviceTest, TwoUpdatersShareTheOpenDevice) {
  AXUpdate second("description 2", "image 2");
  ASSERT_TRUE(HidDevice::Connect(updater));
  ASSERT_TRUE(HidDevice::Connect(second));
  EXPECT_EQ(hidapi.CountOf("hid_open"), 1U);
  EXPECT_EQ(updater.link, second.link);
}

TEST_F(HidDeviceTest, CloseClosesTheDeviceAndThenHidapiItself) {
  OpenLink();
  HidDevice::Close();
  EXPECT_THAT(hidapi.calls, ElementsAre("hid_close", "hid_exit"));
  EXPECT_FALSE(HidDevice::IsOpen());
  EXPECT_EQ(HidDevice::handle, nullptr);
}

TEST_F(HidDeviceTest, AfterCloseTheNextConnectCountsAndOpensAgain) {
  ASSERT_TRUE(HidDevice::Connect(updater));
  HidDevice::Close();
  hidapi.calls.clear();
  ASSERT_TRUE(HidDevice::Connect(updater));
  EXPECT_THAT(hidapi.calls, ElementsAre("hid_enumerate", "hid_free_enumeration", "hid_open"));
}

TEST_F(HidDeviceTest, AfterCloseAKeyboardThatWentAwayIsMissed) {
  ASSERT_TRUE(HidDevice::Connect(updater));
  HidDevice::Close();
  hidapi.deviceCount = 0;
  EXPECT_FALSE(HidDevice::Connect(updater));
}

TEST_F(HidDeviceTest, ClosingAClosedLinkDoesNothing) {
  HidDevice::Close();
  OpenLink();
  HidDevice::Close();
  hidapi.calls.clear();
  HidDevice::Close();
  EXPECT_THAT(hidapi.calls, IsEmpty());
}

TEST_F(HidDeviceTest, AClosedLinkNeitherSendsNorReceives) {
  Bytes buffer(4);
  EXPECT_FALSE(HidDevice::SendMessage(Hex("09 00 00 00")));
  EXPECT_FALSE(HidDevice::ReceiveMessage(buffer));
  EXPECT_THAT(hidapi.calls, IsEmpty());
}

TEST_F(HidDeviceTest, IdsAreSixteenBitsWide) {
  static_assert(std::is_same_v<decltype(HidDevice::vendorId), uint16_t>);
  static_assert(std::is_same_v<decltype(HidDevice::productId), uint16_t>);
  HidDevice::vendorId = 0;
  HidDevice::productId = 0xFFFF;
  static_cast<void>(HidDevice::DeviceCount());
  EXPECT_THAT(hidapi.enumeratedIds, ElementsAre(Pair(0, 0xFFFF)));
}

}  // namespace
}  // namespace hollin
