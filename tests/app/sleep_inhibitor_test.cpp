// SPDX-License-Identifier: MIT
// Speaks to a logind in software on a bus of its own.
#include "app/sleep_inhibitor.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDBusPendingCallWatcher>
#include <array>
#include <cstdlib>

#include "tests/app/settle.h"
#include "tests/app/system_bus.h"

namespace hollin {
namespace {

class InhibitorTest : public ::testing::Test {
 protected:
  // Until every question to logind was answered, or found nobody, and the answer was taken. That it
  // finds nobody may be known at once.
  void AwaitAnswers() {
    ASSERT_TRUE(
        Await([this] { return inhibitor.findChild<QDBusPendingCallWatcher*>() == nullptr; }));
  }

  int argc = 1;
  std::array<char, 7> name{"hollin"};
  std::array<char*, 2> argv{name.data(), nullptr};
  QCoreApplication application{argc, argv.data()};
  SleepInhibitor inhibitor;
};

class SleepInhibitorTest : public InhibitorTest {
 protected:
  SystemBus bus;
};

class SleepInhibitorBusTest : public InhibitorTest {};

TEST_F(SleepInhibitorTest, HoldsSleepShutdownAndIdleUntilReleased) {
  bus.StartLogind();
  EXPECT_FALSE(SystemBus::IsHeldFor("Updating"));
  inhibitor.Hold("Updating");
  AwaitAnswers();
  EXPECT_TRUE(inhibitor.IsHolding());
  for (const char* part : {"sleep:shutdown:idle", "Hollin", "Updating", "block"}) {
    EXPECT_TRUE(SystemBus::IsHeldFor(part)) << part;
  }
  inhibitor.Release();
  EXPECT_FALSE(inhibitor.IsHolding());
  EXPECT_TRUE(Await([] { return !SystemBus::IsHeldFor("Updating"); }));
}

TEST_F(SleepInhibitorTest, AnswerThatComesTooLateHoldsNothing) {
  bus.StartLogind();
  inhibitor.Hold("Updating");
  inhibitor.Release();
  AwaitAnswers();
  EXPECT_FALSE(inhibitor.IsHolding());
  EXPECT_TRUE(Await([] { return !SystemBus::IsHeldFor("Updating"); }));
}

TEST_F(SleepInhibitorTest, SecondHoldTakesThePlaceOfTheFirst) {
  bus.StartLogind();
  inhibitor.Hold("First");
  inhibitor.Release();
  inhibitor.Hold("Second");
  AwaitAnswers();
  EXPECT_TRUE(inhibitor.IsHolding());
  EXPECT_TRUE(Await([] { return !SystemBus::IsHeldFor("First"); }));
  EXPECT_TRUE(SystemBus::IsHeldFor("Second"));
}

TEST_F(SleepInhibitorTest, WithoutLogindNothingHappensUntilThereIsOne) {
  inhibitor.Hold("Updating");
  AwaitAnswers();
  EXPECT_FALSE(inhibitor.IsHolding());
  inhibitor.Release();
  bus.StartLogind();
  inhibitor.Hold("Updating");
  AwaitAnswers();
  EXPECT_TRUE(inhibitor.IsHolding());
}

TEST_F(SleepInhibitorBusTest, WithoutABusNothingHappens) {
  setenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nowhere/bus", 1);
  inhibitor.Hold("Updating");
  EXPECT_FALSE(inhibitor.IsHolding());
  EXPECT_TRUE(inhibitor.children().isEmpty());  // nothing is waited for
}

}  // namespace
}  // namespace hollin
