// SPDX-License-Identifier: MIT
#include "app/device_watcher.h"

#include <libudev.h>

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

Owned<udev_monitor> StartMonitor(udev* context) {
  if (context == nullptr) return nullptr;
  Owned<udev_monitor> monitor(udev_monitor_new_from_netlink(context, "udev"));
  if (monitor == nullptr ||
      udev_monitor_filter_add_match_subsystem_devtype(monitor.get(), "hidraw", nullptr) < 0 ||
      udev_monitor_enable_receiving(monitor.get()) < 0) {
    return nullptr;
  }
  return monitor;
}

class UdevMonitorEvents : public DeviceEvents {
 public:
  UdevMonitorEvents() : context(udev_new()), monitor(StartMonitor(context.get())) {}

  [[nodiscard]] int Descriptor() const override {
    return monitor == nullptr ? -1 : udev_monitor_get_fd(monitor.get());
  }

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

}  // namespace

std::unique_ptr<DeviceEvents> UdevEvents() { return std::make_unique<UdevMonitorEvents>(); }

DeviceWatcher::DeviceWatcher(std::unique_ptr<DeviceEvents> eventSource, QObject* parent)
    : QObject(parent), events(std::move(eventSource)) {
  quiet.setSingleShot(true);
  quiet.setInterval(kQuiet);
  connect(&quiet, &QTimer::timeout, this, &DeviceWatcher::DevicesChanged);
  if (events->Descriptor() < 0) return;  // the user presses Refresh then
  notifier = std::make_unique<QSocketNotifier>(events->Descriptor(), QSocketNotifier::Read);
  connect(notifier.get(), &QSocketNotifier::activated, this, &DeviceWatcher::NoteEvents);
}

void DeviceWatcher::NoteEvents() {
  if (events->TakeAll()) quiet.start();
}

}  // namespace hollin
