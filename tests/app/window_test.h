// SPDX-License-Identifier: MIT
// The ground of the window's tests: the window offscreen, with a test that answers its dialogs; a
// keyboard that hidapi's stand-in counts; packages; and an updater whose steps do as they are told.
#pragma once

#include <gtest/gtest.h>

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <array>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <semaphore>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "app/main_window.h"
#include "base/pause.h"
#include "tests/app/sample_package.h"
#include "tests/app/settle.h"
#include "tests/support/hex_bytes.h"
#include "tests/support/link_test.h"
#include "tests/support/recorded_log.h"
#include "tests/support/recorded_pause.h"
#include "tests/support/temp_files.h"
#include "tests/support/temp_folder.h"

namespace hollin {

using namespace std::chrono_literals;

// Keeps the alerts instead of showing them, and chooses `chosenPath` in the open panel. Its clock
// stands still.
class TestWindow : public MainWindow {
 public:
  std::vector<Alert> alerts;
  std::string chosenPath;  // empty: the user cancels
  int panelCount = 0;
  std::function<void()> duringDialog;
  ProgressWords::Time now;

  using MainWindow::dropEvent;  // Qt delivers none without a drag before it

 protected:
  void ShowAlert(const Alert& alert) override {
    alerts.push_back(alert);
    if (duringDialog) std::exchange(duringDialog, {})();
  }
  std::string ChoosePackage() override {
    panelCount++;
    std::string path = chosenPath;  // the window may be gone after the dialog
    if (duringDialog) std::exchange(duringDialog, {})();
    return path;
  }
  [[nodiscard]] ProgressWords::Time Now() const override { return now; }
};

// The buttons' states in the order in which the tables of the window name them.
struct Buttons {
  bool refresh, update, open;
  bool operator==(const Buttons&) const = default;
};
inline std::ostream& operator<<(std::ostream& out, const Buttons& buttons) {
  return out << "Refresh " << buttons.refresh << ", Update " << buttons.update << ", Open "
             << buttons.open;
}

inline constexpr Buttons kStarted{.refresh = false, .update = false, .open = true};
inline constexpr Buttons kReadyWithoutDevice{.refresh = true, .update = false, .open = true};
inline constexpr Buttons kReadyWithDevice{.refresh = true, .update = true, .open = true};
inline constexpr Buttons kUpdating{.refresh = false, .update = false, .open = false};
inline constexpr Buttons kFinished{.refresh = true, .update = true, .open = true};

// An updater that speaks to nobody. Its steps are counted over the whole update.
class FakeUpdate : public AXUpdate {
 public:
  explicit FakeUpdate(uint32_t steps) : AXUpdate("", "") { stepCount = steps; }

  bool EnterUpdateMode(int32_t) override { return Step(0); }
  bool RunStep(uint32_t index) override { return Step(index + 1); }
  bool VerifyImage() override { return Step(stepCount - 1); }

  std::optional<uint32_t> failingStep;
  std::function<void(uint32_t)> onStep;
  std::vector<uint32_t> steps;

 private:
  bool Step(uint32_t step) {
    steps.push_back(step);
    if (onStep) onStep(step);
    return step != failingStep;
  }
};

// Stops the worker in each of its pauses until the test lets it go on.
class HeldPause {
 public:
  HeldPause() {
    SetPauseFunction([this](std::chrono::milliseconds) {
      reached.release();
      passed.acquire();
    });
  }
  // A worker that has not come to its end would go on in what is gone.
  ~HeldPause() {
    passed.release(kMany);
    EXPECT_TRUE(Await([] { return !MainWindow::IsWorkerAlive(); }));
    SetPauseFunction({});
  }
  HeldPause(const HeldPause&) = delete;
  HeldPause& operator=(const HeldPause&) = delete;

  void AwaitPause() { reached.acquire(); }
  void Release(int pauses = 1) { passed.release(pauses); }

 private:
  static constexpr int kMany = 1000;

  std::counting_semaphore<> reached{0}, passed{0};
};

class WindowTest : public LinkTest {
 protected:
  WindowTest() {
    hidapi.deviceCount = 0;
    window = std::make_unique<TestWindow>();
    window->InitButton();
  }
  // The worker uses what the test owns, so no case ends before it.
  ~WindowTest() override {
    EXPECT_TRUE(Await([] { return !MainWindow::IsWorkerAlive(); }));
  }

  void Open(const std::string& path) {
    window->chosenPath = path;
    window->OpenDat();
  }
  // A good package, on a computer with that many keyboards.
  void OpenGoodPackage(size_t devices = 1, const PackageOptions& options = {}) {
    hidapi.deviceCount = devices;
    Open(folder.Write("good.dat", MakePackage(options)));
    ASSERT_TRUE(window->alerts.empty());
  }
  // A ready record whose steps are a FakeUpdate's, and one keyboard, which acknowledges the end.
  FakeUpdate& UseFakeUpdate(uint32_t steps) {
    hidapi.onWrite = [this](const Bytes& report) { hidapi.Reply(ByteView(report).subspan(9, 4)); };
    auto fake = std::make_unique<FakeUpdate>(steps);
    FakeUpdate& update = *fake;
    window->datFile.Update1 = std::move(fake);
    window->datFile.countDataPack = 1;
    window->datFile.isFileReady = true;
    hidapi.deviceCount = 1;
    window->RefreshDevice();
    return update;
  }
  void AwaitEndOfUpdate() {
    ASSERT_TRUE(Await([this] { return !window->IsUpdating(); }));
  }
  void Update() {
    window->UpdateDevice();
    AwaitEndOfUpdate();
  }

  // Runs the event loop until it is told to end; false when that does not happen.
  [[nodiscard]] bool EventLoopEnds() {
    constexpr int kStuck = 99;
    QTimer::singleShot(60s, &application, [] { QApplication::exit(kStuck); });
    return QApplication::exec() == 0;
  }
  void InEventLoop(const std::function<void()>& act) { QTimer::singleShot(0, &application, act); }

  [[nodiscard]] Buttons ButtonStates() const {
    return {window->buttonRefresh->isEnabled(), window->buttonUpdate->isEnabled(),
            window->buttonOpen->isEnabled()};
  }
  [[nodiscard]] std::string Path() const { return window->textFieldPath->text().toStdString(); }
  [[nodiscard]] std::string Model() const {
    return window->textFieldProductModel->text().toStdString();
  }
  [[nodiscard]] std::string Version() const {
    return window->textFieldFirmwareVersion->text().toStdString();
  }
  [[nodiscard]] std::string Status() const {
    return window->textFieldDeviceStatus->text().toStdString();
  }
  [[nodiscard]] std::string AlertText(size_t index = 0) const {
    return window->alerts.at(index).informativeText.toStdString();
  }

  int argc = 1;
  std::array<char, 7> name{"hollin"};
  std::array<char*, 2> argv{name.data(), nullptr};
  QApplication application{argc, argv.data()};
  TempFolder folder;
  NoTempFiles noTempFiles;
  std::unique_ptr<TestWindow> window;
};

}  // namespace hollin
