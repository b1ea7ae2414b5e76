// SPDX-License-Identifier: MIT
#include "app/main_window_services.h"

#include <memory>
#include <utility>

#include "app/device_watcher.h"
#include "app/main_window.h"
#include "app/sleep_inhibitor.h"

namespace hollin {
namespace {

std::unique_ptr<DeviceEvents> Events() {
  auto events = MonitorEvents();
  return events ? std::move(events) : FolderEvents("/sys/class/hidraw");
}

}  // namespace

void WatchDevices(MainWindow& window) {
  QObject::connect(&window, &MainWindow::Painted, &window, [&window] {
    const auto* const watcher = new DeviceWatcher(Events(), &window);
    QObject::connect(watcher, &DeviceWatcher::DevicesChanged, &window,
                     &MainWindow::DevicesMayHaveChanged);
  });
}

void KeepAwakeWhileUpdating(MainWindow& window) {
  auto* const inhibitor = new SleepInhibitor(&window);
  QObject::connect(&window, &MainWindow::UpdateStarted, inhibitor,
                   [inhibitor] { inhibitor->Hold(MainWindow::tr("A keyboard is being updated")); });
  QObject::connect(&window, &MainWindow::UpdateEnded, inhibitor, &SleepInhibitor::Release);
}

}  // namespace hollin
