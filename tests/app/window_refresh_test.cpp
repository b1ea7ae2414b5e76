// SPDX-License-Identifier: MIT
#include "tests/app/window_test.h"

namespace hollin {
namespace {

struct NotConnected {
  const char* name;
  std::array<std::string, 3> keys;
  const char* status;
};

std::ostream& operator<<(std::ostream& out, const NotConnected& test) { return out << test.name; }

class WindowRefreshTest : public WindowTest {};
class WindowNotConnectedTest : public WindowTest,
                               public ::testing::WithParamInterface<NotConnected> {};

TEST_F(WindowRefreshTest, CountsTheConfiguredIds) {
  HidDevice::vendorId = 0x1C3E;
  HidDevice::productId = 0x2B91;
  window->RefreshDevice();
  EXPECT_EQ(hidapi.calls, (std::vector<std::string>{"hid_enumerate", "hid_free_enumeration"}));
  EXPECT_EQ(hidapi.enumeratedIds, (std::vector<ScriptedHidapi::Ids>{{0x1C3E, 0x2B91}}));
}

TEST_F(WindowRefreshTest, FinderIsMadeOnceByTheFirstRefresh) {
  Open(folder.Path("missing.dat"));
  EXPECT_EQ(window->pUSB, nullptr);
  EXPECT_EQ(HidDevice::instanceCount, 0);
  window->RefreshDevice();
  HidDevice* const finder = window->pUSB;
  EXPECT_NE(finder, nullptr);
  window->RefreshDevice();
  EXPECT_EQ(window->pUSB, finder);
  EXPECT_EQ(HidDevice::instanceCount, 1);
}

TEST_F(WindowRefreshTest, KeyboardThatComesAndGoesSwitchesUpdate) {
  OpenGoodPackage(0);
  hidapi.deviceCount = 1;
  window->RefreshDevice();
  EXPECT_EQ(ButtonStates(), kReadyWithDevice);
  hidapi.deviceCount = 0;
  window->RefreshDevice();
  EXPECT_EQ(ButtonStates(), kReadyWithoutDevice);
}

TEST_F(WindowRefreshTest, TwoKeyboardsKeepUpdateOffWhateverThePackage) {
  for (const size_t packs : {1U, 2U}) {
    OpenGoodPackage(1, {.packs = packs});
    hidapi.deviceCount = 2;
    window->RefreshDevice();
    EXPECT_EQ(ButtonStates(), kReadyWithoutDevice);
    EXPECT_EQ(Status(), "More than one device! Remove some devices");
  }
}

TEST_F(WindowRefreshTest, ThreeKeyboardsAreMoreThanOneToo) {
  OpenGoodPackage(3);
  EXPECT_EQ(Status(), "More than one device! Remove some devices");
  EXPECT_FALSE(window->buttonUpdate->isEnabled());
}

TEST_F(WindowRefreshTest, RefreshAndOpenAreNotTouched) {
  for (const size_t devices : {0U, 1U, 2U}) {
    hidapi.deviceCount = devices;
    window->buttonRefresh->setEnabled(false);
    window->buttonOpen->setEnabled(false);
    window->RefreshDevice();
    EXPECT_EQ(ButtonStates(), (Buttons{false, devices == 1, false}));
  }
}

TEST_F(WindowRefreshTest, OneKeyboardSetsTheBarToTheSteps) {
  window->progressStatus->setRange(-5, 200);
  window->progressStatus->setValue(77);
  OpenGoodPackage(1, {.imageSize = 128});  // two blocks of 64 bytes, mode and verify
  EXPECT_EQ(window->progressStatus->maximum(), 4);
  EXPECT_EQ(window->progressStatus->minimum(), 0);
  EXPECT_EQ(window->progressStatus->value(), 0);
}

TEST_F(WindowRefreshTest, TwoPacksCountTogetherInTheBar) {
  OpenGoodPackage(1, {.packs = 2, .imageSize = 128});
  EXPECT_EQ(window->progressStatus->maximum(), 8);
}

TEST_F(WindowRefreshTest, NoneOrTwoKeyboardsLeaveTheBar) {
  window->progressStatus->setRange(0, 9);
  window->progressStatus->setValue(5);
  for (const size_t devices : {0U, 2U}) {
    hidapi.deviceCount = devices;
    window->RefreshDevice();
    EXPECT_EQ(window->progressStatus->maximum(), 9);
    EXPECT_EQ(window->progressStatus->value(), 5);
  }
}

// Qt shows a bar from 0 to 0 as one that is busy for ever.
TEST_F(WindowRefreshTest, BarIsNeverBusyWhateverTheStepCount) {
  const std::vector<std::pair<uint32_t, int>> cases = {
      {0, 1}, {1, 1}, {2, 2}, {0x7FFFFFFF, 0x7FFFFFFF}, {0x80000000, 1}, {0xFFFFFFFF, 1}};
  for (const auto& [steps, maximum] : cases) {
    UseFakeUpdate(steps);
    EXPECT_EQ(window->progressStatus->minimum(), 0) << steps;
    EXPECT_EQ(window->progressStatus->maximum(), maximum) << steps;
    EXPECT_EQ(window->progressStatus->value(), 0) << steps;
  }
}

TEST_P(WindowNotConnectedTest, NamesTheButtonsToHold) {
  OpenGoodPackage(0, {.keys = GetParam().keys});
  EXPECT_EQ(Status(), GetParam().status);
  EXPECT_EQ(ButtonStates(), kReadyWithoutDevice);
}

INSTANTIATE_TEST_SUITE_P(
    Keys, WindowNotConnectedTest,
    ::testing::Values(
        NotConnected{"None", {"", "", ""}, "The TS30 is not connected."},
        NotConnected{"One",
                     {"Shift", "", ""},
                     "The TS30 is not connected. Please hold down the \"Shift\" \r\n buttons while "
                     "powering on the TS30."},
        NotConnected{"Two",
                     {"Shift", "Play", ""},
                     "The TS30 is not connected. Please hold down the \"Shift\" and \"Play\" \r\n "
                     "buttons while powering on the TS30."},
        NotConnected{"Three",
                     {"Shift", "Play", "Record"},
                     "The TS30 is not connected. Please hold down the \"Shift\" + \"Play\" + "
                     "\"Record\" \r\n buttons while powering on the TS30."},
        NotConnected{"ThirdAlone",
                     {"", "", "Record"},
                     "The TS30 is not connected. Please hold down the \"\" + \"\" + \"Record\" "
                     "\r\n buttons while powering on the TS30."},
        NotConnected{"TextsThatLookLikeFormats",
                     {"%1 {}", "%3", "<b>&%n"},
                     "The TS30 is not connected. Please hold down the \"%1 {}\" + \"%3\" + "
                     "\"<b>&%n\" \r\n buttons while powering on the TS30."}),
    [](const auto& test) { return std::string(test.param.name); });

}  // namespace
}  // namespace hollin
