// SPDX-License-Identifier: MIT
// Long use: updates in one window, of every kind and with every fault, each from the opening of its
// package to its final alert. Nothing piles up. HOLLIN_SOAK_UPDATES says how many;
// script/endurance wants a thousand.
#include <gtest/gtest.h>

#include <QApplication>
#include <QPushButton>
#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <iterator>
#include <random>
#include <vector>

#include "app/main_window.h"
#include "base/log.h"
#include "base/pause.h"
#include "device/hid_device.h"
#include "simulator/in_process_hidapi.h"
#include "tests/campaign/reference_updates.h"
#include "tests/campaign/resources.h"
#include "tests/support/eventually.h"
#include "tests/support/temp_folder.h"

namespace hollin::campaign {
namespace {

using simulator::Fault;
using simulator::FaultKind;
using simulator::FaultMoment;
using simulator::InProcessHidapi;
using simulator::Keyboard;

size_t UpdatesWanted() {
  const char* const given = std::getenv("HOLLIN_SOAK_UPDATES");
  return given == nullptr ? 50 : std::stoul(given);
}

// All but the one that would halt this process.
std::vector<simulator::FaultDescription> FaultsOfTheWire() {
  std::vector<simulator::FaultDescription> faults;
  std::ranges::copy_if(simulator::FaultDescriptions(), std::back_inserter(faults),
                       [](const auto& fault) { return fault.kind != FaultKind::kHold; });
  return faults;
}

class SoakWindow : public MainWindow {
 public:
  size_t alertCount = 0;
  QString lastAlert;

 protected:
  void ShowAlert(const Alert& alert) override {
    alertCount++;
    lastAlert = alert.message;
  }
};

class SoakTest : public ::testing::Test {
 protected:
  SoakTest() {
    hidapi.recordCalls = false;
    SetLogFunction([](const std::string&) {});
    SetPauseFunction([this](std::chrono::milliseconds length) { hidapi.PassTime(length); });
    for (const ReferenceUpdate& update : updates) {
      packages.push_back(
          folder.Write("package" + std::to_string(packages.size()) + ".dat", PackageOf(update)));
    }
    window.InitButton();
    window.show();
  }
  ~SoakTest() override {
    window.RemoveTempFile();
    SetPauseFunction({});
    SetLogFunction({});
  }

  // Any fault at any moment that suits it.
  Fault AnyFault() {
    static const auto known = FaultsOfTheWire();
    const auto& chosen = known[random() % known.size()];
    const std::string moments = chosen.moments;
    return {.kind = chosen.kind,
            .moment = static_cast<FaultMoment>(
                std::string("hcro").find(moments[random() % moments.size()])),
            .index = 1 + random() % (chosen.kind == FaultKind::kOpenFails ? 1 : 300),
            .parameter = chosen.parameter,
            .times = chosen.times};
  }
  // Opens the package and presses Update; the owner pulls the plug of a keyboard that is silent.
  void Update(size_t number, const std::vector<Fault>& faults) {
    const size_t kind = number % updates.size();
    simulator::KeyboardOptions options = updates[kind].keyboard;
    options.faults.insert(options.faults.end(), faults.begin(), faults.end());
    Keyboard& keyboard = hidapi.Attach(options);
    HidDevice::vendorId = options.vendorId;
    HidDevice::productId = options.productId;
    hidapi.onBlock = [&keyboard] { keyboard.Unplug(); };
    window.OpenDatAtPath(packages[kind]);
    window.buttonUpdate->click();
    while (window.IsUpdating()) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    hidapi.Reset();
  }
  void OpenBrokenPackage() { window.OpenDatAtPath(folder.Write("broken.dat", "no package")); }

  int argc = 1;
  std::array<char, 7> name{"hollin"};
  std::array<char*, 2> argv{name.data(), nullptr};
  QApplication application{argc, argv.data()};
  TempFolder folder;
  InProcessHidapi& hidapi = InProcessHidapi::Instance();
  std::vector<ReferenceUpdate> updates = ReferenceUpdates();
  std::vector<std::string> packages;
  std::mt19937 random{30};
  SoakWindow window;
};

TEST_F(SoakTest, ManyUpdatesLeaveNothingBehind) {
  const size_t count = UpdatesWanted();
  constexpr size_t kWarm = 10;
  constexpr size_t kMostGrowth = size_t{1} << 20;
  const size_t idleThreads = Threads();
  size_t descriptors = 0;
  size_t bytes = 0;
  size_t successes = 0;
  for (size_t i = 0; i < count; i++) {
    if (i == kWarm) {
      descriptors = OpenDescriptors();
      bytes = AllocatedBytes();
    }
    const bool isFaulty = i % 3 != 0;
    Update(i, isFaulty ? std::vector{AnyFault()} : std::vector<Fault>{});
    EXPECT_EQ(hidapi.openHandles, 0U) << i;
    EXPECT_TRUE(isFaulty || window.lastAlert == "Information") << i;
    if (window.lastAlert == "Information") successes++;
    if (i % 10 == 9) OpenBrokenPackage();
  }
  EXPECT_EQ(window.alertCount, count + count / 10);
  EXPECT_EQ(OpenDescriptors(), descriptors);
  EXPECT_TRUE(Eventually([&] { return Threads() == idleThreads; })) << Threads();
  const size_t now = AllocatedBytes();
  EXPECT_LT(now, bytes + kMostGrowth);
  std::cout << successes << " of " << count << " succeeded; " << static_cast<long>(now - bytes)
            << " bytes more than after " << kWarm << "\n";
}

}  // namespace
}  // namespace hollin::campaign
