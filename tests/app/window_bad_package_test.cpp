// SPDX-License-Identifier: MIT
// A good package in the window, then a bad one, then Refresh and Update, which stay on: nothing of
// either package is written, and nothing is called a success.
#include "tests/app/bad_packages.h"
#include "tests/app/window_test.h"

namespace hollin {
namespace {

class WindowBadPackageTest : public WindowTest, public ::testing::WithParamInterface<BadPackage> {};

TEST_P(WindowBadPackageTest, RefreshAndUpdateSendNothingAndTellAFailure) {
  const RecordedPause pauses;
  hidapi.deviceCount = 1;
  Open(folder.Write("good.dat", GetParam().Before()));
  ASSERT_EQ(ButtonStates(), kReadyWithDevice);
  Open(folder.Write("bad.dat", GetParam().After()));
  ASSERT_EQ(window->alerts.size(), 1U);
  EXPECT_EQ(ButtonStates(), kReadyWithDevice);

  window->buttonRefresh->click();
  EXPECT_EQ(window->progressStatus->maximum(), 1);
  hidapi.calls.clear();
  window->buttonUpdate->click();
  AwaitEndOfUpdate();

  ASSERT_EQ(window->alerts.size(), 2U);
  EXPECT_EQ(AlertText(1), "Update Error!");
  EXPECT_EQ(hidapi.calls, std::vector<std::string>{});
  EXPECT_TRUE(pauses.lengths.empty());
}

INSTANTIATE_TEST_SUITE_P(AfterAGoodOne, WindowBadPackageTest, ::testing::ValuesIn(BadPackages()),
                         NameOfBadPackage);

}  // namespace
}  // namespace hollin
