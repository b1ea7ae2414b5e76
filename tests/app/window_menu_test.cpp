// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>

#include <QAction>
#include <QDialog>
#include <QMenu>
#include <QMenuBar>
#include <QSignalSpy>
#include <QUndoCommand>
#include <QUndoStack>

#include "tests/app/window_test.h"

namespace hollin {
namespace {

constexpr const char* kNameAndVersion = "Hollin " HOLLIN_VERSION;

class WindowMenuTest : public WindowTest {
 protected:
  void SetUp() override {
    WindowTest::SetUp();
    window->windowWillReturnUndoManager = [this] {
      managerCount++;
      return &manager;
    };
    window->show();
  }
  [[nodiscard]] QMenu* Menu(qsizetype index) const {
    return window->menuBar()->actions().at(index)->menu();
  }
  [[nodiscard]] QAction* Action(const QString& text) const {
    for (QAction* action : window->findChildren<QAction*>()) {
      if (action->text() == text) return action;
    }
    throw std::logic_error("no such action");
  }
  [[nodiscard]] static std::vector<std::string> Texts(const QMenu& menu) {
    std::vector<std::string> texts;
    for (const QAction* action : menu.actions()) {
      if (!action->isSeparator()) texts.push_back(action->text().toStdString());
    }
    return texts;
  }
  void PushCommand() { manager.push(new QUndoCommand); }

  QUndoStack manager;
  int managerCount = 0;
};

TEST_F(WindowMenuTest, HoldsEverythingInItsPlace) {
  ASSERT_EQ(window->menuBar()->actions().size(), 4);
  EXPECT_EQ(Texts(*Menu(0)), (std::vector<std::string>{"Open", "Save", "Quit"}));
  EXPECT_EQ(Texts(*Menu(1)), (std::vector<std::string>{"Undo", "Redo"}));
  EXPECT_EQ(Texts(*Menu(2)), (std::vector<std::string>{"Refresh", "Update"}));
  EXPECT_EQ(Texts(*Menu(3)), (std::vector<std::string>{"About"}));
}

TEST_F(WindowMenuTest, ShortcutsAreTheUsualOnes) {
  const std::pair<const char*, const char*> shortcuts[] = {
      {"Open", "Ctrl+O"},       {"Save", "Ctrl+S"}, {"Quit", "Ctrl+Q"},   {"Undo", "Ctrl+Z"},
      {"Redo", "Ctrl+Shift+Z"}, {"Refresh", "F5"},  {"Update", "Ctrl+U"}, {"About", ""}};
  for (const auto& [text, shortcut] : shortcuts) {
    EXPECT_EQ(Action(text)->shortcut().toString(QKeySequence::PortableText).toStdString(),
              shortcut);
  }
}

TEST_F(WindowMenuTest, ActionsAreEnabledLikeTheirButtons) {
  const auto states = [this] {
    return Buttons{Action("Refresh")->isEnabled(), Action("Update")->isEnabled(),
                   Action("Open")->isEnabled()};
  };
  EXPECT_EQ(states(), kStarted);
  OpenGoodPackage(0);
  EXPECT_EQ(states(), kReadyWithoutDevice);
  OpenGoodPackage(1);
  EXPECT_EQ(states(), kReadyWithDevice);
  window->SetButtonEnable(false);
  EXPECT_EQ(states(), kUpdating);
  window->SetButtonEnable(true);
  EXPECT_EQ(states(), kFinished);
}

TEST_F(WindowMenuTest, ActionsPressTheirButtons) {
  const RecordedPause pauses;
  Action("Open")->trigger();
  EXPECT_EQ(window->panelCount, 1);
  UseFakeUpdate(1);
  window->buttonRefresh->setEnabled(true);
  hidapi.calls.clear();
  Action("Refresh")->trigger();
  EXPECT_EQ(hidapi.CountOf("hid_enumerate"), 1U);
  Action("Update")->trigger();
  EXPECT_TRUE(window->IsUpdating());
  AwaitEndOfUpdate();
}

TEST_F(WindowMenuTest, SaveAndQuitAreAskedFor) {
  const QSignalSpy saves(window.get(), &MainWindow::SaveRequested);
  const QSignalSpy quits(window.get(), &MainWindow::QuitRequested);
  Action("Save")->trigger();
  EXPECT_EQ(saves.count(), 1);
  EXPECT_EQ(quits.count(), 0);
  Action("Quit")->trigger();
  EXPECT_EQ(quits.count(), 1);
}

TEST_F(WindowMenuTest, UndoManagerIsNotAskedForAtStart) { EXPECT_EQ(managerCount, 0); }

TEST_F(WindowMenuTest, UndoAndRedoActOnTheUndoManager) {
  PushCommand();
  Action("Undo")->trigger();
  EXPECT_EQ(manager.index(), 0);
  Action("Redo")->trigger();
  EXPECT_EQ(manager.index(), 1);
  EXPECT_EQ(managerCount, 2);
}

TEST_F(WindowMenuTest, OpenedEditMenuShowsWhatCanBeUndone) {
  const auto openedMenu = [this] {
    emit Menu(1)->aboutToShow();
    return std::pair(Action("Undo")->isEnabled(), Action("Redo")->isEnabled());
  };
  EXPECT_EQ(openedMenu(), std::pair(false, false));
  PushCommand();
  EXPECT_EQ(openedMenu(), std::pair(true, false));
  manager.undo();
  EXPECT_EQ(openedMenu(), std::pair(false, true));
  EXPECT_EQ(managerCount, 3);
}

TEST_F(WindowMenuTest, ClosedEditMenuLeavesTheShortcutsToTheManager) {
  emit Menu(1)->aboutToShow();
  emit Menu(1)->aboutToHide();
  EXPECT_TRUE(Action("Undo")->isEnabled());
  EXPECT_TRUE(Action("Redo")->isEnabled());
}

TEST_F(WindowMenuTest, WithoutAnUndoManagerNothingIsUndone) {
  for (const auto& provider : {std::function<QUndoStack*()>(), std::function<QUndoStack*()>([] {
                                 return static_cast<QUndoStack*>(nullptr);
                               })}) {
    window->windowWillReturnUndoManager = provider;
    Action("Undo")->trigger();
    emit Menu(1)->aboutToShow();
    EXPECT_FALSE(Action("Undo")->isEnabled());
    emit Menu(1)->aboutToHide();
  }
}

TEST_F(WindowMenuTest, AboutShowsTheVersionAndTheLicences) {
  Action("About")->trigger();
  const auto* const box = qobject_cast<QDialog*>(QApplication::activeModalWidget());
  ASSERT_NE(box, nullptr);
  EXPECT_EQ(box->windowTitle(), "About Hollin");
  std::vector<std::string> texts;
  for (const QLabel* label : box->findChildren<QLabel*>()) {
    EXPECT_EQ(label->textFormat(), Qt::PlainText);
    texts.push_back(label->text().toStdString());
  }
  EXPECT_THAT(texts, ::testing::IsSupersetOf(
                         {kNameAndVersion, "MIT", "Qt 6", "LGPL-3.0", "hidapi", "BSD-3-Clause"}));
}

TEST_F(WindowMenuTest, PaintedIsToldOnce) {
  auto fresh = std::make_unique<TestWindow>();
  const QSignalSpy painted(fresh.get(), &MainWindow::Painted);
  EXPECT_EQ(painted.count(), 0);
  fresh->show();
  EXPECT_TRUE(Await([&] { return painted.count() == 1; }));
  fresh->repaint();
  Settle();
  EXPECT_EQ(painted.count(), 1);
}

}  // namespace
}  // namespace hollin
