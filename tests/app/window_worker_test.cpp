// SPDX-License-Identifier: MIT
// The worker and a window that is busy, gone, or interrupted.
#include <unistd.h>

#include <QMessageBox>
#include <QSignalSpy>
#include <QTimer>
#include <cerrno>
#include <csignal>
#include <limits>

#include "app/text_label.h"
#include "app/update_loop.h"
#include "tests/app/window_test.h"

namespace hollin {
namespace {

class WindowWorkerTest : public WindowTest {
 protected:
  [[nodiscard]] std::vector<int> ValuesOf(const QSignalSpy& changes) const {
    std::vector<int> values;
    for (const auto& change : changes) values.push_back(change.at(0).toInt());
    return values;
  }
  // The worker's body, on a thread that has ended when this returns; no event was looked at.
  void RunWorkerMeanwhile(DatFileExamine& record) {
    const QPointer<MainWindow> shown(window.get());
    std::thread([&] { MainWindow::ThreadUpdate(record, application, shown); }).join();
  }
};

TEST_F(WindowWorkerTest, EveryNumberIsSeenHoweverLateTheWindowLooks) {
  const RecordedPause pauses;
  UseFakeUpdate(3);
  window->progressStatus->reset();
  const QSignalSpy changes(window->progressStatus, &QProgressBar::valueChanged);
  RunWorkerMeanwhile(window->datFile);
  EXPECT_EQ(changes.count(), 0);
  QApplication::sendPostedEvents();
  EXPECT_EQ(ValuesOf(changes), (std::vector{0, 1, 2, 3}));
  EXPECT_EQ(window->pVal, -1);
  EXPECT_EQ(window->alerts.size(), 1U);
}

TEST_F(WindowWorkerTest, WindowThatGoesWhileNumbersComeIsLeftAlone) {
  const RecordedPause pauses;
  constexpr uint32_t kSteps = 2000;
  UseFakeUpdate(kSteps);
  DatFileExamine record = std::move(window->datFile);
  const QPointer<MainWindow> shown(window.get());
  std::thread worker([&] { MainWindow::ThreadUpdate(record, application, shown); });
  EXPECT_TRUE(Await([this] { return window->progressStatus->value() > 0; }));
  window.reset();
  worker.join();
  QApplication::sendPostedEvents();
  EXPECT_TRUE(shown.isNull());
  EXPECT_EQ(pauses.lengths.size(), kSteps);
}

// As when the store's error is up while an update runs.
TEST_F(WindowWorkerTest, NumbersComeInOrderWithinTheLoopOfAnotherAlert) {
  HeldPause pauses;
  UseFakeUpdate(3);
  window->progressStatus->reset();
  const QSignalSpy changes(window->progressStatus, &QProgressBar::valueChanged);
  window->UpdateDevice();
  pauses.AwaitPause();
  bool wereFinishedWithinTheAlert = false;
  QTimer::singleShot(0, &application, [&] {
    pauses.Release(3);
    AwaitEndOfUpdate();
    wereFinishedWithinTheAlert = ButtonStates() == kFinished;
    QApplication::activeModalWidget()->close();
  });
  RunAlert({.message = "Error", .informativeText = "x"}, window.get());
  EXPECT_TRUE(wereFinishedWithinTheAlert);
  EXPECT_EQ(ValuesOf(changes), (std::vector{0, 1, 2, 3}));
}

TEST_F(WindowWorkerTest, WindowHiddenInTheFinalAlertStaysHiddenWithItsButtonsOn) {
  const RecordedPause pauses;
  UseFakeUpdate(1);
  window->show();
  window->duringDialog = [this] { window->hide(); };
  Update();
  EXPECT_FALSE(window->isVisible());
  EXPECT_EQ(ButtonStates(), kFinished);
}

TEST_F(WindowWorkerTest, LargestStepCountIsShownToItsEnd) {
  constexpr int kMost = std::numeric_limits<int>::max();
  UseFakeUpdate(kMost);
  window->ShowUpdating(kMost);
  window->RefreshProgress(kMost - 1);
  EXPECT_EQ(window->progressStatus->value(), kMost - 1);
  EXPECT_TRUE(window->progressNote->text().startsWith("Step 2147483647 of 2147483647"))
      << window->progressNote->text().toStdString();
  window->RefreshProgress(kUpdateSucceeded);
  EXPECT_EQ(window->progressStatus->value(), kMost);
}

extern "C" void DoNothing(int /*number*/) {}

// What a read of the keyboard is to the kernel. A handler without SA_RESTART would end it.
TEST_F(WindowWorkerTest, SignalsDoNotInterruptAReadOfTheWorker) {
  const RecordedPause pauses;
  std::array<int, 2> ends{};
  ASSERT_EQ(pipe(ends.data()), 0);
  std::binary_semaphore isReading{0};
  ssize_t count = 0;
  pthread_t worker{};
  UseFakeUpdate(1).onStep = [&](uint32_t) {
    char byte = 0;
    worker = pthread_self();
    isReading.release();
    count = read(ends[0], &byte, 1);
  };
  constexpr std::array kSignals = {SIGALRM, SIGCHLD, SIGUSR1, SIGUSR2, SIGWINCH};
  struct sigaction action = {};
  action.sa_handler = DoNothing;
  for (const int number : kSignals) ASSERT_EQ(sigaction(number, &action, nullptr), 0);
  window->UpdateDevice();
  isReading.acquire();
  constexpr int kStorm = 1000;
  for (int i = 0; i < kStorm; i++) {
    for (const int number : kSignals) pthread_kill(worker, number);
  }
  EXPECT_EQ(write(ends[1], "x", 1), 1);
  AwaitEndOfUpdate();
  EXPECT_EQ(count, 1);
  EXPECT_EQ(window->pVal, -1);
  close(ends[0]);
  close(ends[1]);
}

// Whoever hears of it may take long, such as a bus that does not answer.
TEST_F(WindowWorkerTest, UpdateRunsBeforeAnybodyIsToldOfItsStart) {
  HeldPause pauses;
  UseFakeUpdate(1);
  bool isRunning = false;
  QObject::connect(window.get(), &MainWindow::UpdateStarted,
                   [&] { isRunning = MainWindow::IsWorkerAlive(); });
  window->UpdateDevice();
  EXPECT_TRUE(isRunning);
  pauses.Release();
  AwaitEndOfUpdate();
}

TEST_F(WindowWorkerTest, UpdateWithoutAThreadFailsAndGivesTheButtonsBack) {
  constexpr size_t kNoRoom = size_t{1} << 47;  // for a stack
  UseFakeUpdate(1);
  pthread_attr_t usual;
  pthread_attr_t huge;
  ASSERT_EQ(pthread_getattr_default_np(&usual), 0);
  ASSERT_EQ(pthread_attr_init(&huge), 0);
  ASSERT_EQ(pthread_attr_setstacksize(&huge, kNoRoom), 0);
  ASSERT_EQ(pthread_setattr_default_np(&huge), 0);
  window->UpdateDevice();
  ASSERT_EQ(pthread_setattr_default_np(&usual), 0);
  AwaitEndOfUpdate();
  EXPECT_EQ(AlertText(), "Update Error!");
  EXPECT_TRUE(hidapi.writes.empty());
  EXPECT_EQ(ButtonStates(), kFinished);
  EXPECT_FALSE(MainWindow::IsWorkerAlive());
}

}  // namespace
}  // namespace hollin
