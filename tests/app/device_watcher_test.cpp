// SPDX-License-Identifier: MIT
#include "app/device_watcher.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QSignalSpy>
#include <QTest>
#include <array>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <utility>

#include "tests/support/temp_folder.h"

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

// A folder of links as those of the devices, watched without anybody who tells.
class DeviceFolderTest : public ::testing::Test {
 protected:
  void Plug(const std::string& node, const std::string& device) const {
    std::filesystem::create_symlink("../" + device, folder.Path(node));
  }
  void Pull(const std::string& node) const { std::filesystem::remove(folder.Path(node)); }

  TempFolder folder;
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

TEST_F(DeviceWatcherTest, WhereNothingTellsOneLooksEveryTwoSeconds) {
  EXPECT_EQ(DeviceWatcher::kBetween, 2000ms);
  const TempFolder folder;
  const DeviceWatcher looking(FolderEvents(folder.Path()), nullptr, 10ms);
  QSignalSpy told(&looking, &DeviceWatcher::DevicesChanged);
  QTest::qWait(50);
  EXPECT_EQ(told.count(), 0);
  std::filesystem::create_symlink("../a", folder.Path("hidraw0"));
  EXPECT_TRUE(told.wait(2000));
  QTest::qWait(50);
  EXPECT_EQ(told.count(), 1);
}

TEST_F(DeviceWatcherTest, UdevTellsWhereItRunsAndOnlyThere) {
  const std::unique_ptr<DeviceEvents> monitor = UdevEvents();
  EXPECT_EQ(monitor != nullptr, access("/run/udev/control", F_OK) == 0);
  if (monitor == nullptr) return;
  EXPECT_GE(monitor->Descriptor(), 0);
  EXPECT_FALSE(monitor->TakeAll());
}

TEST_F(DeviceFolderTest, DeviceThatComesOrGoesIsAnEvent) {
  const auto events = FolderEvents(folder.Path());
  EXPECT_LT(events->Descriptor(), 0);
  EXPECT_FALSE(events->TakeAll());
  Plug("hidraw0", "1");
  EXPECT_TRUE(events->TakeAll());
  EXPECT_FALSE(events->TakeAll());
  Pull("hidraw0");
  EXPECT_TRUE(events->TakeAll());
}

TEST_F(DeviceFolderTest, AnotherDeviceUnderTheSameNameIsAnEvent) {
  Plug("hidraw0", "1");
  const auto events = FolderEvents(folder.Path());
  Pull("hidraw0");
  Plug("hidraw0", "2");
  EXPECT_TRUE(events->TakeAll());
}

TEST_F(DeviceFolderTest, FolderThatIsNotThereYetMayCome) {
  const auto events = FolderEvents(folder.Path("class"));
  EXPECT_FALSE(events->TakeAll());
  std::filesystem::create_directory(folder.Path("class"));
  EXPECT_FALSE(events->TakeAll());
  Plug("class/hidraw0", "1");
  EXPECT_TRUE(events->TakeAll());
}

}  // namespace
}  // namespace hollin
