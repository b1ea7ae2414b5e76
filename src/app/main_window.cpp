// SPDX-License-Identifier: MIT
#include "app/main_window.h"

#include <QCloseEvent>
#include <QDropEvent>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QMimeData>
#include <QProgressBar>
#include <QPushButton>
#include <QUrl>
#include <algorithm>
#include <atomic>
#include <chrono>
#include <exception>
#include <new>
#include <thread>
#include <utility>

#include "app/alert_scope.h"
#include "app/device_access.h"
#include "app/device_settings.h"
#include "app/not_connected_text.h"
#include "app/open_panel.h"
#include "app/process_signals.h"
#include "app/text_label.h"
#include "app/theme.h"
#include "app/update_loop.h"
#include "base/pause.h"
#include "device/hid_device.h"

namespace hollin {
namespace {

constexpr std::chrono::milliseconds kPauseForMemory{100};

std::atomic<int> liveWorkers = 0;
bool wasWorkerStarted = false;

// What the worker posts to. Made on the main thread and never destroyed: a worker may still post
// while the program leaves.
QObject& Relay() {
  static auto& relay = *new QObject;
  return relay;
}

// Posts the number itself: the main thread sees what the worker posted, however late it looks.
// False when there was no memory to do so.
bool TryPost(QObject& relay, const QPointer<MainWindow>& window, int32_t value) {
  const auto refresh = [window, value] {
    if (window) window->RefreshProgress(value);
  };
  try {
    return QMetaObject::invokeMethod(&relay, refresh, Qt::QueuedConnection);
  } catch (const std::bad_alloc&) {
    return false;
  }
}

// Without the last number the window would wait for ever, so none is given up.
void PostProgress(QObject& relay, const QPointer<MainWindow>& window, int32_t value) {
  while (!TryPost(relay, window, value)) Pause(kPauseForMemory);
}

// The path of what is dropped, if it is one package that lies on this computer.
std::string DroppedPackage(const QMimeData& data) {
  const QList<QUrl> urls = data.urls();
  if (urls.size() != 1 || !urls[0].isLocalFile()) return {};
  const QString path = urls[0].toLocalFile();
  return IsPackageName(path) ? QFile::encodeName(path).toStdString() : std::string();
}

}  // namespace

MainWindow::MainWindow(QWidget* parent) : QMainWindow(parent) {
  setAcceptDrops(true);
  BuildLayout();
  BuildMenus();
  ConnectActions();
  ShowStage(Stage::kChoosePackage);
  secondTimer.setInterval(std::chrono::seconds(1));
  connect(&secondTimer, &QTimer::timeout, this, &MainWindow::ShowRunningNote);
  connect(&AlertWatch::Instance(), &AlertWatch::AllGone, this, &MainWindow::CatchUp,
          Qt::QueuedConnection);
}

void MainWindow::InitButton() {
  buttonRefresh->setEnabled(false);
  buttonUpdate->setEnabled(false);
  QPalette palette = progressStatus->palette();
  palette.setColor(QPalette::Base, kSystemGray);
  progressStatus->setPalette(palette);
}

void MainWindow::SetButtonEnable(bool enabled) {
  buttonRefresh->setEnabled(enabled);
  buttonUpdate->setEnabled(enabled);
  buttonOpen->setEnabled(enabled);
}

void MainWindow::ShowErrorMessage(const QString& text) {
  TellUser({.message = tr("Error"), .informativeText = text, .style = AlertStyle::kWarning});
}

// Qt takes "[*]" for the place of its mark of unsaved changes, and two of them for one in plain.
void MainWindow::SetCaption(const std::string& caption) {
  setWindowTitle(QString::fromStdString(caption).replace("[*]", "[*][*]"));
}

void MainWindow::OpenDat() {
  if (isUpdating || isChoosing) return;
  const QPointer<MainWindow> self(this);
  isChoosing = true;
  const std::string path = ChoosePackage();
  if (!self) return;
  isChoosing = false;
  if (!path.empty()) waitingPackage = path;  // goes before what came from outside meanwhile
  CatchUp();
}

void MainWindow::OpenDatFromOutside(const std::string& path) {
  waitingPackage = path;
  CatchUp();
}

void MainWindow::CatchUp() {
  if (AlertScope::IsAny() || isChoosing) return;
  const std::string path = std::exchange(waitingPackage, {});
  if (std::exchange(hasMissedChange, false)) DevicesMayHaveChanged();
  if (!path.empty()) OpenDatAtPath(path);
}

void MainWindow::OpenDatAtPath(const std::string& path) {
  if (isUpdating) return;
  const QString shownPath = QString::fromStdString(path);
  textFieldPath->setText(shownPath);
  textFieldPath->setToolTip("<span>" + shownPath.toHtmlEscaped() + "</span>");  // as markup
  if (!datFile.OpenDatFile(path)) {
    ShowStage(Stage::kPackageRefused);
    return ShowErrorMessage(tr("Unable to open dat file: %1").arg(shownPath));
  }
  if (!datFile.ExamineDatFile()) {
    ShowStage(Stage::kPackageRefused);
    return ShowErrorMessage(tr("Checksum or file format error: %1").arg(shownPath));
  }
  textFieldProductModel->setText(QString::fromStdString(datFile.ProductModelText()));
  textFieldFirmwareVersion->setText(QString::fromStdString(datFile.FirmwareVersionText()));
  buttonRefresh->setEnabled(true);
  RefreshDevice();
}

void MainWindow::RefreshDevice() {
  if (isUpdating) return;
  if (pUSB == nullptr) pUSB = HidDevice::Instance();
  const uint32_t count = HidDevice::DeviceCount();
  if (count > 1) {
    ShowDeviceStatus(tr("More than one device! Remove some devices"), Stage::kTooManyKeyboards);
  } else if (count == 1) {
    ShowDeviceStatus(tr("The TS30 is connected. Please press the \"Update\" button now."),
                     Stage::kReady);
    ResetProgress();
  } else {
    ShowDeviceStatus(NotConnectedText(datFile), Stage::kConnect);
  }
}

void MainWindow::ShowDeviceStatus(const QString& text, Stage newStage) {
  deviceNote->setVisible(newStage == Stage::kReady &&
                         IsAccessDenied(HidDevice::vendorId, HidDevice::productId));
  textFieldDeviceStatus->setText(text);
  textFieldDeviceStatus->setAccessibleDescription({});
  buttonUpdate->setEnabled(newStage == Stage::kReady);
  ShowStage(datFile.IsFileReady() ? newStage : Stage::kPackageRefused);
}

// Deliberate: never a bar from 0 to 0, which would show that something is going on for ever.
void MainWindow::ResetProgress() {
  progressStatus->setRange(0, std::max(1, datFile.TotalStepCount()));
  progressStatus->setValue(0);
  progressNote->clear();
}

void MainWindow::ShowRunningNote() { progressNote->setText(progressWords.Running(Now())); }

void MainWindow::UpdateDevice() {
  if (isUpdating) return;
  isUpdating = true;
  ShowUpdating(datFile.TotalStepCount());
  StartWorker();
  emit UpdateStarted();  // who hears it may take its time
}

void MainWindow::StartWorker() {
  const QPointer<MainWindow> self(this);
  QObject& relay = Relay();
  liveWorkers++;
  wasWorkerStarted = true;
  const AllSignalsBlocked inTheWorker;
  try {
    std::thread([&record = datFile, &relay, self] {
      ThreadUpdate(record, relay, self);
      liveWorkers--;
    }).detach();
  } catch (const std::exception&) {  // no thread to be had
    liveWorkers--;
    PostProgress(relay, self, kUpdateFailed);
  }
}

void MainWindow::ShowUpdating(int stepCount) {
  SetButtonEnable(false);
  ShowStage(Stage::kUpdating);
  progressWords.Start(stepCount, Now());
  ShowRunningNote();
  secondTimer.start();
}

void MainWindow::ThreadUpdate(DatFileExamine& datFile, QObject& relay,
                              const QPointer<MainWindow>& window) {
  RunUpdate(datFile, [&](int32_t value) { PostProgress(relay, window, value); });
}

bool MainWindow::IsWorkerAlive() { return liveWorkers > 0; }

bool MainWindow::WasWorkerStarted() { return wasWorkerStarted; }

void MainWindow::RefreshProgress(int32_t value) {
  pVal = value;
  const ProgressWords::Time now = Now();
  if (value >= 0) {
    progressStatus->setValue(value);
    progressWords.CompleteStep(value, now);
    ShowRunningNote();
  } else if (value == kUpdateSucceeded) {
    progressStatus->setValue(progressStatus->maximum());
    progressNote->setText(progressWords.Completed(now));
    ShowStage(Stage::kUpdated);
    FinishUpdating({.message = tr("Information"),
                    .informativeText = tr("Update completed, please use the TS30 power switch to "
                                          "restart the keyboard."),
                    .icon = AlertIcon::kFolder});
  } else if (value == kUpdateFailed) {
    progressNote->setText(progressWords.Failed(now));
    ShowStage(Stage::kUpdateFailed);
    // Deliberate: as informational as a success, unlike the errors of a package.
    FinishUpdating({.message = tr("Error"),
                    .informativeText = tr("Update Error!"),
                    .icon = AlertIcon::kFolder});
  }
}

void MainWindow::FinishUpdating(const Alert& alert) {
  secondTimer.stop();
  emit UpdateEnded();
  if (isHidden() || isMinimized()) BringToFront();
  if (!TellUser(alert)) return;
  isUpdating = false;
  SetButtonEnable(true);
}

// Everything may happen in the alert's event loop but a refresh, which waits for its end.
bool MainWindow::TellUser(const Alert& alert) {
  const QPointer<MainWindow> self(this);
  const AlertScope scope;
  ShowAlert(alert);
  return self != nullptr;
}

void MainWindow::DevicesMayHaveChanged() {
  if (isUpdating || !buttonRefresh->isEnabled()) return;
  if (AlertScope::IsAny()) {
    hasMissedChange = true;
  } else {
    RefreshDevice();
  }
}

void MainWindow::RemoveTempFile() { datFile.DeleteTempFiles(); }

void MainWindow::BringToFront() {
  setWindowState(windowState() & ~Qt::WindowMinimized);
  show();
  raise();
  activateWindow();
}

void MainWindow::ShowAlert(const Alert& alert) { RunAlert(alert, this); }

std::string MainWindow::ChoosePackage() { return RunOpenPanel(this); }

ProgressWords::Time MainWindow::Now() const { return ProgressWords::Time::clock::now(); }

bool MainWindow::event(QEvent* event) {
  if (event->type() == QEvent::ThemeChange) UseDesktopColours();
  return QMainWindow::event(event);
}

// Deliberate: it never just closes. An update goes on without it, and whether an idle program
// really quits is not the window's to decide.
void MainWindow::closeEvent(QCloseEvent* event) {
  event->ignore();
  if (isUpdating) {
    hide();
  } else {
    emit CloseRequested();
  }
}

void MainWindow::paintEvent(QPaintEvent* event) {
  QMainWindow::paintEvent(event);
  if (!std::exchange(wasPainted, true)) QTimer::singleShot(0, this, &MainWindow::Painted);
}

void MainWindow::dragEnterEvent(QDragEnterEvent* event) {
  if (!isUpdating && !DroppedPackage(*event->mimeData()).empty()) event->acceptProposedAction();
}

// From the event loop: whoever it was dragged from must not wait until an alert is dismissed.
void MainWindow::dropEvent(QDropEvent* event) {
  const std::string path = DroppedPackage(*event->mimeData());
  if (isUpdating || path.empty()) return;
  event->acceptProposedAction();
  QTimer::singleShot(0, this, [this, path] { OpenDatFromOutside(path); });
}

void LoadDeviceSettings(MainWindow& window) {
  const DeviceSettings settings = ReadDeviceSettings();
  HidDevice::vendorId = settings.vendorId;
  HidDevice::productId = settings.productId;
  window.SetCaption(settings.caption);
}

}  // namespace hollin
