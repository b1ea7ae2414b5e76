// SPDX-License-Identifier: MIT
// The delegate's data store: how it comes about, what is said when it cannot, saving, and quitting
// with it.
#include "app/app_delegate.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <QFile>
#include <QTimer>
#include <QUndoStack>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <optional>

#include "app/app_error.h"
#include "app/object_context.h"
#include "app/object_model.h"
#include "app/question.h"
#include "app/store_coordinator.h"
#include "tests/app/window_test.h"

namespace hollin {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

// Keeps what is presented and asked, and answers it.
class TestDelegate : public AppDelegate {
 public:
  using AppDelegate::AppDelegate;

  std::vector<AppError> errors;
  std::vector<Question> questions;
  bool isResolved = false;
  int answer = kFirstButton;
  std::function<void()> duringAlert;

 protected:
  bool Present(const AppError& error) override {
    errors.push_back(error);
    if (duringAlert) std::exchange(duringAlert, {})();
    return isResolved;
  }
  int Ask(const Question& question) override {
    questions.push_back(question);
    if (duringAlert) std::exchange(duringAlert, {})();
    return answer;
  }
};

class RefusingEditor : public ObjectEditor {
 public:
  bool commitEditing() override { return false; }
};

class AppDelegateTest : public WindowTest {
 protected:
  AppDelegateTest() {
    setenv("XDG_DATA_HOME", folder.Path().c_str(), 1);
    folder.Write("Hollin.momd", "<model version='1'><entity name='Mark'/></model>");
    delegate.emplace(folder.Path());
    delegate->setWindow(window.get());
  }
  [[nodiscard]] std::string DataFolder() const { return folder.Path("com.tovari.Hollin"); }
  [[nodiscard]] std::string StoreFile() const { return DataFolder() + "/Hollin.storedata"; }
  [[nodiscard]] std::vector<int> ErrorCodes() const {
    std::vector<int> codes;
    for (const AppError& error : delegate->errors) codes.push_back(error.code);
    return codes;
  }
  // A context with a change that has not been saved.
  ObjectContext& MakeChange() {
    ObjectContext* const context = delegate->managedObjectContext();
    EXPECT_NE(context, nullptr);
    EXPECT_TRUE(context->Insert("Mark"));
    return *context;
  }
  // From now on nothing can be saved.
  void BreakStore() const { std::filesystem::create_directory(StoreFile()); }
  void OpenPackageAndBreakStore() {
    OpenGoodPackage(0);
    MakeChange();
    BreakStore();
  }
  [[nodiscard]] static bool TempFilesExist() {
    return QFile::exists("/tmp/TEMP1.INI") || QFile::exists("/tmp/TEMP1.BIN");
  }
  // Runs the event loop until it is told to end; false when that does not happen.
  [[nodiscard]] bool EventLoopEnds() {
    constexpr int kStuck = 99;
    QTimer::singleShot(5000, &application, [] { QApplication::exit(kStuck); });
    return QApplication::exec() == 0;
  }
  void InEventLoop(const std::function<void()>& act) { QTimer::singleShot(0, &application, act); }

  std::optional<TestDelegate> delegate;
  RecordedLog log;
};

TEST_F(AppDelegateTest, TheDataFolderIsTheUsersAndIsNotMadeByAsking) {
  EXPECT_EQ(AppDelegate::applicationFilesDirectory(),
            QUrl("file://" + QString::fromStdString(DataFolder())));
  unsetenv("XDG_DATA_HOME");
  setenv("HOME", folder.Path("home").c_str(), 1);
  EXPECT_EQ(AppDelegate::applicationFilesDirectory().toLocalFile().toStdString(),
            folder.Path("home/.local/share/com.tovari.Hollin"));
  EXPECT_FALSE(std::filesystem::exists(DataFolder()));
  EXPECT_FALSE(std::filesystem::exists(folder.Path("home")));
}

TEST_F(AppDelegateTest, ModelCoordinatorAndContextAreMadeOnceAndKept) {
  const ObjectModel* const model = delegate->managedObjectModel();
  ASSERT_NE(model, nullptr);
  EXPECT_TRUE(model->HasEntity("Mark"));
  EXPECT_FALSE(std::filesystem::exists(DataFolder()));
  std::filesystem::remove(folder.Path("Hollin.momd"));
  EXPECT_EQ(delegate->managedObjectModel(), model);
  const StoreCoordinator* const coordinator = delegate->persistentStoreCoordinator();
  ASSERT_NE(coordinator, nullptr);
  EXPECT_TRUE(std::filesystem::is_directory(DataFolder()));
  EXPECT_EQ(delegate->persistentStoreCoordinator(), coordinator);
  const ObjectContext* const context = delegate->managedObjectContext();
  ASSERT_NE(context, nullptr);
  std::filesystem::remove(DataFolder());
  EXPECT_EQ(delegate->managedObjectContext(), context);
  EXPECT_THAT(delegate->errors, IsEmpty());
  EXPECT_THAT(log.lines, IsEmpty());
}

TEST_F(AppDelegateTest, LaunchingAsksForNothingOfTheStore) {
  delegate->applicationDidFinishLaunching();
  window->show();
  QTest::qWait(0);
  EXPECT_FALSE(std::filesystem::exists(DataFolder()));
}

TEST_F(AppDelegateTest, WithoutAModelThereIsNoStoreAndTheLogSaysSo) {
  std::filesystem::remove(folder.Path("Hollin.momd"));
  EXPECT_EQ(delegate->managedObjectModel(), nullptr);
  EXPECT_EQ(delegate->persistentStoreCoordinator(), nullptr);
  EXPECT_THAT(log.lines, ElementsAre("AppDelegate:persistentStoreCoordinator No model to generate "
                                     "a store from"));
  EXPECT_THAT(delegate->errors, IsEmpty());
  EXPECT_FALSE(std::filesystem::exists(DataFolder()));
}

TEST_F(AppDelegateTest, WithoutACoordinatorThereIsNoContextAndTheUserIsTold) {
  std::filesystem::remove(folder.Path("Hollin.momd"));
  EXPECT_EQ(delegate->managedObjectContext(), nullptr);
  ASSERT_EQ(delegate->errors.size(), 1U);
  EXPECT_EQ(delegate->errors[0].domain, "YOUR_ERROR_DOMAIN");
  EXPECT_EQ(delegate->errors[0].code, 9999);
  EXPECT_EQ(delegate->errors[0].description, "Failed to initialize the store");
  EXPECT_EQ(delegate->errors[0].failureReason, "There was an error building up the data file.");
}

TEST_F(AppDelegateTest, MissingFoldersAboveTheDataFolderAreMadeToo) {
  setenv("XDG_DATA_HOME", folder.Path("a/b").c_str(), 1);
  EXPECT_NE(delegate->persistentStoreCoordinator(), nullptr);
  EXPECT_TRUE(std::filesystem::is_directory(folder.Path("a/b/com.tovari.Hollin")));
}

TEST_F(AppDelegateTest, ADataFolderThatIsThereIsUsed) {
  std::filesystem::create_directory(DataFolder());
  EXPECT_NE(delegate->persistentStoreCoordinator(), nullptr);
}

TEST_F(AppDelegateTest, AFolderThatCannotBeMadeIsPresented) {
  folder.Write("file", "");
  std::filesystem::create_symlink(folder.Path("nowhere/deeper"), folder.Path("link"));
  setenv("XDG_DATA_HOME", folder.Path("link").c_str(), 1);
  EXPECT_EQ(delegate->persistentStoreCoordinator(), nullptr);
  ASSERT_EQ(delegate->errors.size(), 1U);
  EXPECT_TRUE(delegate->errors[0].Is("POSIX", EEXIST));
  EXPECT_EQ(delegate->errors[0].description.toStdString(),
            "The folder for application data cannot be made (" +
                folder.Path("link/com.tovari.Hollin") + ").");
  EXPECT_EQ(delegate->errors[0].failureReason, QString::fromLocal8Bit(std::strerror(EEXIST)));
}

TEST_F(AppDelegateTest, AFolderThatCannotBeExaminedIsPresentedAndNotMade) {
  setenv("XDG_DATA_HOME", folder.Write("file", "").c_str(), 1);
  EXPECT_EQ(delegate->persistentStoreCoordinator(), nullptr);
  ASSERT_EQ(delegate->errors.size(), 1U);
  EXPECT_TRUE(delegate->errors[0].Is("POSIX", ENOTDIR));
  EXPECT_EQ(delegate->errors[0].description.toStdString(),
            "The folder for application data cannot be examined (" +
                folder.Path("file/com.tovari.Hollin") + ").");
}

TEST_F(AppDelegateTest, AFileInTheDataFoldersPlaceIsPresentedWithItsPath) {
  folder.Write("com.tovari.Hollin", "");
  EXPECT_EQ(delegate->persistentStoreCoordinator(), nullptr);
  ASSERT_EQ(delegate->errors.size(), 1U);
  EXPECT_EQ(delegate->errors[0].domain, "YOUR_ERROR_DOMAIN");
  EXPECT_EQ(delegate->errors[0].code, 101);
  EXPECT_EQ(delegate->errors[0].description.toStdString(),
            "Expected a folder to store application data, found a file (" + DataFolder() + ").");
}

TEST_F(AppDelegateTest, ADamagedStoreIsPresentedAndLeftAsItIs) {
  std::filesystem::create_directory(DataFolder());
  folder.Write("com.tovari.Hollin/Hollin.storedata", "damaged");
  EXPECT_EQ(delegate->managedObjectContext(), nullptr);
  EXPECT_THAT(ErrorCodes(), ElementsAre(kStoreDamaged, 9999));
  delegate->saveAction();
  EXPECT_EQ(folder.Read("com.tovari.Hollin/Hollin.storedata").size(), 7U);
}

TEST_F(AppDelegateTest, AFailedAttemptIsMadeAgainAndPresentedAgain) {
  folder.Write("com.tovari.Hollin", "");
  EXPECT_EQ(delegate->managedObjectContext(), nullptr);
  EXPECT_EQ(delegate->windowWillReturnUndoManager(), nullptr);
  EXPECT_THAT(ErrorCodes(), ElementsAre(101, 9999, 101, 9999));
  std::filesystem::remove(DataFolder());
  EXPECT_NE(delegate->managedObjectContext(), nullptr);
  EXPECT_EQ(delegate->errors.size(), 4U);
}

TEST_F(AppDelegateTest, TheWindowsUndoManagerIsTheContexts) {
  QUndoStack* const manager = delegate->windowWillReturnUndoManager();
  ASSERT_NE(manager, nullptr);
  const ObjectContext& context = MakeChange();
  EXPECT_EQ(context.Objects().size(), 1U);
  manager->undo();
  EXPECT_EQ(context.Objects().size(), 0U);
}

TEST_F(AppDelegateTest, SavingMakesTheStore) {
  delegate->saveAction();
  EXPECT_TRUE(std::filesystem::is_regular_file(StoreFile()));
  const ObjectContext& context = MakeChange();
  EXPECT_TRUE(context.hasChanges());
  delegate->saveAction();
  EXPECT_FALSE(context.hasChanges());
  EXPECT_THAT(delegate->errors, IsEmpty());
  EXPECT_THAT(log.lines, IsEmpty());
}

TEST_F(AppDelegateTest, SavingGoesOnWithoutTheEditsThatCannotBeCommitted) {
  ObjectContext& context = MakeChange();
  RefusingEditor editor;
  context.objectDidBeginEditing(editor);
  delegate->saveAction();
  EXPECT_THAT(log.lines,
              ElementsAre("AppDelegate:saveAction: unable to commit editing before saving"));
  EXPECT_FALSE(context.hasChanges());
}

TEST_F(AppDelegateTest, AFailedSaveIsPresented) {
  MakeChange();
  BreakStore();
  delegate->saveAction();
  ASSERT_EQ(delegate->errors.size(), 1U);
  EXPECT_EQ(delegate->errors[0].domain, "POSIX");
  EXPECT_EQ(delegate->errors[0].description.toStdString(),
            "The application data cannot be saved (" + StoreFile() + ").");
}

TEST_F(AppDelegateTest, SavingWithoutAContextPresentsWhyThereIsNone) {
  folder.Write("com.tovari.Hollin", "");
  delegate->saveAction();
  EXPECT_THAT(ErrorCodes(), ElementsAre(101, 9999));
  EXPECT_THAT(log.lines,
              ElementsAre("AppDelegate:saveAction: unable to commit editing before saving"));
}

TEST_F(AppDelegateTest, TheMenusSaveUndoAndRedoActOnTheStore) {
  const ObjectContext& context = MakeChange();
  QObject::connect(window.get(), &MainWindow::SaveRequested, [this] { delegate->saveAction(); });
  window->windowWillReturnUndoManager = [this] { return delegate->windowWillReturnUndoManager(); };
  window->show();
  window->activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
  QTest::keyClick(window.get(), Qt::Key_Z, Qt::ControlModifier);
  EXPECT_EQ(context.Objects().size(), 0U);
  QTest::keyClick(window.get(), Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
  EXPECT_EQ(context.Objects().size(), 1U);
  QTest::keyClick(window.get(), Qt::Key_S, Qt::ControlModifier);
  EXPECT_FALSE(context.hasChanges());
}

TEST_F(AppDelegateTest, QuittingWithAnUnusedStoreAsksNothingAndMakesNothing) {
  OpenGoodPackage(0);
  EXPECT_TRUE(TempFilesExist());
  EXPECT_EQ(delegate->applicationShouldTerminate(), TerminateReply::kNow);
  EXPECT_FALSE(TempFilesExist());
  EXPECT_THAT(delegate->errors, IsEmpty());
  EXPECT_THAT(delegate->questions, IsEmpty());
  EXPECT_FALSE(std::filesystem::exists(DataFolder()));
}

TEST_F(AppDelegateTest, QuittingWithoutChangesSavesNothing) {
  ASSERT_NE(delegate->managedObjectContext(), nullptr);
  EXPECT_EQ(delegate->applicationShouldTerminate(), TerminateReply::kNow);
  EXPECT_FALSE(std::filesystem::exists(StoreFile()));
}

TEST_F(AppDelegateTest, QuittingSavesTheChanges) {
  MakeChange();
  EXPECT_EQ(delegate->applicationShouldTerminate(), TerminateReply::kNow);
  EXPECT_TRUE(std::filesystem::is_regular_file(StoreFile()));
  EXPECT_THAT(delegate->questions, IsEmpty());
}

TEST_F(AppDelegateTest, EditsThatCannotBeCommittedCancelTheQuitting) {
  OpenGoodPackage(0);
  ObjectContext& context = MakeChange();
  RefusingEditor editor;
  context.objectDidBeginEditing(editor);
  EXPECT_EQ(delegate->applicationShouldTerminate(), TerminateReply::kCancel);
  EXPECT_THAT(log.lines, ElementsAre("AppDelegate:applicationShouldTerminate: unable to commit "
                                     "editing to terminate"));
  EXPECT_TRUE(context.hasChanges());
  EXPECT_FALSE(TempFilesExist());
  EXPECT_THAT(delegate->errors, IsEmpty());
}

TEST_F(AppDelegateTest, ASaveThatFailsWhileQuittingIsPresentedAndThenAskedAbout) {
  OpenPackageAndBreakStore();
  EXPECT_EQ(delegate->applicationShouldTerminate(), TerminateReply::kNow);
  EXPECT_EQ(delegate->errors.size(), 1U);
  ASSERT_EQ(delegate->questions.size(), 1U);
  const Question& question = delegate->questions[0];
  EXPECT_EQ(question.alert.message, "Could not save changes while quitting. Quit anyway?");
  EXPECT_EQ(question.alert.informativeText,
            "Quitting now will lose any changes you have made since the last successful save");
  EXPECT_EQ(question.firstButton, "Quit anyway");
  EXPECT_EQ(question.secondButton, "Cancel");
  EXPECT_FALSE(TempFilesExist());
}

TEST_F(AppDelegateTest, BothButtonsQuitAndOnlyAnAnswerOfZeroCancels) {
  OpenPackageAndBreakStore();
  const std::pair<int, TerminateReply> cases[] = {{kFirstButton, TerminateReply::kNow},
                                                  {kSecondButton, TerminateReply::kNow},
                                                  {-1, TerminateReply::kNow},
                                                  {1, TerminateReply::kNow},
                                                  {0, TerminateReply::kCancel}};
  for (const auto& [answer, reply] : cases) {
    delegate->answer = answer;
    EXPECT_EQ(delegate->applicationShouldTerminate(), reply) << answer;
  }
  EXPECT_NE(kFirstButton, 0);
  EXPECT_NE(kSecondButton, 0);
}

TEST_F(AppDelegateTest, AnErrorThatTheUserResolvesCancelsTheQuitting) {
  OpenPackageAndBreakStore();
  delegate->isResolved = true;
  EXPECT_EQ(delegate->applicationShouldTerminate(), TerminateReply::kCancel);
  EXPECT_EQ(delegate->errors.size(), 1U);
  EXPECT_THAT(delegate->questions, IsEmpty());
}

TEST_F(AppDelegateTest, TheTemporaryFilesAreRemovedBeforeAnythingElse) {
  OpenPackageAndBreakStore();
  bool existDuringAlert = true;
  delegate->duringAlert = [&] { existDuringAlert = TempFilesExist(); };
  static_cast<void>(delegate->applicationShouldTerminate());
  EXPECT_FALSE(existDuringAlert);
}

TEST_F(AppDelegateTest, ACancelledQuitLeavesTheProgramRunningAndTheNextOneWorks) {
  ObjectContext& context = MakeChange();
  RefusingEditor editor;
  context.objectDidBeginEditing(editor);
  bool isRunningAfterwards = false;
  InEventLoop([&] {
    delegate->Terminate();
    InEventLoop([&] {
      isRunningAfterwards = true;
      context.objectDidEndEditing(editor);
      delegate->Terminate();
    });
  });
  EXPECT_TRUE(EventLoopEnds());
  EXPECT_TRUE(isRunningAfterwards);
}

TEST_F(AppDelegateTest, QuittingAgainWhileTheAlertIsUpQuitsWithoutAskingTwice) {
  OpenPackageAndBreakStore();
  delegate->answer = 0;
  InEventLoop([this] {
    delegate->duringAlert = [this] {
      OpenGoodPackage(0);
      delegate->Terminate();
    };
    delegate->Terminate();
  });
  EXPECT_TRUE(EventLoopEnds());
  EXPECT_EQ(delegate->errors.size(), 1U);
  EXPECT_EQ(delegate->questions.size(), 1U);
  EXPECT_FALSE(TempFilesExist());
}

TEST_F(AppDelegateTest, QuittingTwiceInARowIsTheSameAsOnce) {
  MakeChange();
  InEventLoop([this] {
    delegate->Terminate();
    delegate->Terminate();
  });
  EXPECT_TRUE(EventLoopEnds());
  EXPECT_TRUE(std::filesystem::is_regular_file(StoreFile()));
  EXPECT_THAT(delegate->errors, IsEmpty());
}

TEST_F(AppDelegateTest, ReopeningBringsTheHiddenOrMinimisedWindowToTheFront) {
  window->hide();
  EXPECT_TRUE(delegate->applicationShouldHandleReopen(false));
  EXPECT_TRUE(window->isVisible());
  EXPECT_TRUE(QTest::qWaitForWindowActive(window.get()));
  window->showMinimized();
  EXPECT_TRUE(delegate->applicationShouldHandleReopen(true));
  EXPECT_FALSE(window->isMinimized());
  EXPECT_TRUE(QTest::qWaitForWindowActive(window.get()));
}

TEST_F(AppDelegateTest, TheWindowIsNotOwned) {
  EXPECT_EQ(delegate->window(), window.get());
  TestWindow other;
  delegate->setWindow(&other);
  EXPECT_EQ(delegate->window(), &other);
  delegate.reset();
  EXPECT_FALSE(other.isVisible());  // and is still there
}

}  // namespace
}  // namespace hollin
