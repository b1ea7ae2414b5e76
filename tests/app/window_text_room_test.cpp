// SPDX-License-Identifier: MIT
// No text is cut: in both languages, at every scale, in the window and in all that it shows.
#include <QComboBox>
#include <QDialog>
#include <QFileDialog>
#include <QHeaderView>
#include <QListView>
#include <QMenuBar>
#include <QMessageBox>
#include <QTreeView>
#include <filesystem>

#include "app/about_box.h"
#include "app/app_delegate.h"
#include "app/open_panel.h"
#include "app/question.h"
#include "app/single_instance.h"
#include "tests/app/window_language_test.h"

namespace hollin {
namespace {

struct Reader {
  const char* name;
  const char* locale;
  const char* scale;
};

std::ostream& operator<<(std::ostream& out, const Reader& reader) { return out << reader.name; }

// The scale of a desktop counts from the start of an application.
class Scaled {
 protected:
  explicit Scaled(const char* scale) { qputenv("QT_SCALE_FACTOR", scale); }
};

class WindowTextRoomTest : public ::testing::WithParamInterface<Reader>,
                           private Scaled,
                           public WindowLanguageTest {
 protected:
  WindowTextRoomTest() : Scaled(GetParam().scale) {
    qputenv("XDG_CONFIG_HOME", QByteArray::fromStdString(folder.Path("settings")));
    qputenv("HOME", QByteArray::fromStdString(folder.Path()));
    Launch(GetParam().locale);
    EXPECT_EQ(window->devicePixelRatioF(), std::stod(GetParam().scale));
  }
  void ExpectRoomInTheSmallestWindow() {
    for (int i = 0; i < 2; i++) {  // the smallest width first, then the height for it
      window->resize(1, 1);
      Settle();
    }
    ExpectRoom(*window);
  }
  static void ExpectRoomIn(QWidget& dialog) {
    dialog.show();
    Settle();
    ExpectRoom(dialog);
  }
  static void ExpectRoom(const QWidget& widget) {
    for (const auto* label : widget.findChildren<QLabel*>()) ExpectRoomForLabel(*label);
    for (const auto* button : widget.findChildren<QPushButton*>()) {
      ExpectWidth(*button, button->width() - 16, button->text());
    }
    for (const auto* field : widget.findChildren<QLineEdit*>()) {
      ExpectWidth(*field, field->contentsRect().width() - 4, field->placeholderText());
    }
  }
  static void ExpectRoomForLabel(const QLabel& label) {
    if (!label.isVisible()) return;
    const int needed =
        label.hasHeightForWidth() ? label.heightForWidth(label.width()) : label.sizeHint().height();
    EXPECT_GE(label.height(), needed) << label.text().toStdString();
    if (!label.wordWrap()) {
      EXPECT_GE(label.width(), label.sizeHint().width()) << label.text().toStdString();
    }
  }
  static void ExpectWidth(const QWidget& widget, int width, const QString& text) {
    if (!widget.isVisible()) return;
    EXPECT_GE(width, widget.fontMetrics().horizontalAdvance(text)) << text.toStdString();
  }
  static void ExpectRoomInColumns(const QTreeView& list) {
    const QAbstractItemView& columns = list;
    for (int column = 0; column < list.header()->count(); column++) {
      EXPECT_GE(list.columnWidth(column), columns.sizeHintForColumn(column)) << column;
      EXPECT_GE(list.columnWidth(column), list.header()->sectionSizeHint(column)) << column;
    }
    EXPECT_GE(list.viewport()->width(), list.header()->length());
  }
};

TEST_P(WindowTextRoomTest, NothingIsCutInTheWindowBeforeAPackage) {
  EXPECT_FALSE(window->textFieldPath->placeholderText().isEmpty());
  ExpectRoomInTheSmallestWindow();
  EXPECT_GE(window->menuBar()->width(), window->menuBar()->sizeHint().width());
}

TEST_P(WindowTextRoomTest, NothingIsCutWithTheLongestTextsOfAPackage) {
  OpenGoodPackage(0, {.model = std::string(16, 'W'),
                      .version = std::string(16, 'W'),
                      .keys = {"WWWWWWWW", "WWWWWWWW", "WWWWWWWW"}});
  ExpectRoomInTheSmallestWindow();
  OpenGoodPackage(2);
  ExpectRoomInTheSmallestWindow();
}

TEST_P(WindowTextRoomTest, NothingIsCutFromTheKeyboardToTheEndOfAnUpdate) {
  const RecordedPause pauses;
  UseFakeUpdate(1000).failingStep = 998;
  window->deviceNote->show();
  ExpectRoomInTheSmallestWindow();
  window->ShowUpdating(1000);
  window->now += 11h;
  for (int step = 0; step < 999; step++) window->RefreshProgress(step);
  EXPECT_FALSE(window->progressNote->text().isEmpty());
  ExpectRoomInTheSmallestWindow();
  window->duringDialog = [this] { ExpectRoomInTheSmallestWindow(); };
  Update();
}

TEST_P(WindowTextRoomTest, NothingIsCutInTheAlerts) {
  Open(folder.Write("broken.dat", BrokenPackage()));
  Open(folder.Path("missing.dat"));
  window->RefreshProgress(-1);
  window->RefreshProgress(-2);
  ASSERT_EQ(window->alerts.size(), 4U);
  for (const Alert& alert : window->alerts) ExpectRoomIn(*MakeAlertBox(alert, window.get()));
  ExpectRoomIn(*MakeQuestionBox(AppDelegate::QuitQuestion(), window.get()));
  ExpectRoomIn(*MakeAboutBox(window.get()));
  const std::unique_ptr<QMessageBox> other(MakeAnotherHollinBox());
  ExpectRoomIn(*other);
}

TEST_P(WindowTextRoomTest, NothingIsCutInTheOpenPanel) {
  std::filesystem::create_directories(folder.Path("Downloads/Older packages"));
  folder.Write("Downloads/TS30_V1.4.1.dat", MakePackage({.imageSize = 999999}));
  QFileDialog& panel = *MakeOpenPanel(window.get());
  panel.show();
  const auto* const list = panel.findChild<QTreeView*>("treeView");
  ASSERT_TRUE(Await([list] { return list->model()->rowCount(list->rootIndex()) == 2; }));
  ExpectRoomIn(panel);
  ExpectRoomInColumns(*list);
  const QAbstractItemView* const places = panel.findChild<QListView*>("sidebar");
  EXPECT_GE(places->viewport()->width(), places->sizeHintForColumn(0));
  const auto* const types = panel.findChild<QComboBox*>("fileTypeCombo");
  EXPECT_GE(types->width(), types->sizeHint().width());
}

INSTANTIATE_TEST_SUITE_P(Readers, WindowTextRoomTest,
                         ::testing::Values(Reader{"English", "C.UTF-8", "1"},
                                           Reader{"EnglishAt150", "C.UTF-8", "1.5"},
                                           Reader{"EnglishAt200", "C.UTF-8", "2"},
                                           Reader{"German", "de_DE.UTF-8", "1"},
                                           Reader{"GermanAt150", "de_DE.UTF-8", "1.5"},
                                           Reader{"GermanAt200", "de_DE.UTF-8", "2"}),
                         [](const auto& test) { return std::string(test.param.name); });

}  // namespace
}  // namespace hollin
