// SPDX-License-Identifier: MIT
// What happens at the start and at the end of the program, when it is started again, and to its
// small data store. All of it on the main thread.
//
// Model, coordinator and context of the store are each made on first use and kept; an attempt that
// fails leaves nothing, so that the next use tries again and presents its error again.
#pragma once

#include <QCoreApplication>
#include <QUrl>
#include <memory>
#include <string>

#include "app/bundle.h"

class QUndoStack;

namespace hollin {

class MainWindow;
class ObjectContext;
class ObjectModel;
class StoreCoordinator;
struct AppError;
struct Question;

enum class TerminateReply { kNow, kCancel };

class AppDelegate {
  Q_DECLARE_TR_FUNCTIONS(AppDelegate)

 public:
  // The model is looked for in `bundlePath`.
  explicit AppDelegate(std::string bundlePath = BundlePath());
  virtual ~AppDelegate();
  AppDelegate(const AppDelegate&) = delete;
  AppDelegate& operator=(const AppDelegate&) = delete;

  [[nodiscard]] MainWindow* window() const { return mainWindow; }
  // The window is not owned and must outlive the delegate.
  void setWindow(MainWindow* newWindow) { mainWindow = newWindow; }

  void applicationDidFinishLaunching();
  // The program was started again: its window comes to the front, hidden as it may be. Always true.
  bool applicationShouldHandleReopen(bool hasVisibleWindows);
  [[nodiscard]] TerminateReply applicationShouldTerminate();

  // What is asked when the changes cannot be saved while quitting.
  [[nodiscard]] static Question QuitQuestion();

  // The folder of the application's data. Makes nothing.
  [[nodiscard]] static QUrl applicationFilesDirectory();
  // Null where there is none; the errors have been presented then.
  [[nodiscard]] const ObjectModel* managedObjectModel();
  [[nodiscard]] StoreCoordinator* persistentStoreCoordinator();
  [[nodiscard]] ObjectContext* managedObjectContext();
  // What the window's Undo and Redo act on.
  [[nodiscard]] QUndoStack* windowWillReturnUndoManager();
  void saveAction();

  // What Quit, the closing of the idle window and a signal lead to: asks the question above and
  // ends the event loop. Who asks for it again while an alert of the first time is up, means it:
  // the program ends then.
  void Terminate();

 protected:
  // What is asked of the user goes through these two, so that a test can answer. Both run an event
  // loop of their own.
  virtual bool Present(const AppError& error);  // whether the error's cause is gone
  virtual int Ask(const Question& question);    // the number of the button

 private:
  [[nodiscard]] bool EnsureDataFolder();
  [[nodiscard]] TerminateReply AskToQuitAnyway();

  std::string bundle;
  MainWindow* mainWindow = nullptr;
  bool isTerminating = false;
  std::unique_ptr<const ObjectModel> _managedObjectModel;
  std::unique_ptr<StoreCoordinator> _persistentStoreCoordinator;
  std::unique_ptr<ObjectContext> _managedObjectContext;
};

}  // namespace hollin
