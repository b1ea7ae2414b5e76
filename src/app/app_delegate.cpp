// SPDX-License-Identifier: MIT
#include "app/app_delegate.h"

#include <QCoreApplication>
#include <QUndoStack>
#include <utility>

#include "app/app_error.h"
#include "app/data_folder.h"
#include "app/error_presenter.h"
#include "app/main_window.h"
#include "app/object_context.h"
#include "app/object_model.h"
#include "app/question.h"
#include "app/store_coordinator.h"
#include "base/log.h"

namespace hollin {

AppDelegate::AppDelegate(std::string bundlePath) : bundle(std::move(bundlePath)) {}

AppDelegate::~AppDelegate() = default;

void AppDelegate::applicationDidFinishLaunching() {
  mainWindow->InitButton();
  LoadDeviceSettings(*mainWindow);
}

bool AppDelegate::applicationShouldHandleReopen(bool /*hasVisibleWindows*/) {
  mainWindow->BringToFront();
  return true;
}

QUrl AppDelegate::applicationFilesDirectory() {
  return QUrl::fromLocalFile(PathName(ApplicationDataFolder()));
}

const ObjectModel* AppDelegate::managedObjectModel() {
  if (!_managedObjectModel) _managedObjectModel = ObjectModel::Load(bundle + "/Hollin.momd");
  return _managedObjectModel.get();
}

StoreCoordinator* AppDelegate::persistentStoreCoordinator() {
  if (_persistentStoreCoordinator) return _persistentStoreCoordinator.get();
  const ObjectModel* const model = managedObjectModel();
  if (model == nullptr) {
    Log("AppDelegate:persistentStoreCoordinator No model to generate a store from");
    return nullptr;
  }
  if (!EnsureDataFolder()) return nullptr;
  auto coordinator = std::make_unique<StoreCoordinator>(*model);
  AppError error;
  if (!coordinator->AddXmlStore(ApplicationDataFolder() + "/Hollin.storedata", error)) {
    Present(error);
    return nullptr;
  }
  _persistentStoreCoordinator = std::move(coordinator);
  return _persistentStoreCoordinator.get();
}

bool AppDelegate::EnsureDataFolder() {
  const std::string folder = ApplicationDataFolder();
  bool isFolder = false;
  AppError error;
  if (!QueryFolder(folder, isFolder, error)) {
    if (error.Is(kFileErrorDomain, kNoSuchFile) && CreateFolder(folder, error)) return true;
    Present(error);
    return false;
  }
  if (isFolder) return true;
  Present({.domain = kDelegateErrorDomain,
           .code = kFileInFoldersPlace,
           .description = tr("Expected a folder to store application data, found a file (%1).")
                              .arg(PathName(folder))});
  return false;
}

ObjectContext* AppDelegate::managedObjectContext() {
  if (_managedObjectContext) return _managedObjectContext.get();
  const StoreCoordinator* const coordinator = persistentStoreCoordinator();
  if (coordinator == nullptr) {
    Present({.domain = kDelegateErrorDomain,
             .code = kStoreNotInitialized,
             .description = tr("Failed to initialize the store"),
             .failureReason = tr("There was an error building up the data file.")});
    return nullptr;
  }
  _managedObjectContext = std::make_unique<ObjectContext>(*coordinator);
  return _managedObjectContext.get();
}

QUndoStack* AppDelegate::windowWillReturnUndoManager() {
  ObjectContext* const context = managedObjectContext();
  return context == nullptr ? nullptr : context->undoManager();
}

void AppDelegate::saveAction() {
  ObjectContext* const context = managedObjectContext();
  if (context == nullptr || !context->commitEditing()) {
    Log("AppDelegate:saveAction: unable to commit editing before saving");
  }
  AppError error;
  if (context != nullptr && !context->save(error)) Present(error);
}

// The temporary files go first, whatever follows.
TerminateReply AppDelegate::applicationShouldTerminate() {
  mainWindow->RemoveTempFile();
  if (!_managedObjectContext) return TerminateReply::kNow;
  if (!_managedObjectContext->commitEditing()) {
    Log("AppDelegate:applicationShouldTerminate: unable to commit editing to terminate");
    return TerminateReply::kCancel;
  }
  if (!_managedObjectContext->hasChanges()) return TerminateReply::kNow;
  AppError error;
  if (_managedObjectContext->save(error)) return TerminateReply::kNow;
  if (Present(error)) return TerminateReply::kCancel;
  return AskToQuitAnyway();
}

Question AppDelegate::QuitQuestion() {
  return {.alert = {.message = tr("Could not save changes while quitting. Quit anyway?"),
                    .informativeText = tr("Quitting now will lose any changes you have made since "
                                          "the last successful save"),
                    .style = AlertStyle::kWarning},
          .firstButton = tr("Quit anyway"),
          .secondButton = tr("Cancel")};
}

// Deliberate: both buttons quit. Only an answer of 0 would cancel, and neither button answers that.
TerminateReply AppDelegate::AskToQuitAnyway() {
  return Ask(QuitQuestion()) == 0 ? TerminateReply::kCancel : TerminateReply::kNow;
}

// Not QCoreApplication::quit, which asks the window to close: that one hides while it updates.
void AppDelegate::Terminate() {
  if (isTerminating) {
    mainWindow->RemoveTempFile();
    return QCoreApplication::exit(0);
  }
  isTerminating = true;
  if (applicationShouldTerminate() == TerminateReply::kNow) QCoreApplication::exit(0);
  isTerminating = false;
}

bool AppDelegate::Present(const AppError& error) { return PresentError(error, mainWindow); }

int AppDelegate::Ask(const Question& question) { return AskQuestion(question, mainWindow); }

}  // namespace hollin
