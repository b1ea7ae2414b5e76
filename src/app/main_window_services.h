// SPDX-License-Identifier: MIT
// What the program connects its window to. Nothing of it is begun before the window was painted.
#pragma once

namespace hollin {

class MainWindow;

// Keyboards that come and go refresh the window.
void WatchDevices(MainWindow& window);

// While an update runs, the machine stays awake and on.
void KeepAwakeWhileUpdating(MainWindow& window);

}  // namespace hollin
