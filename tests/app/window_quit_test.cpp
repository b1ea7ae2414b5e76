// SPDX-License-Identifier: MIT
// Start, closing and the end of the program, as far as they need no program of their own.
#include <QFile>
#include <QMessageBox>
#include <QSignalSpy>
#include <QTimer>

#include "app/app_delegate.h"
#include "app/quit_signals.h"
#include "tests/app/window_test.h"

namespace hollin {
namespace {

class WindowQuitTest : public WindowTest {
 protected:
  WindowQuitTest() {
    delegate.setWindow(window.get());
    QApplication::setQuitOnLastWindowClosed(false);
  }

  AppDelegate delegate;
};

TEST_F(WindowQuitTest, LaunchInitialisesTheWindowFromTheDefaults) {
  window->SetButtonEnable(true);
  delegate.applicationDidFinishLaunching();
  EXPECT_EQ(delegate.window(), window.get());
  EXPECT_EQ(ButtonStates(), kStarted);
  EXPECT_EQ(window->windowTitle(), "Varnholt TS30 Firmware Update V2.0.0");
  EXPECT_EQ(HidDevice::vendorId, 0x1C3E);
  EXPECT_EQ(HidDevice::productId, 0x2B91);
}

TEST_F(WindowQuitTest, QuittingRemovesTheTemporaryFiles) {
  OpenGoodPackage(0);
  EXPECT_TRUE(TempFilesExist());
  EXPECT_EQ(delegate.applicationShouldTerminate(), TerminateReply::kNow);
  EXPECT_FALSE(TempFilesExist());
}

TEST_F(WindowQuitTest, QuittingWithoutAPackageRemovesNothing) {
  OpenGoodPackage(0);
  window = std::make_unique<TestWindow>();
  delegate.setWindow(window.get());
  EXPECT_EQ(delegate.applicationShouldTerminate(), TerminateReply::kNow);
  EXPECT_TRUE(TempFilesExist());
}

TEST_F(WindowQuitTest, ClosingTheIdleWindowAsksToQuitAndNothingElse) {
  window->show();
  const QSignalSpy requests(window.get(), &MainWindow::CloseRequested);
  EXPECT_FALSE(window->close());
  EXPECT_EQ(requests.count(), 1);
  EXPECT_TRUE(window->isVisible());
}

TEST_F(WindowQuitTest, TerminateEndsTheEventLoop) {
  OpenGoodPackage(0);
  window->show();
  InEventLoop([this] { delegate.Terminate(); });
  EXPECT_TRUE(EventLoopEnds());
  EXPECT_FALSE(TempFilesExist());
}

TEST_F(WindowQuitTest, TerminateEndsTheEventLoopWhileUpdating) {
  HeldPause pauses;
  OpenGoodPackage(0);
  UseFakeUpdate(1);
  window->show();
  window->UpdateDevice();
  pauses.AwaitPause();
  InEventLoop([this] { delegate.Terminate(); });
  EXPECT_TRUE(EventLoopEnds());
  EXPECT_FALSE(TempFilesExist());
  EXPECT_TRUE(MainWindow::IsWorkerAlive());
  pauses.Release();
  AwaitEndOfUpdate();
}

TEST_F(WindowQuitTest, TerminateEndsTheEventLoopOfAnAlertToo) {
  bool isAlertOver = false;
  InEventLoop([&] {
    InEventLoop([this] { delegate.Terminate(); });
    RunAlert({.message = "Error", .informativeText = "x"}, window.get());
    isAlertOver = true;
  });
  EXPECT_TRUE(EventLoopEnds());
  EXPECT_TRUE(isAlertOver);
}

TEST_F(WindowQuitTest, RequestOfTheDesktopIsAskedAboutAndClosesNoWindow) {
  window->show();
  const QSignalSpy closings(window.get(), &MainWindow::CloseRequested);
  int requests = 0;
  CallOnQuitEvent([&] {
    requests++;
    if (requests == 2) delegate.Terminate();
  });
  InEventLoop([this] {
    QCoreApplication::quit();
    InEventLoop([] { QCoreApplication::quit(); });
  });
  EXPECT_TRUE(EventLoopEnds());
  EXPECT_EQ(requests, 2);
  EXPECT_EQ(closings.count(), 0);
  EXPECT_TRUE(window->isVisible());
}

TEST_F(WindowQuitTest, ClosingWhileUpdatingOnlyHides) {
  HeldPause pauses;
  UseFakeUpdate(2);
  window->show();
  const QSignalSpy requests(window.get(), &MainWindow::CloseRequested);
  window->UpdateDevice();
  pauses.AwaitPause();
  window->close();
  EXPECT_FALSE(window->isVisible());
  EXPECT_TRUE(window->IsUpdating());
  EXPECT_EQ(requests.count(), 0);
  bool wasVisibleDuringAlert = false;
  window->duringDialog = [&] { wasVisibleDuringAlert = window->isVisible(); };
  pauses.Release(2);
  AwaitEndOfUpdate();
  EXPECT_TRUE(wasVisibleDuringAlert);
  EXPECT_EQ(window->progressStatus->value(), 2);
  EXPECT_EQ(ButtonStates(), kFinished);
}

TEST_F(WindowQuitTest, MinimisedWindowComesBackWithTheFinalAlert) {
  const RecordedPause pauses;
  UseFakeUpdate(1).failingStep = 0;
  window->showMinimized();
  bool wasMinimisedDuringAlert = true;
  window->duringDialog = [&] { wasMinimisedDuringAlert = window->isMinimized(); };
  Update();
  EXPECT_FALSE(wasMinimisedDuringAlert);
}

}  // namespace
}  // namespace hollin
