// SPDX-License-Identifier: MIT
// Quitting with the data store, and being started again.
#include <gmock/gmock.h>

#include <QAbstractButton>
#include <QMessageBox>
#include <filesystem>

#include "tests/app/app_delegate_test.h"

namespace hollin {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class AppDelegateQuitTest : public AppDelegateTest {};

TEST_F(AppDelegateQuitTest, QuittingWithAnUnusedStoreAsksNothingAndMakesNothing) {
  OpenGoodPackage(0);
  EXPECT_TRUE(TempFilesExist());
  EXPECT_EQ(delegate->applicationShouldTerminate(), TerminateReply::kNow);
  EXPECT_FALSE(TempFilesExist());
  EXPECT_THAT(delegate->errors, IsEmpty());
  EXPECT_THAT(delegate->questions, IsEmpty());
  EXPECT_FALSE(std::filesystem::exists(DataFolder()));
}

TEST_F(AppDelegateQuitTest, QuittingWithoutChangesSavesNothing) {
  ASSERT_NE(delegate->managedObjectContext(), nullptr);
  EXPECT_EQ(delegate->applicationShouldTerminate(), TerminateReply::kNow);
  EXPECT_FALSE(std::filesystem::exists(StoreFile()));
}

TEST_F(AppDelegateQuitTest, QuittingSavesTheChanges) {
  MakeChange();
  EXPECT_EQ(delegate->applicationShouldTerminate(), TerminateReply::kNow);
  EXPECT_TRUE(std::filesystem::is_regular_file(StoreFile()));
  EXPECT_THAT(delegate->questions, IsEmpty());
}

TEST_F(AppDelegateQuitTest, EditsThatCannotBeCommittedCancelTheQuitting) {
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

TEST_F(AppDelegateQuitTest, ASaveThatFailsWhileQuittingIsPresentedAndThenAskedAbout) {
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

TEST_F(AppDelegateQuitTest, BothButtonsQuitAndOnlyAnAnswerOfZeroCancels) {
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

// With the alerts as they are really shown.
TEST_F(AppDelegateQuitTest, CancelInTheQuestionStillQuits) {
  AppDelegate real(folder.Path());
  real.setWindow(window.get());
  ASSERT_TRUE(real.managedObjectContext()->Insert("Mark"));
  BreakStore();
  const std::function<void(QString, QString)> answer = [&](const QString& message,
                                                           const QString& button) {
    const auto* const box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
    if (box == nullptr || box->text() != message) {
      return InEventLoop([&answer, message, button] { answer(message, button); });
    }
    for (QAbstractButton* each : box->buttons()) {
      if (each->text().remove('&') == button) each->click();
    }
  };
  InEventLoop([&] {
    answer("The application data cannot be saved (" + QString::fromStdString(StoreFile()) + ").",
           "OK");
    answer("Could not save changes while quitting. Quit anyway?", "Cancel");
    real.Terminate();
  });
  EXPECT_TRUE(EventLoopEnds());
}

TEST_F(AppDelegateQuitTest, AnErrorThatTheUserResolvesCancelsTheQuitting) {
  OpenPackageAndBreakStore();
  delegate->isResolved = true;
  EXPECT_EQ(delegate->applicationShouldTerminate(), TerminateReply::kCancel);
  EXPECT_EQ(delegate->errors.size(), 1U);
  EXPECT_THAT(delegate->questions, IsEmpty());
}

TEST_F(AppDelegateQuitTest, TheTemporaryFilesAreRemovedBeforeAnythingElse) {
  OpenPackageAndBreakStore();
  bool existDuringAlert = true;
  delegate->duringAlert = [&] { existDuringAlert = TempFilesExist(); };
  static_cast<void>(delegate->applicationShouldTerminate());
  EXPECT_FALSE(existDuringAlert);
}

TEST_F(AppDelegateQuitTest, ACancelledQuitLeavesTheProgramRunningAndTheNextOneWorks) {
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

TEST_F(AppDelegateQuitTest, QuittingAgainWhileTheAlertIsUpQuitsWithoutAskingTwice) {
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

TEST_F(AppDelegateQuitTest, QuittingTwiceInARowIsTheSameAsOnce) {
  MakeChange();
  InEventLoop([this] {
    delegate->Terminate();
    delegate->Terminate();
  });
  EXPECT_TRUE(EventLoopEnds());
  EXPECT_TRUE(std::filesystem::is_regular_file(StoreFile()));
  EXPECT_THAT(delegate->errors, IsEmpty());
}

TEST_F(AppDelegateQuitTest, ReopeningBringsTheHiddenOrMinimisedWindowToTheFront) {
  window->hide();
  EXPECT_TRUE(delegate->applicationShouldHandleReopen(false));
  EXPECT_TRUE(window->isVisible());
  EXPECT_TRUE(Await([this] { return window->isActiveWindow(); }));
  window->showMinimized();
  EXPECT_TRUE(delegate->applicationShouldHandleReopen(true));
  EXPECT_FALSE(window->isMinimized());
  EXPECT_TRUE(Await([this] { return window->isActiveWindow(); }));
}

TEST_F(AppDelegateQuitTest, TheWindowIsNotOwned) {
  EXPECT_EQ(delegate->window(), window.get());
  TestWindow other;
  delegate->setWindow(&other);
  EXPECT_EQ(delegate->window(), &other);
  delegate.reset();
  EXPECT_FALSE(other.isVisible());  // and is still there
}

}  // namespace
}  // namespace hollin
