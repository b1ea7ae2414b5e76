// SPDX-License-Identifier: MIT
#include "app/app_delegate.h"

#include <QCoreApplication>

#include "app/main_window.h"

namespace hollin {

void AppDelegate::applicationDidFinishLaunching() {
  mainWindow->InitButton();
  LoadDeviceSettings(*mainWindow);
}

// The temporary files go first, whatever follows.
TerminateReply AppDelegate::applicationShouldTerminate() {
  mainWindow->RemoveTempFile();
  return TerminateReply::kNow;
}

// Not QCoreApplication::quit, which asks the window to close: that one hides while it updates.
void AppDelegate::Terminate() {
  if (isTerminating) return;
  isTerminating = true;
  if (applicationShouldTerminate() == TerminateReply::kNow) QCoreApplication::exit(0);
  isTerminating = false;
}

}  // namespace hollin
