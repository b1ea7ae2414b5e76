// SPDX-License-Identifier: MIT
#include "app/process_end.h"

#include <cstdio>
#include <cstdlib>

#include "app/main_window.h"

namespace hollin {
namespace {

MainWindow* suddenlyLeft = nullptr;

void LeaveAtOnceIfThereWasAWorker(int code) {
  if (!MainWindow::WasWorkerStarted()) return;
  std::fflush(nullptr);
  std::_Exit(code);
}

extern "C" void EndSuddenly() {
  if (suddenlyLeft == nullptr) return;
  suddenlyLeft->RemoveTempFile();
  LeaveAtOnceIfThereWasAWorker(EXIT_FAILURE);
}

}  // namespace

void PrepareForSuddenEnd(MainWindow& window) {
  suddenlyLeft = &window;
  static_cast<void>(std::atexit(EndSuddenly));
}

// A package that waited for a dialog may have been opened when the dialog went, behind the
// quitting.
int Leave(int code) {
  if (suddenlyLeft != nullptr) suddenlyLeft->RemoveTempFile();
  suddenlyLeft = nullptr;
  LeaveAtOnceIfThereWasAWorker(code);
  return code;
}

}  // namespace hollin
