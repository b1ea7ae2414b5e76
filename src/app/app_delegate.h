// SPDX-License-Identifier: MIT
// What happens at the start and at the end of the program. All of it on the main thread.
#pragma once

namespace hollin {

class MainWindow;

enum class TerminateReply { kNow, kCancel };

class AppDelegate {
 public:
  [[nodiscard]] MainWindow* window() const { return mainWindow; }
  // The window is not owned and must outlive the delegate.
  void setWindow(MainWindow* newWindow) { mainWindow = newWindow; }

  void applicationDidFinishLaunching();
  [[nodiscard]] TerminateReply applicationShouldTerminate();

  // What Quit, the closing of the idle window and a signal lead to: asks the two questions above
  // and ends the event loop. A second request while the first one is being answered does nothing.
  void Terminate();

 private:
  MainWindow* mainWindow = nullptr;
  bool isTerminating = false;
};

}  // namespace hollin
