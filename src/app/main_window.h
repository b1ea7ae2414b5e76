// SPDX-License-Identifier: MIT
// The program's single window, which is its own controller: the user opens a package, is told
// whether the keyboard is there, and starts the update.
//
// Everything here belongs to the main thread but ThreadUpdate, the worker's body. The threads are
// kept apart by one rule instead of locks: while an update runs, the three buttons are disabled and
// the slots behind them do nothing, so that `datFile` is the worker's alone. The worker is never
// waited for, since a keyboard may stay silent for ever; so a window must not be destroyed while
// its worker lives, and the program leaves without doing so.
#pragma once

#include <QMainWindow>
#include <QPointer>
#include <cstdint>
#include <string>

#include "app/alert.h"
#include "package/dat_file_examine.h"

class QLabel;
class QLineEdit;
class QProgressBar;
class QPushButton;

namespace hollin {

class HidDevice;

class MainWindow : public QMainWindow {
  Q_OBJECT

 public:
  explicit MainWindow(QWidget* parent = nullptr);

  // The state of the controls before any package was opened.
  void InitButton();
  void SetButtonEnable(bool enabled);
  void ShowErrorMessage(const QString& text);
  void SetCaption(const std::string& caption);  // UTF-8
  // Reads and shows the package at `path`, in the file system's own bytes. Ignored while updating.
  void OpenPackage(const std::string& path);
  void RemoveTempFile();
  // Shows the window above the others, hidden or minimised as it may be.
  void BringToFront();
  // From the start of an update until its final alert was dismissed.
  [[nodiscard]] bool IsUpdating() const { return isUpdating; }

  // The worker's body: runs the update and posts its numbers to `window`, which may be gone by
  // then. `relay` is an object of the main thread that outlives every worker.
  static void ThreadUpdate(DatFileExamine& datFile, QObject& relay,
                           const QPointer<MainWindow>& window);
  // Whether a worker still runs, in any window.
  [[nodiscard]] static bool IsWorkerAlive();

  // Outlets. The window owns them.
  QLineEdit* textFieldPath = nullptr;
  QLabel* textFieldDeviceStatus = nullptr;
  QProgressBar* progressStatus = nullptr;
  QLabel* textFieldProductModel = nullptr;
  QLabel* textFieldFirmwareVersion = nullptr;
  QPushButton* buttonUpdate = nullptr;
  QPushButton* buttonRefresh = nullptr;
  QPushButton* buttonOpen = nullptr;
  QLabel* imageView = nullptr;

  DatFileExamine datFile;
  HidDevice* pUSB = nullptr;  // the device finder, made on the first refresh; never owned
  int32_t pVal = 0;           // the last number that came from the worker

 public slots:
  void OpenDat();
  void RefreshDevice();
  void UpdateDevice();
  void RefreshProgress(int32_t value);
  // Deliberate: two actions that do nothing.
  void BGImagr() {}
  void opentest() {}

 signals:
  // The user closed the window while no update was running: the program is to quit.
  void CloseRequested();

 protected:
  // What is asked of the user goes through these two, so that a test can answer. Both run an event
  // loop of their own: the window may be gone when they return.
  virtual void ShowAlert(const Alert& alert);
  [[nodiscard]] virtual std::string ChoosePackage();

  void closeEvent(QCloseEvent* event) override;

 private:
  void BuildLayout();
  QWidget* MakePackageGroup();
  QWidget* MakeDeviceGroup();
  QWidget* MakeUpdateGroup();
  void ConnectActions();
  void ShowDeviceStatus(const QString& text, bool canUpdate);
  void ResetProgress();
  void FinishUpdating(const Alert& alert);

  bool isUpdating = false;
};

// Reads the configuration, hands the ids to the device link and the caption to the window.
void LoadDeviceSettings(MainWindow& window);

}  // namespace hollin
