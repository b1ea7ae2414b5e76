// SPDX-License-Identifier: MIT
#include "app/device_watcher.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/netlink.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QSignalSpy>
#include <QTimer>
#include <algorithm>
#include <array>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <utility>

#include "tests/app/settle.h"
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
  [[nodiscard]] bool IsAny() const {
    pollfd end{ends[0], POLLIN, 0};
    return poll(&end, 1, 0) > 0;
  }

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

  // The watcher's two timers: what comes goes off once, who has to look looks again and again.
  [[nodiscard]] QTimer& Timer(bool isSingleShot) const {
    const auto timers = watcher->findChildren<QTimer*>();
    return **std::ranges::find(timers, isSingleShot, &QTimer::isSingleShot);
  }
  [[nodiscard]] QTimer& Quiet() const { return Timer(true); }
  [[nodiscard]] QTimer& Look() const { return Timer(false); }
  // An event comes and reaches the watcher.
  void Come() {
    events->Come();
    ASSERT_TRUE(Await([this] { return !events->IsAny(); }));
  }
  // A timer's time passes, without waiting for it.
  static void Pass(QTimer& timer) {
    const auto interval = timer.intervalAsDuration();
    const QSignalSpy passed(&timer, &QTimer::timeout);
    timer.setInterval(0);
    EXPECT_TRUE(Await([&] { return passed.count() > 0; }));
    timer.setInterval(interval);
  }

  int argc = 1;
  std::array<char, 7> name{"hollin"};
  std::array<char*, 2> argv{name.data(), nullptr};
  QCoreApplication application{argc, argv.data()};
  PipedEvents* events = nullptr;
  std::unique_ptr<DeviceWatcher> watcher;
  std::unique_ptr<QSignalSpy> changes;
};

TEST_F(DeviceWatcherTest, ChangeIsToldThreeHundredMillisecondsAfterAnEvent) {
  EXPECT_FALSE(Quiet().isActive());
  Come();
  EXPECT_TRUE(Quiet().isActive());
  EXPECT_EQ(Quiet().intervalAsDuration(), 300ms);
  EXPECT_EQ(changes->count(), 0);
  Pass(Quiet());
  EXPECT_FALSE(Quiet().isActive());
  EXPECT_EQ(changes->count(), 1);
}

TEST_F(DeviceWatcherTest, EachFurtherEventBeginsTheQuietAnew) {
  Come();
  Quiet().setInterval(1h);
  Come();
  EXPECT_EQ(Quiet().intervalAsDuration(), 300ms);
  Pass(Quiet());
  EXPECT_EQ(changes->count(), 1);
}

TEST_F(DeviceWatcherTest, LaterEventIsToldAgain) {
  Come();
  Pass(Quiet());
  Come();
  Pass(Quiet());
  EXPECT_EQ(changes->count(), 2);
}

TEST_F(DeviceWatcherTest, NothingIsToldWithoutEvents) {
  Settle();
  EXPECT_FALSE(Quiet().isActive());
  EXPECT_FALSE(Look().isActive());
  EXPECT_EQ(changes->count(), 0);
}

TEST_F(DeviceWatcherTest, WatcherThatGoesTellsNothing) {
  Come();
  Quiet().setInterval(0);
  watcher.reset();
  Settle();
  EXPECT_EQ(changes->count(), 0);
}

TEST_F(DeviceWatcherTest, WhereNothingTellsOneLooksEveryTwoSeconds) {
  const TempFolder folder;
  watcher = std::make_unique<DeviceWatcher>(FolderEvents(folder.Path()));
  changes = std::make_unique<QSignalSpy>(watcher.get(), &DeviceWatcher::DevicesChanged);
  EXPECT_EQ(Look().intervalAsDuration(), 2000ms);
  Pass(Look());
  EXPECT_FALSE(Quiet().isActive());
  std::filesystem::create_symlink("../a", folder.Path("hidraw0"));
  Pass(Look());
  EXPECT_TRUE(Quiet().isActive());
  Pass(Quiet());
  EXPECT_EQ(changes->count(), 1);
}

// Whether there may be a socket for the news of devices.
bool IsNewsAllowed() {
  const int file = socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_KOBJECT_UEVENT);
  if (file >= 0) close(file);
  return file >= 0;
}

TEST_F(DeviceWatcherTest, UdevOrTheKernelTellsButInASandbox) {
  std::error_code error;
  const std::string space = std::filesystem::read_symlink("/proc/self/ns/user", error).string();
  const bool isInSandbox = !space.empty() && space != "user:[4026531837]";
  const std::unique_ptr<DeviceEvents> monitor = MonitorEvents();
  EXPECT_EQ(monitor != nullptr, !isInSandbox && IsNewsAllowed());
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
