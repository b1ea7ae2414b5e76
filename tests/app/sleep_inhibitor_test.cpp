// SPDX-License-Identifier: MIT
// Speaks to a logind in software on a bus of its own.
#include "app/sleep_inhibitor.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QTest>
#include <array>
#include <optional>

#include "tests/support/subprocess.h"

namespace hollin {
namespace {

// A system bus without anything on it.
class SystemBus {
 public:
  SystemBus()
      : daemon({.command = {"/usr/bin/dbus-daemon", "--session", "--nofork", "--print-address"}}) {
    if (!daemon.ReadUntil("\n")) throw std::runtime_error("no bus: " + daemon.Err());
    qputenv("DBUS_SYSTEM_BUS_ADDRESS",
            QByteArray::fromStdString(daemon.Out().substr(0, daemon.Out().find('\n'))));
  }

  void StartLogind() {
    logind.emplace(Subprocess::Setup{
        .command = {"/usr/bin/python3", "-m", "dbusmock", "--system", "--template", "logind"}});
    ASSERT_TRUE(QTest::qWaitFor(
        [] {
          return QDBusConnection::systemBus().interface()->isServiceRegistered(
              "org.freedesktop.login1");
        },
        20000));
  }

  // What is held now: what, who, why and how.
  static std::string Inhibitors() {
    Subprocess tool({.command = {"/usr/bin/dbus-send", "--system", "--print-reply=literal",
                                 "--dest=org.freedesktop.login1", "/org/freedesktop/login1",
                                 "org.freedesktop.login1.Manager.ListInhibitors"}});
    tool.Wait();
    return tool.Out();
  }

 private:
  Subprocess daemon;
  std::optional<Subprocess> logind;
};

class SleepInhibitorTest : public ::testing::Test {
 protected:
  [[nodiscard]] static bool IsHeld() {
    return SystemBus::Inhibitors().find("sleep:shutdown:idle") != std::string::npos;
  }

  SystemBus bus;
  int argc = 1;
  std::array<char, 7> name{"hollin"};
  std::array<char*, 2> argv{name.data(), nullptr};
  QCoreApplication application{argc, argv.data()};
  SleepInhibitor inhibitor;
};

TEST_F(SleepInhibitorTest, HoldsSleepShutdownAndIdleUntilReleased) {
  bus.StartLogind();
  EXPECT_FALSE(IsHeld());
  inhibitor.Hold("Updating");
  EXPECT_TRUE(QTest::qWaitFor([this] { return inhibitor.IsHolding(); }));
  const std::string held = SystemBus::Inhibitors();
  for (const char* part : {"sleep:shutdown:idle", "Hollin", "Updating", "block"}) {
    EXPECT_NE(held.find(part), std::string::npos) << held;
  }
  inhibitor.Release();
  EXPECT_FALSE(inhibitor.IsHolding());
  EXPECT_TRUE(QTest::qWaitFor([] { return !IsHeld(); }));
}

TEST_F(SleepInhibitorTest, AnswerThatComesTooLateHoldsNothing) {
  bus.StartLogind();
  inhibitor.Hold("Updating");
  inhibitor.Release();
  QTest::qWait(200);
  EXPECT_FALSE(inhibitor.IsHolding());
  EXPECT_FALSE(IsHeld());
}

TEST_F(SleepInhibitorTest, SecondHoldTakesThePlaceOfTheFirst) {
  bus.StartLogind();
  inhibitor.Hold("First");
  inhibitor.Release();
  inhibitor.Hold("Second");
  EXPECT_TRUE(QTest::qWaitFor([this] { return inhibitor.IsHolding(); }));
  EXPECT_TRUE(
      QTest::qWaitFor([] { return SystemBus::Inhibitors().find("First") == std::string::npos; }));
  EXPECT_NE(SystemBus::Inhibitors().find("Second"), std::string::npos);
}

TEST_F(SleepInhibitorTest, WithoutLogindNothingHappens) {
  inhibitor.Hold("Updating");
  QTest::qWait(100);
  EXPECT_FALSE(inhibitor.IsHolding());
  inhibitor.Release();
}

TEST(SleepInhibitorBusTest, WithoutABusNothingHappens) {
  qputenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nowhere/bus");
  int argc = 1;
  std::array<char, 7> name{"hollin"};
  std::array<char*, 2> argv{name.data(), nullptr};
  const QCoreApplication application(argc, argv.data());
  SleepInhibitor inhibitor;
  inhibitor.Hold("Updating");
  QTest::qWait(20);
  EXPECT_FALSE(inhibitor.IsHolding());
  inhibitor.Release();
}

}  // namespace
}  // namespace hollin
