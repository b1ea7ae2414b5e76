// SPDX-License-Identifier: MIT
#include "app/device_watcher.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QSignalSpy>
#include <QTest>
#include <array>
#include <stdexcept>
#include <utility>

namespace hollin {
namespace {

using namespace std::chrono_literals;

// Events that a test writes itself.
class PipedEvents : public DeviceEvents {
 public:
  PipedEvents() {
    if (pipe2(ends.data(), O_NONBLOCK) != 0) throw std::runtime_error("no pipe");
  }
  ~PipedEvents() override {
    for (const int end : ends) close(end);
  }
  PipedEvents(const PipedEvents&) = delete;
  PipedEvents& operator=(const PipedEvents&) = delete;

  [[nodiscard]] int Descriptor() const override { return ends[0]; }
  bool TakeAll() override {
    std::array<char, 64> bytes{};
    return read(ends[0], bytes.data(), bytes.size()) > 0;
  }
  void Come() { ASSERT_EQ(write(ends[1], "e", 1), 1); }

 private:
  std::array<int, 2> ends{};
};

class NoEvents : public DeviceEvents {
 public:
  [[nodiscard]] int Descriptor() const override { return -1; }
  bool TakeAll() override { throw std::logic_error("asked for events that cannot come"); }
};

class DeviceWatcherTest : public ::testing::Test {
 protected:
  DeviceWatcherTest() {
    auto piped = std::make_unique<PipedEvents>();
    events = piped.get();
    watcher = std::make_unique<DeviceWatcher>(std::move(piped));
    changes = std::make_unique<QSignalSpy>(watcher.get(), &DeviceWatcher::DevicesChanged);
  }

  int argc = 1;
  std::array<char, 7> name{"hollin"};
  std::array<char*, 2> argv{name.data(), nullptr};
  QCoreApplication application{argc, argv.data()};
  PipedEvents* events = nullptr;
  std::unique_ptr<DeviceWatcher> watcher;
  std::unique_ptr<QSignalSpy> changes;
};

TEST_F(DeviceWatcherTest, ChangeIsToldThreeHundredMillisecondsAfterTheLastEvent) {
  EXPECT_EQ(DeviceWatcher::kQuiet, 300ms);
  QElapsedTimer sinceLast;
  for (int i = 0; i < 3; i++) {
    events->Come();
    sinceLast.start();
    QTest::qWait(100);
  }
  EXPECT_EQ(changes->count(), 0);
  EXPECT_TRUE(changes->wait(2000));
  EXPECT_GE(sinceLast.elapsed(), 285);  // the timer may be 5 % early
  EXPECT_EQ(changes->count(), 1);
}

TEST_F(DeviceWatcherTest, LaterEventIsToldAgain) {
  events->Come();
  EXPECT_TRUE(changes->wait(2000));
  events->Come();
  EXPECT_TRUE(changes->wait(2000));
  EXPECT_EQ(changes->count(), 2);
}

TEST_F(DeviceWatcherTest, NothingIsToldWithoutEvents) {
  QTest::qWait(350);
  EXPECT_EQ(changes->count(), 0);
}

TEST_F(DeviceWatcherTest, WatcherThatGoesTellsNothing) {
  events->Come();
  QTest::qWait(20);
  watcher.reset();
  QTest::qWait(350);
  EXPECT_EQ(changes->count(), 0);
}

TEST_F(DeviceWatcherTest, WithoutASourceNothingIsAsked) {
  const DeviceWatcher deaf(std::make_unique<NoEvents>());
  const QSignalSpy told(&deaf, &DeviceWatcher::DevicesChanged);
  QTest::qWait(20);
  EXPECT_EQ(told.count(), 0);
}

TEST_F(DeviceWatcherTest, MonitorOfUdevStartsWithoutEvents) {
  const std::unique_ptr<DeviceEvents> monitor = UdevEvents();
  if (monitor->Descriptor() >= 0) {
    EXPECT_FALSE(monitor->TakeAll());
  } else {
    EXPECT_EQ(monitor->Descriptor(), -1);
  }
}

}  // namespace
}  // namespace hollin
