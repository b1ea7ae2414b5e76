// SPDX-License-Identifier: MIT
// The program's side of the session bus, as far as it needs no program of its own.
#include "app/bus_service.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <array>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tests/app/session_bus.h"
#include "tests/app/settle.h"

namespace hollin {
namespace {

constexpr const char* kToken = "XDG_ACTIVATION_TOKEN";

// Has the program's name and answers when it is told to.
class SilentProgram : public QDBusVirtualObject {
 public:
  explicit SilentProgram(const SessionBus& bus) : connection(bus.Connection()) {
    connection.registerVirtualObject("/com/tovari/Hollin", this);
    connection.registerService("com.tovari.Hollin");
  }
  [[nodiscard]] QString introspect(const QString& /*path*/) const override { return {}; }
  bool handleMessage(const QDBusMessage& message, const QDBusConnection& /*bus*/) override {
    message.setDelayedReply(true);
    asked.push_back(message);
    return true;
  }
  void Answer() { connection.send(asked.back().createReply()); }

  std::vector<QDBusMessage> asked;

 private:
  QDBusConnection connection;
};

class BusServiceTest : public ::testing::Test {
 protected:
  BusServiceTest() {
    for (const char* name : {"XDG_ACTIVATION_TOKEN", "DESKTOP_STARTUP_ID"}) unsetenv(name);
    const auto [variable, address] = session.Environment();
    setenv(variable.c_str(), address.c_str(), 1);
  }
  void HandOver(QObject& context) {
    HandOverLater({.package = "/a.dat"}, &context, [this](bool isDone) { answer = isDone; });
  }
  // What is in the environment after a call with that platform data.
  std::string TokenAfter(const QVariantMap& platformData) {
    unsetenv(kToken);
    BusService service;
    EXPECT_EQ(service.Start(), BusService::State::kServing);
    EXPECT_TRUE(session.CallFromAside("Activate", {platformData}));
    return qEnvironmentVariable(kToken).toStdString();
  }

  int argc = 1;
  std::array<char, 7> name{"hollin"};
  std::array<char*, 2> argv{name.data(), nullptr};
  QCoreApplication application{argc, argv.data()};
  SessionBus session;
  std::optional<bool> answer;
};

TEST_F(BusServiceTest, HandingOverToASilentProgramDoesNotWait) {
  SilentProgram program(session);
  QObject context;
  HandOver(context);
  EXPECT_TRUE(Await([&] { return !program.asked.empty(); }));
  EXPECT_EQ(program.asked[0].member(), "Open");
  EXPECT_EQ(program.asked[0].arguments().at(0).toStringList(), QStringList("file:///a.dat"));
  EXPECT_FALSE(answer.has_value());
  program.Answer();
  EXPECT_TRUE(Await([&] { return answer.has_value(); }));
  EXPECT_EQ(answer, true);
}

TEST_F(BusServiceTest, HandingOverToNobodyIsAnsweredWithNo) {
  QObject context;
  HandOver(context);
  EXPECT_TRUE(Await([&] { return answer.has_value(); }));
  EXPECT_EQ(answer, false);
}

TEST_F(BusServiceTest, WithoutABusHandingOverIsAnsweredLaterToo) {
  setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nowhere/bus", 1);
  QObject context;
  HandOver(context);
  EXPECT_FALSE(answer.has_value());
  EXPECT_TRUE(Await([&] { return answer.has_value(); }));
  EXPECT_EQ(answer, false);
}

TEST_F(BusServiceTest, WhoHasGoneGetsNoAnswer) {
  SilentProgram program(session);
  auto context = std::make_unique<QObject>();
  HandOver(*context);
  EXPECT_TRUE(Await([&] { return !program.asked.empty(); }));
  context.reset();
  program.Answer();
  QObject other;
  HandOver(other);  // is answered behind the first
  EXPECT_TRUE(Await([&] { return program.asked.size() == 2; }));
  EXPECT_FALSE(answer.has_value());
}

TEST_F(BusServiceTest, ActivationTokenIsTaken) {
  EXPECT_EQ(TokenAfter({{"activation-token", "t1"}, {"desktop-startup-id", "s1"}}), "t1");
}

TEST_F(BusServiceTest, StartupIdOfOlderStartersIsTakenWhereThereIsNoToken) {
  EXPECT_EQ(TokenAfter({{"desktop-startup-id", "s1"}}), "s1");
  EXPECT_EQ(TokenAfter({}), "");
}

TEST_F(BusServiceTest, BothAreHandedFromProgramToProgram) {
  setenv(kToken, "t1", 1);
  setenv("DESKTOP_STARTUP_ID", "s1", 1);
  EXPECT_EQ(ReadStartRequest().platformData,
            (QVariantMap{{"activation-token", "t1"}, {"desktop-startup-id", "s1"}}));
}

}  // namespace
}  // namespace hollin
