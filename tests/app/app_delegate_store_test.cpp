// SPDX-License-Identifier: MIT
// The delegate's data store: how it comes about, what is said when it cannot, and saving.
#include <gmock/gmock.h>

#include <QUndoStack>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "app/data_folder.h"
#include "app/object_model.h"
#include "app/store_coordinator.h"
#include "tests/app/app_delegate_test.h"

namespace hollin {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class AppDelegateStoreTest : public AppDelegateTest {};

TEST_F(AppDelegateStoreTest, TheDataFolderIsTheUsersAndIsNotMadeByAsking) {
  EXPECT_EQ(AppDelegate::applicationFilesDirectory(),
            QUrl("file://" + QString::fromStdString(DataFolder())));
  unsetenv("XDG_DATA_HOME");
  setenv("HOME", folder.Path("home").c_str(), 1);
  EXPECT_EQ(AppDelegate::applicationFilesDirectory().toLocalFile().toStdString(),
            folder.Path("home/.local/share/com.tovari.Hollin"));
  EXPECT_FALSE(std::filesystem::exists(DataFolder()));
  EXPECT_FALSE(std::filesystem::exists(folder.Path("home")));
}

TEST_F(AppDelegateStoreTest, ModelCoordinatorAndContextAreMadeOnceAndKept) {
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

TEST_F(AppDelegateStoreTest, LaunchingAsksForNothingOfTheStore) {
  delegate->applicationDidFinishLaunching();
  window->show();
  Settle();
  EXPECT_FALSE(std::filesystem::exists(DataFolder()));
}

TEST_F(AppDelegateStoreTest, WithoutAModelThereIsNoStoreAndTheLogSaysSo) {
  std::filesystem::remove(folder.Path("Hollin.momd"));
  EXPECT_EQ(delegate->managedObjectModel(), nullptr);
  EXPECT_EQ(delegate->persistentStoreCoordinator(), nullptr);
  EXPECT_THAT(log.lines, ElementsAre("AppDelegate:persistentStoreCoordinator No model to generate "
                                     "a store from"));
  EXPECT_THAT(delegate->errors, IsEmpty());
  EXPECT_FALSE(std::filesystem::exists(DataFolder()));
}

TEST_F(AppDelegateStoreTest, WithoutACoordinatorThereIsNoContextAndTheUserIsTold) {
  std::filesystem::remove(folder.Path("Hollin.momd"));
  EXPECT_EQ(delegate->managedObjectContext(), nullptr);
  ASSERT_EQ(delegate->errors.size(), 1U);
  EXPECT_EQ(delegate->errors[0].domain, "YOUR_ERROR_DOMAIN");
  EXPECT_EQ(delegate->errors[0].code, 9999);
  EXPECT_EQ(delegate->errors[0].description, "Failed to initialize the store");
  EXPECT_EQ(delegate->errors[0].failureReason, "There was an error building up the data file.");
}

TEST_F(AppDelegateStoreTest, MissingFoldersAboveTheDataFolderAreMadeToo) {
  setenv("XDG_DATA_HOME", folder.Path("a/b").c_str(), 1);
  EXPECT_NE(delegate->persistentStoreCoordinator(), nullptr);
  EXPECT_TRUE(std::filesystem::is_directory(folder.Path("a/b/com.tovari.Hollin")));
}

TEST_F(AppDelegateStoreTest, AFolderThatIsMissingIsTheErrorOfThatNumber) {
  bool isFolder = true;
  AppError error;
  EXPECT_FALSE(QueryFolder(folder.Path("missing"), isFolder, error));
  EXPECT_EQ(error.code, 260);
}

TEST_F(AppDelegateStoreTest, ADataFolderThatIsThereIsUsed) {
  std::filesystem::create_directory(DataFolder());
  EXPECT_NE(delegate->persistentStoreCoordinator(), nullptr);
}

TEST_F(AppDelegateStoreTest, AFolderThatCannotBeMadeIsPresented) {
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

TEST_F(AppDelegateStoreTest, AFolderThatCannotBeExaminedIsPresentedAndNotMade) {
  setenv("XDG_DATA_HOME", folder.Write("file", "").c_str(), 1);
  EXPECT_EQ(delegate->persistentStoreCoordinator(), nullptr);
  ASSERT_EQ(delegate->errors.size(), 1U);
  EXPECT_TRUE(delegate->errors[0].Is("POSIX", ENOTDIR));
  EXPECT_EQ(delegate->errors[0].description.toStdString(),
            "The folder for application data cannot be examined (" +
                folder.Path("file/com.tovari.Hollin") + ").");
}

TEST_F(AppDelegateStoreTest, AFileInTheDataFoldersPlaceIsPresentedWithItsPath) {
  folder.Write("com.tovari.Hollin", "");
  EXPECT_EQ(delegate->persistentStoreCoordinator(), nullptr);
  ASSERT_EQ(delegate->errors.size(), 1U);
  EXPECT_EQ(delegate->errors[0].domain, "YOUR_ERROR_DOMAIN");
  EXPECT_EQ(delegate->errors[0].code, 101);
  EXPECT_EQ(delegate->errors[0].description.toStdString(),
            "Expected a folder to store application data, found a file (" + DataFolder() + ").");
}

TEST_F(AppDelegateStoreTest, ADamagedStoreIsPresentedAndLeftAsItIs) {
  std::filesystem::create_directory(DataFolder());
  folder.Write("com.tovari.Hollin/Hollin.storedata", "damaged");
  EXPECT_EQ(delegate->managedObjectContext(), nullptr);
  EXPECT_THAT(ErrorCodes(), ElementsAre(kStoreDamaged, 9999));
  delegate->saveAction();
  EXPECT_EQ(folder.Read("com.tovari.Hollin/Hollin.storedata").size(), 7U);
}

TEST_F(AppDelegateStoreTest, AFailedAttemptIsMadeAgainAndPresentedAgain) {
  folder.Write("com.tovari.Hollin", "");
  EXPECT_EQ(delegate->managedObjectContext(), nullptr);
  EXPECT_EQ(delegate->windowWillReturnUndoManager(), nullptr);
  EXPECT_THAT(ErrorCodes(), ElementsAre(101, 9999, 101, 9999));
  std::filesystem::remove(DataFolder());
  EXPECT_NE(delegate->managedObjectContext(), nullptr);
  EXPECT_EQ(delegate->errors.size(), 4U);
}

TEST_F(AppDelegateStoreTest, TheWindowsUndoManagerIsTheContexts) {
  QUndoStack* const manager = delegate->windowWillReturnUndoManager();
  ASSERT_NE(manager, nullptr);
  const ObjectContext& context = MakeChange();
  EXPECT_EQ(context.Objects().size(), 1U);
  manager->undo();
  EXPECT_EQ(context.Objects().size(), 0U);
}

TEST_F(AppDelegateStoreTest, SavingMakesTheStore) {
  delegate->saveAction();
  EXPECT_TRUE(std::filesystem::is_regular_file(StoreFile()));
  const ObjectContext& context = MakeChange();
  EXPECT_TRUE(context.hasChanges());
  delegate->saveAction();
  EXPECT_FALSE(context.hasChanges());
  EXPECT_THAT(delegate->errors, IsEmpty());
  EXPECT_THAT(log.lines, IsEmpty());
}

TEST_F(AppDelegateStoreTest, SavingGoesOnWithoutTheEditsThatCannotBeCommitted) {
  ObjectContext& context = MakeChange();
  RefusingEditor editor;
  context.objectDidBeginEditing(editor);
  delegate->saveAction();
  EXPECT_THAT(log.lines,
              ElementsAre("AppDelegate:saveAction: unable to commit editing before saving"));
  EXPECT_FALSE(context.hasChanges());
}

TEST_F(AppDelegateStoreTest, AFailedSaveIsPresented) {
  MakeChange();
  BreakStore();
  delegate->saveAction();
  ASSERT_EQ(delegate->errors.size(), 1U);
  EXPECT_EQ(delegate->errors[0].domain, "POSIX");
  EXPECT_EQ(delegate->errors[0].description.toStdString(),
            "The application data cannot be saved (" + StoreFile() + ").");
}

TEST_F(AppDelegateStoreTest, SavingWithoutAContextPresentsWhyThereIsNone) {
  folder.Write("com.tovari.Hollin", "");
  delegate->saveAction();
  EXPECT_THAT(ErrorCodes(), ElementsAre(101, 9999));
  EXPECT_THAT(log.lines,
              ElementsAre("AppDelegate:saveAction: unable to commit editing before saving"));
}

TEST_F(AppDelegateStoreTest, TheMenusSaveUndoAndRedoActOnTheStore) {
  const ObjectContext& context = MakeChange();
  QObject::connect(window.get(), &MainWindow::SaveRequested, [this] { delegate->saveAction(); });
  window->windowWillReturnUndoManager = [this] { return delegate->windowWillReturnUndoManager(); };
  window->show();
  window->activateWindow();
  ASSERT_TRUE(Await([this] { return window->isActiveWindow(); }));
  QTest::keyClick(window.get(), Qt::Key_Z, Qt::ControlModifier);
  EXPECT_EQ(context.Objects().size(), 0U);
  QTest::keyClick(window.get(), Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
  EXPECT_EQ(context.Objects().size(), 1U);
  QTest::keyClick(window.get(), Qt::Key_S, Qt::ControlModifier);
  EXPECT_FALSE(context.hasChanges());
}

}  // namespace
}  // namespace hollin
