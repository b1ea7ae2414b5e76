// SPDX-License-Identifier: MIT
// The window's menus. An action that has a button is that button's: it presses it, and is enabled
// as long as it is.
#include <QAction>
#include <QDialog>
#include <QEvent>
#include <QKeySequence>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QUndoStack>

#include "app/about_box.h"
#include "app/main_window.h"

namespace hollin {
namespace {

// Gives an action the enabled state of a button.
class SameState : public QObject {
 public:
  SameState(QPushButton* button, QAction* action) : QObject(action), enabledAction(action) {
    button->installEventFilter(this);
    action->setEnabled(button->isEnabled());
  }

  bool eventFilter(QObject* object, QEvent* event) override {
    if (event->type() == QEvent::EnabledChange) {
      enabledAction->setEnabled(static_cast<QWidget*>(object)->isEnabled());
    }
    return false;
  }

 private:
  QAction* enabledAction;
};

}  // namespace

void MainWindow::BuildMenus() {
  BuildFileMenu();
  BuildEditMenu();
  BuildKeyboardMenu();
  BuildHelpMenu();
}

QAction* MainWindow::AddAction(QMenu* menu, const QString& text, const QKeySequence& shortcut) {
  QAction* const action = menu->addAction(text);
  action->setShortcut(shortcut);
  return action;
}

void MainWindow::PressWith(QAction* action, QPushButton* button) {
  new SameState(button, action);
  connect(action, &QAction::triggered, button, &QPushButton::click);
}

void MainWindow::BuildFileMenu() {
  QMenu* const menu = menuBar()->addMenu(tr("&File"));
  PressWith(AddAction(menu, tr("Open"), Qt::CTRL | Qt::Key_O), buttonOpen);
  connect(AddAction(menu, tr("Save"), Qt::CTRL | Qt::Key_S), &QAction::triggered, this,
          &MainWindow::SaveRequested);
  menu->addSeparator();
  connect(AddAction(menu, tr("Quit"), Qt::CTRL | Qt::Key_Q), &QAction::triggered, this,
          &MainWindow::QuitRequested);
}

// Both are enabled but while the menu is open: a shortcut asks the undo manager anew.
void MainWindow::BuildEditMenu() {
  QMenu* const menu = menuBar()->addMenu(tr("&Edit"));
  QAction* const undo = AddAction(menu, tr("Undo"), Qt::CTRL | Qt::Key_Z);
  QAction* const redo = AddAction(menu, tr("Redo"), Qt::CTRL | Qt::SHIFT | Qt::Key_Z);
  connect(undo, &QAction::triggered, this, [this] { UseUndoManager(&QUndoStack::undo); });
  connect(redo, &QAction::triggered, this, [this] { UseUndoManager(&QUndoStack::redo); });
  connect(menu, &QMenu::aboutToShow, this, [this, undo, redo] {
    const QUndoStack* const manager = UndoManager();
    undo->setEnabled(manager != nullptr && manager->canUndo());
    redo->setEnabled(manager != nullptr && manager->canRedo());
  });
  connect(menu, &QMenu::aboutToHide, this, [undo, redo] {
    undo->setEnabled(true);
    redo->setEnabled(true);
  });
}

void MainWindow::BuildKeyboardMenu() {
  QMenu* const menu = menuBar()->addMenu(tr("&Keyboard"));
  PressWith(AddAction(menu, tr("Refresh"), Qt::Key_F5), buttonRefresh);
  PressWith(AddAction(menu, tr("Update"), Qt::CTRL | Qt::Key_U), buttonUpdate);
}

void MainWindow::BuildHelpMenu() {
  QMenu* const menu = menuBar()->addMenu(tr("&Help"));
  connect(AddAction(menu, tr("About"), {}), &QAction::triggered, this, [this] {
    QDialog* const box = MakeAboutBox(this);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->open();
  });
}

QUndoStack* MainWindow::UndoManager() const {
  return windowWillReturnUndoManager ? windowWillReturnUndoManager() : nullptr;
}

void MainWindow::UseUndoManager(void (QUndoStack::*use)()) {
  QUndoStack* const manager = UndoManager();
  if (manager != nullptr) (manager->*use)();
}

}  // namespace hollin
