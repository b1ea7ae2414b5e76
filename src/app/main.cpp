// SPDX-License-Identifier: MIT
// The window program: hollin [PACKAGE]
#include <QApplication>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "app/app_delegate.h"
#include "app/main_window.h"
#include "app/main_window_services.h"
#include "app/process_signals.h"
#include "app/quit_signals.h"
#include "app/window_options.h"

namespace {

using hollin::AppDelegate;
using hollin::MainWindow;

// From the event loop, so that the window is there before a message about the package is.
void OpenWhenShown(MainWindow& window, const std::string& path) {
  QMetaObject::invokeMethod(
      &window, [&window, path] { window.OpenDatAtPath(path); }, Qt::QueuedConnection);
}

// A worker may wait for a silent keyboard for ever, and what it uses must not be taken from under
// it: no destructors then.
int Leave(int code) {
  if (!MainWindow::IsWorkerAlive()) return code;
  std::fflush(nullptr);
  std::_Exit(code);
}

}  // namespace

int main(int argc, char** argv) {
  const std::string answer = argc > 1 ? hollin::AnswerToOption(argv[1]) : "";
  if (!answer.empty()) return std::fputs(answer.c_str(), stdout) < 0 ? 1 : 0;
  hollin::IgnoreFileSizeSignal();
  const QApplication application(argc, argv);
  QApplication::setApplicationName("Hollin");
  QApplication::setQuitOnLastWindowClosed(false);  // the delegate decides
  MainWindow window;
  AppDelegate delegate;
  delegate.setWindow(&window);
  const auto terminate = [&delegate] { delegate.Terminate(); };
  QObject::connect(&window, &MainWindow::CloseRequested, terminate);
  QObject::connect(&window, &MainWindow::QuitRequested, terminate);
  hollin::WatchDevices(window);
  hollin::CallOnQuitSignals(terminate);
  delegate.applicationDidFinishLaunching();
  window.show();
  if (argc > 1) OpenWhenShown(window, argv[1]);
  return Leave(QApplication::exec());
}
