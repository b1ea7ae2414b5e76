// SPDX-License-Identifier: MIT
// The window and logind: the machine is held exactly as long as an update runs.
#include "app/main_window_services.h"
#include "tests/app/system_bus.h"
#include "tests/app/window_test.h"

namespace hollin {
namespace {

constexpr const char* kReason = "A keyboard is being updated";

class KeepAwakeTest : public WindowTest {
 protected:
  KeepAwakeTest() {
    bus.StartLogind();
    KeepAwakeWhileUpdating(*window);
  }
  // Whether it is held, as soon as that is as expected.
  [[nodiscard]] static bool BecomesHeld(bool expected) {
    return Await([&] { return SystemBus::IsHeldFor(kReason) == expected; });
  }

  SystemBus bus;
};

TEST_F(KeepAwakeTest, MachineIsHeldFromTheStartOfAnUpdateToItsEnd) {
  HeldPause pauses;
  UseFakeUpdate(2);
  EXPECT_FALSE(SystemBus::IsHeldFor(kReason));
  window->UpdateDevice();
  pauses.AwaitPause();
  EXPECT_TRUE(BecomesHeld(true));
  pauses.Release();
  pauses.AwaitPause();
  EXPECT_TRUE(SystemBus::IsHeldFor(kReason));
  bool isReleasedDuringAlert = false;
  window->duringDialog = [&] { isReleasedDuringAlert = BecomesHeld(false); };
  pauses.Release();
  AwaitEndOfUpdate();
  EXPECT_TRUE(isReleasedDuringAlert);
}

TEST_F(KeepAwakeTest, FailedUpdateReleasesTheMachineTooAndTheNextHoldsItAgain) {
  HeldPause pauses;
  UseFakeUpdate(2).failingStep = 1;
  for (int run = 0; run < 2; run++) {
    window->UpdateDevice();
    pauses.AwaitPause();
    EXPECT_TRUE(BecomesHeld(true));
    pauses.Release();
    AwaitEndOfUpdate();
    EXPECT_TRUE(BecomesHeld(false));
  }
}

}  // namespace
}  // namespace hollin
