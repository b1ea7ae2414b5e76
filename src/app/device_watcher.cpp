// SPDX-License-Identifier: MIT
#include "app/device_watcher.h"

#include <libudev.h>
#include <unistd.h>

#include <filesystem>
#include <map>
#include <system_error>
#include <utility>

namespace hollin {
namespace {

struct Unref {
  void operator()(udev* context) const { udev_unref(context); }
  void operator()(udev_monitor* monitor) const { udev_monitor_unref(monitor); }
  void operator()(udev_device* device) const { udev_device_unref(device); }
};
template <typename Object>
using Owned = std::unique_ptr<Object, Unref>;

Owned<udev_monitor> StartMonitor(udev* context, const char* teller) {
  if (context == nullptr) return nullptr;
  Owned<udev_monitor> monitor(udev_monitor_new_from_netlink(context, teller));
  if (monitor == nullptr ||
      udev_monitor_filter_add_match_subsystem_devtype(monitor.get(), "hidraw", nullptr) < 0 ||
      udev_monitor_enable_receiving(monitor.get()) < 0) {
    return nullptr;
  }
  return monitor;
}

bool IsUdevRunning() { return access("/run/udev/control", F_OK) == 0; }

// In a user namespace, as sandboxes make them, a monitor can be had but hears neither udev nor the
// kernel. The first namespace, which is none, has a fixed number; a kernel without them has no
// link.
bool IsInSandbox() {
  std::error_code error;
  const auto space = std::filesystem::read_symlink("/proc/self/ns/user", error);
  return error ? error != std::errc::no_such_file_or_directory : space != "user:[4026531837]";
}

class UdevMonitorEvents : public DeviceEvents {
 public:
  explicit UdevMonitorEvents(const char* teller)
      : context(udev_new()), monitor(StartMonitor(context.get(), teller)) {}

  [[nodiscard]] bool IsWorking() const { return monitor != nullptr; }
  [[nodiscard]] int Descriptor() const override { return udev_monitor_get_fd(monitor.get()); }

  // The monitor's descriptor does not block.
  bool TakeAll() override {
    bool isAny = false;
    while (Owned<udev_device>(udev_monitor_receive_device(monitor.get()))) isAny = true;
    return isAny;
  }

 private:
  Owned<udev> context;
  Owned<udev_monitor> monitor;
};

// What each link leads to tells a keyboard from the one that was there before under its name.
class ListedEvents : public DeviceEvents {
 public:
  explicit ListedEvents(std::string watchedFolder)
      : folder(std::move(watchedFolder)), known(Links()) {}

  [[nodiscard]] int Descriptor() const override { return -1; }
  bool TakeAll() override { return std::exchange(known, Links()) != known; }

 private:
  using LinkMap = std::map<std::string, std::string>;

  [[nodiscard]] LinkMap Links() const {
    LinkMap links;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
      std::error_code noLink;
      links[entry->path().string()] = std::filesystem::read_symlink(entry->path(), noLink).string();
    }
    return links;
  }

  std::string folder;
  LinkMap known;
};

}  // namespace

std::unique_ptr<DeviceEvents> MonitorEvents() {
  if (IsInSandbox()) return nullptr;
  auto events = std::make_unique<UdevMonitorEvents>(IsUdevRunning() ? "udev" : "kernel");
  return events->IsWorking() ? std::move(events) : nullptr;
}

std::unique_ptr<DeviceEvents> FolderEvents(const std::string& folder) {
  return std::make_unique<ListedEvents>(folder);
}

DeviceWatcher::DeviceWatcher(std::unique_ptr<DeviceEvents> eventSource, QObject* parent)
    : QObject(parent), events(std::move(eventSource)) {
  quiet.setSingleShot(true);
  connect(&quiet, &QTimer::timeout, this, &DeviceWatcher::DevicesChanged);
  if (events->Descriptor() < 0) {
    connect(&look, &QTimer::timeout, this, &DeviceWatcher::NoteEvents);
    look.start(kBetween);
    return;
  }
  notifier = std::make_unique<QSocketNotifier>(events->Descriptor(), QSocketNotifier::Read);
  connect(notifier.get(), &QSocketNotifier::activated, this, &DeviceWatcher::NoteEvents);
}

void DeviceWatcher::NoteEvents() {
  if (events->TakeAll()) quiet.start(kQuiet);
}

}  // namespace hollin
