// SPDX-License-Identifier: MIT
// The window program: hollin [PACKAGE]
#include <fontconfig/fontconfig.h>
#include <malloc.h>

#include <QApplication>
#include <QTimer>
#include <chrono>
#include <clocale>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <future>
#include <memory>
#include <string>
#include <system_error>
#include <utility>

#include "app/app_delegate.h"
#include "app/bus_service.h"
#include "app/file_uri.h"
#include "app/instance_lock.h"
#include "app/keyboard_picture.h"
#include "app/main_window.h"
#include "app/main_window_services.h"
#include "app/process_end.h"
#include "app/process_signals.h"
#include "app/program_name.h"
#include "app/quit_signals.h"
#include "app/single_instance.h"
#include "app/theme.h"
#include "app/translations.h"
#include "app/window_options.h"

namespace hollin {
namespace {

constexpr int kBusy = 5;  // as hollin-cli ends when another Hollin is at work

// Begins to read which fonts there are; where no thread can be had, whoever waits for it reads.
// Meanwhile Qt takes a variable of the desktop's out of the environment; fontconfig may then miss
// one of its own, at worst, and looks where it looks without it.
std::future<FcBool> StartReadingFonts() {
  return std::async(std::launch::async | std::launch::deferred, FcInit);
}

// The running program, which may be handed the path, has a working folder of its own.
std::string PackagePath(const std::string& argument) {
  if (const auto path = PathOfFileUri(argument)) return *path;
  std::error_code failed;
  std::string path = std::filesystem::absolute(argument, failed).string();
  return failed ? argument : path;
}

// Once, after the window's first painting: the window shall not wait for it. One that the desktop
// starts minimised is not painted at all.
void CallWhenPainted(MainWindow& window, const std::function<void()>& call) {
  constexpr std::chrono::seconds kNotPainted{2};
  const auto isCalled = std::make_shared<bool>(false);
  const auto callOnce = [call, isCalled] {
    if (!std::exchange(*isCalled, true)) call();
  };
  QObject::connect(&window, &MainWindow::Painted, &window, callOnce);
  QTimer::singleShot(kNotPainted, &window, callOnce);
}

void ConnectWindow(MainWindow& window, AppDelegate& delegate) {
  const auto terminate = [&delegate] { delegate.Terminate(); };
  QObject::connect(&window, &MainWindow::CloseRequested, terminate);
  QObject::connect(&window, &MainWindow::QuitRequested, terminate);
  QObject::connect(&window, &MainWindow::SaveRequested, [&delegate] { delegate.saveAction(); });
  window.windowWillReturnUndoManager = [&delegate] {
    return delegate.windowWillReturnUndoManager();
  };
  CallOnQuitSignals(terminate);
  CallOnQuitEvent(terminate);
}

void ConnectBus(BusService& bus, MainWindow& window, AppDelegate& delegate) {
  QObject::connect(&bus, &BusService::ActivateRequested, [&window, &delegate] {
    delegate.applicationShouldHandleReopen(window.isVisible());
  });
  QObject::connect(&bus, &BusService::OpenRequested, &window, &MainWindow::OpenDatFromOutside);
  QObject::connect(&bus, &BusService::QuitRequested, [&delegate] { delegate.Terminate(); });
}

// Who has the name already, without holding the lock, is to be the one.
void Begin(BusService& bus, MainWindow& window, AppDelegate& delegate,
           const StartRequest& request) {
  QApplication::setWindowIcon(DrawProgramIcon());
  if (bus.Start() == BusService::State::kNameTaken && HandOver(request)) {
    return delegate.Terminate();
  }
  if (!request.package.empty()) window.OpenDatFromOutside(request.package);
}

int RunWindow(const StartRequest& request) {
  MainWindow window;
  AppDelegate delegate;
  BusService bus;
  delegate.setWindow(&window);
  ConnectWindow(window, delegate);
  ConnectBus(bus, window, delegate);
  WatchDevices(window);
  KeepAwakeWhileUpdating(window);
  CallWhenPainted(window, [&] { Begin(bus, window, delegate, request); });
  delegate.applicationDidFinishLaunching();
  PrepareForSuddenEnd(window);
  window.show();
  return Leave(QApplication::exec());
}

}  // namespace
}  // namespace hollin

int main(int argc, char** argv) {
  const std::string answer = argc > 1 ? hollin::AnswerToOption(argv[1]) : "";
  if (!answer.empty()) return std::fputs(answer.c_str(), stdout) < 0 ? 1 : 0;
  hollin::IgnoreFileSizeSignal();
  hollin::IgnoreBrokenPipeSignal();  // as of an X server that goes
  hollin::StartRequest request = hollin::ReadStartRequest();
  std::setlocale(LC_ALL, "");  // as Qt will, but before numbers of the fonts' files are read by it
  mallopt(M_ARENA_MAX, 1);     // else what that thread frees stays in a heap of its own
  // While the display answers: one after the other, the first picture would come a tenth later.
  const std::future<FcBool> fonts = hollin::StartReadingFonts();
  const QApplication application(argc, argv);
  fonts.wait();
  hollin::NameProgram();
  QApplication::setQuitOnLastWindowClosed(false);  // the delegate decides
  if (argc > 1) request.package = hollin::PackagePath(argv[1]);
  hollin::UseLanguageOfLocale();
  hollin::UseOwnLook();
  hollin::InstanceLock lock;
  switch (hollin::StartOnlyOnce(lock, request)) {
    case hollin::StartOutcome::kHandedOver:
      return 0;
    case hollin::StartOutcome::kGivenUp:
      return hollin::kBusy;
    case hollin::StartOutcome::kGoOn:
      break;
  }
  return hollin::RunWindow(request);
}
