// SPDX-License-Identifier: MIT
#include "app/main_window_services.h"

#include "app/device_watcher.h"
#include "app/main_window.h"

namespace hollin {

void WatchDevices(MainWindow& window) {
  QObject::connect(&window, &MainWindow::Painted, &window, [&window] {
    const auto* const watcher = new DeviceWatcher(UdevEvents(), &window);
    QObject::connect(watcher, &DeviceWatcher::DevicesChanged, &window,
                     &MainWindow::DevicesMayHaveChanged);
  });
}

}  // namespace hollin
