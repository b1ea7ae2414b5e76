// SPDX-License-Identifier: MIT
#include <QSignalSpy>
#include <csignal>
#include <thread>

#include "app/update_loop.h"
#include "tests/app/window_test.h"

namespace hollin {
namespace {

constexpr const char* kCompleted =
    "Update completed, please use the TS30 power switch to restart the keyboard.";

class WindowUpdateTest : public WindowTest {
 protected:
  // The values that the bar took, from an unset one on.
  std::vector<int> BarValuesOfUpdate() {
    window->progressStatus->reset();
    const QSignalSpy changes(window->progressStatus, &QProgressBar::valueChanged);
    Update();
    std::vector<int> values;
    for (const auto& change : changes) values.push_back(change.at(0).toInt());
    return values;
  }
};

TEST_F(WindowUpdateTest, ThreeStepsMoveTheBarAndAreLogged) {
  const RecordedPause pauses;
  const RecordedLog log;
  UseFakeUpdate(3);
  EXPECT_EQ(BarValuesOfUpdate(), (std::vector{0, 1, 2, 3}));
  const std::vector<std::string> steps(log.lines.begin(), log.lines.begin() + 3);
  EXPECT_EQ(steps, (std::vector<std::string>{"0", "1", "2"}));
  EXPECT_EQ(pauses.lengths, std::vector(3, std::chrono::milliseconds{500}));
  EXPECT_EQ(window->pVal, -1);
  EXPECT_EQ(window->alerts.size(), 1U);
}

TEST_F(WindowUpdateTest, SuccessIsTitledInformationWithAFolder) {
  UseFakeUpdate(3);
  window->RefreshProgress(kUpdateSucceeded);
  ASSERT_EQ(window->alerts.size(), 1U);
  EXPECT_EQ(window->alerts[0].message, "Information");
  EXPECT_EQ(AlertText(), kCompleted);
  EXPECT_EQ(window->alerts[0].style, AlertStyle::kInformational);
  EXPECT_EQ(window->alerts[0].icon, AlertIcon::kFolder);
  EXPECT_EQ(window->progressStatus->value(), 3);
  EXPECT_EQ(ButtonStates(), kFinished);
}

TEST_F(WindowUpdateTest, FailureIsTitledErrorButAsInformationalAsASuccess) {
  UseFakeUpdate(3);
  window->RefreshProgress(1);
  window->SetButtonEnable(false);
  window->RefreshProgress(kUpdateFailed);
  ASSERT_EQ(window->alerts.size(), 1U);
  EXPECT_EQ(window->alerts[0].message, "Error");
  EXPECT_EQ(AlertText(), "Update Error!");
  EXPECT_EQ(window->alerts[0].style, AlertStyle::kInformational);
  EXPECT_EQ(window->alerts[0].icon, AlertIcon::kFolder);
  EXPECT_EQ(window->progressStatus->value(), 1);
  EXPECT_EQ(ButtonStates(), kFinished);
}

TEST_F(WindowUpdateTest, OtherNegativeValuesDoNothing) {
  UseFakeUpdate(3);
  window->RefreshProgress(1);
  window->SetButtonEnable(false);
  for (const int32_t value : {-3, -100, std::numeric_limits<int32_t>::min()}) {
    window->RefreshProgress(value);
    EXPECT_TRUE(window->alerts.empty());
    EXPECT_EQ(window->progressStatus->value(), 1);
    EXPECT_EQ(ButtonStates(), kUpdating);
  }
}

TEST_F(WindowUpdateTest, LastStepStandsOneShortOfTheMaximum) {
  UseFakeUpdate(3);
  window->RefreshProgress(2);
  EXPECT_EQ(window->progressStatus->value(), 2);
  EXPECT_EQ(window->progressStatus->maximum(), 3);
}

TEST_F(WindowUpdateTest, FirstStepThatFailsIsTheOnlyOne) {
  const RecordedPause pauses;
  const RecordedLog log;
  FakeUpdate& update = UseFakeUpdate(3);
  update.failingStep = 0;
  EXPECT_EQ(BarValuesOfUpdate(), std::vector<int>{});
  EXPECT_EQ(window->pVal, -2);
  EXPECT_EQ(AlertText(), "Update Error!");
  EXPECT_EQ(update.steps, std::vector<uint32_t>{0});
  EXPECT_TRUE(log.lines.empty());
  EXPECT_TRUE(pauses.lengths.empty());
}

TEST_F(WindowUpdateTest, VerifyThatFailsLeavesTheBarAtTheStepBefore) {
  const RecordedPause pauses;
  UseFakeUpdate(3).failingStep = 2;
  EXPECT_EQ(BarValuesOfUpdate(), (std::vector{0, 1}));
  EXPECT_EQ(AlertText(), "Update Error!");
}

TEST_F(WindowUpdateTest, EndOfTheUpdateIsToldToTheKeyboard) {
  const RecordedPause pauses;
  FakeUpdate& update = UseFakeUpdate(1);
  Update();
  update.failingStep = 0;
  Update();
  EXPECT_EQ(hidapi.SentMessages(), (std::vector{Hex("09 00 00 00"), Hex("09 01 00 00")}));
  EXPECT_EQ(hidapi.openHandles, 0U);
}

TEST_F(WindowUpdateTest, NoStepsAreASuccessAtOnce) {
  const RecordedPause pauses;
  FakeUpdate& update = UseFakeUpdate(0);
  Update();
  EXPECT_EQ(AlertText(), kCompleted);
  EXPECT_TRUE(update.steps.empty());
  EXPECT_TRUE(pauses.lengths.empty());
}

TEST_F(WindowUpdateTest, ButtonsAreOffUntilTheAlertWasDismissed) {
  HeldPause pauses;
  UseFakeUpdate(1);
  window->UpdateDevice();
  EXPECT_EQ(ButtonStates(), kUpdating);
  pauses.AwaitPause();
  Buttons duringAlert{};
  int barDuringAlert = -1;
  window->duringDialog = [&] {
    duringAlert = ButtonStates();
    barDuringAlert = window->progressStatus->value();
  };
  pauses.Release();
  AwaitEndOfUpdate();
  EXPECT_EQ(duringAlert, kUpdating);
  EXPECT_EQ(barDuringAlert, 1);  // its maximum, before the alert
  EXPECT_EQ(ButtonStates(), kFinished);
}

TEST_F(WindowUpdateTest, SlotsDoNothingWhileUpdating) {
  HeldPause pauses;
  FakeUpdate& update = UseFakeUpdate(1);
  window->UpdateDevice();
  pauses.AwaitPause();
  hidapi.calls.clear();
  const std::pair ids(HidDevice::vendorId, HidDevice::productId);
  Open(folder.Write("good.dat", MakePackage()));
  window->OpenDatAtPath(folder.Path("good.dat"));
  window->RefreshDevice();
  window->UpdateDevice();
  EXPECT_EQ(window->panelCount, 0);
  EXPECT_EQ(Path(), "");
  EXPECT_TRUE(hidapi.calls.empty());
  EXPECT_EQ(std::pair(HidDevice::vendorId, HidDevice::productId), ids);
  EXPECT_EQ(ButtonStates(), kUpdating);
  EXPECT_EQ(update.steps.size(), 1U);
  pauses.Release();
  AwaitEndOfUpdate();
  EXPECT_EQ(window->alerts.size(), 1U);
}

TEST_F(WindowUpdateTest, SlotsDoNothingWhileTheFinalAlertIsUp) {
  const RecordedPause pauses;
  UseFakeUpdate(1);
  window->duringDialog = [this] {
    hidapi.calls.clear();
    window->OpenDat();
    window->RefreshDevice();
    window->UpdateDevice();
  };
  Update();
  EXPECT_EQ(window->panelCount, 0);
  EXPECT_TRUE(hidapi.calls.empty());
  EXPECT_EQ(window->alerts.size(), 1U);
}

TEST_F(WindowUpdateTest, SecondRunStartsAtOnceWithTheSamePackage) {
  const RecordedPause pauses;
  FakeUpdate& update = UseFakeUpdate(3);
  Update();
  EXPECT_EQ(ButtonStates(), kFinished);
  EXPECT_EQ(BarValuesOfUpdate(), (std::vector{0, 1, 2, 3}));
  EXPECT_EQ(window->alerts.size(), 2U);
  EXPECT_EQ(update.steps, (std::vector<uint32_t>{0, 1, 2, 0, 1, 2}));
}

TEST_F(WindowUpdateTest, RunAfterAFailureMaySucceed) {
  const RecordedPause pauses;
  FakeUpdate& update = UseFakeUpdate(2);
  update.failingStep = 1;
  Update();
  update.failingStep.reset();
  Update();
  EXPECT_EQ(AlertText(0), "Update Error!");
  EXPECT_EQ(AlertText(1), kCompleted);
}

TEST_F(WindowUpdateTest, UnacknowledgedEndIsStillASuccess) {
  const RecordedPause pauses;
  UseFakeUpdate(1);
  hidapi.onWrite = {};
  hidapi.ReplyFailure();
  Update();
  EXPECT_EQ(AlertText(), kCompleted);
}

TEST_F(WindowUpdateTest, KeyboardThatWentAwayIsAnUpdateError) {
  const RecordedPause pauses;
  OpenGoodPackage(1);
  hidapi.deviceCount = 0;
  Update();
  EXPECT_EQ(AlertText(), "Update Error!");
  EXPECT_TRUE(hidapi.writes.empty());
}

TEST_F(WindowUpdateTest, StepsRunOnAThreadWithAllSignalsBlocked) {
  const RecordedPause pauses;
  std::thread::id worker;
  sigset_t blocked;
  UseFakeUpdate(1).onStep = [&](uint32_t) {
    worker = std::this_thread::get_id();
    pthread_sigmask(SIG_BLOCK, nullptr, &blocked);
  };
  Update();
  EXPECT_NE(worker, std::this_thread::get_id());
  for (const int number : {SIGTERM, SIGINT, SIGHUP, SIGALRM, SIGCHLD, SIGUSR1, SIGPIPE}) {
    EXPECT_EQ(sigismember(&blocked, number), 1) << number;
  }
}

TEST_F(WindowUpdateTest, StepThatThrowsIsAStepThatFailed) {
  const RecordedPause pauses;
  UseFakeUpdate(3).onStep = [](uint32_t step) {
    if (step == 1) throw std::bad_alloc();
  };
  Update();
  EXPECT_EQ(AlertText(), "Update Error!");
  EXPECT_EQ(window->progressStatus->value(), 0);
}

TEST_F(WindowUpdateTest, WindowStaysAliveWhileTheWorkerWaits) {
  HeldPause pauses;
  UseFakeUpdate(1);
  window->UpdateDevice();
  pauses.AwaitPause();
  bool isAnswered = false;
  QMetaObject::invokeMethod(
      window.get(), [&] { isAnswered = true; }, Qt::QueuedConnection);
  EXPECT_TRUE(Await([&] { return isAnswered; }));
  EXPECT_TRUE(window->IsUpdating());
  pauses.Release();
  AwaitEndOfUpdate();
}

TEST_F(WindowUpdateTest, NumbersForAWindowThatIsGoneAreDropped) {
  const RecordedPause pauses;
  UseFakeUpdate(3);
  DatFileExamine record = std::move(window->datFile);
  QObject relay;
  const QPointer<MainWindow> gone(window.get());
  window.reset();
  std::thread([&] { MainWindow::ThreadUpdate(record, relay, gone); }).join();
  EXPECT_EQ(pauses.lengths.size(), 3U);
  QApplication::sendPostedEvents();
  EXPECT_TRUE(gone.isNull());
}

// This thread, which would have to answer a worker that waits, waits for the worker.
TEST_F(WindowUpdateTest, WorkerWaitsForNobodyAndEachPostKeepsItsNumber) {
  const RecordedPause pauses;
  UseFakeUpdate(3);
  window->progressStatus->reset();
  const QSignalSpy changes(window->progressStatus, &QProgressBar::valueChanged);
  QObject relay;
  const QPointer<MainWindow> target(window.get());
  std::thread([&] { MainWindow::ThreadUpdate(window->datFile, relay, target); }).join();
  EXPECT_EQ(changes.count(), 0);
  Settle();
  ASSERT_EQ(changes.count(), 4);
  for (int i = 0; i < 4; i++) EXPECT_EQ(changes.at(i).at(0).toInt(), i);
  EXPECT_EQ(window->pVal, -1);
}

TEST_F(WindowUpdateTest, WindowGoneDuringTheFinalAlertIsLeftAlone) {
  const RecordedPause pauses;
  UseFakeUpdate(1);
  window->duringDialog = [this] { window.reset(); };
  window->UpdateDevice();
  EXPECT_TRUE(Await([this] { return window == nullptr; }));
  EXPECT_TRUE(Await([] { return !MainWindow::IsWorkerAlive(); }));
}

}  // namespace
}  // namespace hollin
