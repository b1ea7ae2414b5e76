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
#include <QTimer>
#include <cstdint>
#include <functional>
#include <string>

#include "app/alert.h"
#include "app/progress_words.h"
#include "package/dat_file_examine.h"

class QAction;
class QKeySequence;
class QLabel;
class QLineEdit;
class QMenu;
class QProgressBar;
class QPushButton;
class QUndoStack;

namespace hollin {

class HidDevice;
class StepCard;
class TextLabel;

// Where the user is on the way to an updated keyboard; the cards show it.
enum class Stage {
  kChoosePackage,
  kPackageRefused,
  kConnect,
  kTooManyKeyboards,
  kReady,
  kUpdating,
  kUpdated,
  kUpdateFailed,
};

class MainWindow : public QMainWindow {
  Q_OBJECT

 public:
  explicit MainWindow(QWidget* parent = nullptr);

  // The state of the controls before any package was opened.
  void InitButton();
  void SetButtonEnable(bool enabled);
  void ShowErrorMessage(const QString& text);
  void SetCaption(const std::string& caption);  // UTF-8
  // Opens the package at `path`, in the file system's own bytes, as if it had been chosen in the
  // open panel. Ignored while updating.
  void OpenDatAtPath(const std::string& path);
  // The same for a package that the user did not choose in here: it waits until no alert and no
  // open panel is up. The last one that waits is the one that is opened.
  void OpenDatFromOutside(const std::string& path);
  void RemoveTempFile();
  // Shows the window above the others, hidden or minimised as it may be.
  void BringToFront();
  // What is done when keyboards may have come or gone: the same as by Refresh, whenever that could
  // be pressed. What comes while an alert is up waits for its end, but for the alert at the end of
  // an update, under which Refresh is off.
  void DevicesMayHaveChanged();
  // What the window shows at the start of an update of so many steps.
  void ShowUpdating(int stepCount);
  // From the start of an update until its final alert was dismissed.
  [[nodiscard]] bool IsUpdating() const { return isUpdating; }

  // The worker's body: runs the update and posts its numbers to `window`, which may be gone by
  // then. `relay` is an object of the main thread that outlives every worker.
  static void ThreadUpdate(DatFileExamine& datFile, QObject& relay,
                           const QPointer<MainWindow>& window);
  // Whether a worker still runs, in any window.
  [[nodiscard]] static bool IsWorkerAlive();
  // Whether there ever was one: its thread may still be about to end when it counts as gone.
  [[nodiscard]] static bool WasWorkerStarted();

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
  TextLabel* progressNote = nullptr;  // how far the update is, in words
  TextLabel* deviceNote = nullptr;    // shown when the keyboard may not be opened

  // The window's undo manager, or null; asked for when Undo or Redo is used or the Edit menu opens.
  std::function<QUndoStack*()> windowWillReturnUndoManager;

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
  // The menu's Quit and Save.
  void QuitRequested();
  void SaveRequested();
  // An update begins, and has ended with its alert still to come.
  void UpdateStarted();
  void UpdateEnded();
  // Once, when the window has been painted for the first time: what need not be there at once is
  // begun then.
  void Painted();

 protected:
  // What is asked of the user goes through these two, so that a test can answer. Both run an event
  // loop of their own: the window may be gone when they return.
  virtual void ShowAlert(const Alert& alert);
  [[nodiscard]] virtual std::string ChoosePackage();
  // What an update's times are taken from.
  [[nodiscard]] virtual ProgressWords::Time Now() const;

  bool event(QEvent* event) override;
  void closeEvent(QCloseEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dropEvent(QDropEvent* event) override;

 private:
  void BuildLayout();
  void BuildMenus();
  void BuildFileMenu();
  void BuildEditMenu();
  void BuildKeyboardMenu();
  void BuildHelpMenu();
  QAction* AddAction(QMenu* menu, const QString& text, const QKeySequence& shortcut);
  void PressWith(QAction* action, QPushButton* button);
  [[nodiscard]] QUndoStack* UndoManager() const;
  void UseUndoManager(void (QUndoStack::*use)());
  // Shows an alert and counts it. False when the window is gone afterwards.
  bool TellUser(const Alert& alert);
  // Does what has waited for the end of alerts and panels, unless one is still up.
  void CatchUp();
  QLayout* MakeHeading();
  QWidget* MakePackageCard();
  QWidget* MakeKeyboardCard();
  QWidget* MakeUpdateCard();
  void ConnectActions();
  void ShowStage(Stage stage);
  void ShowDeviceStatus(const QString& text, Stage newStage);
  void ResetProgress();
  void ShowRunningNote();
  void StartWorker();
  void FinishUpdating(const Alert& alert);

  StepCard* packageCard = nullptr;
  StepCard* keyboardCard = nullptr;
  StepCard* updateCard = nullptr;
  ProgressWords progressWords;
  QTimer secondTimer{this};  // while an update runs
  bool isUpdating = false;
  bool isChoosing = false;
  bool hasMissedChange = false;
  std::string waitingPackage;
  bool wasPainted = false;
};

// Reads the configuration, hands the ids to the device link and the caption to the window.
void LoadDeviceSettings(MainWindow& window);

}  // namespace hollin
