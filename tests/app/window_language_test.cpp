// SPDX-License-Identifier: MIT
// The same window in the two languages.
#include <gmock/gmock.h>

#include <QDialog>
#include <QFileDialog>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <algorithm>

#include "app/about_box.h"
#include "app/open_panel.h"
#include "app/text_label.h"
#include "app/theme.h"
#include "app/translations.h"
#include "tests/app/window_test.h"

namespace hollin {
namespace {

constexpr const char* kNameAndVersion = "Hollin " HOLLIN_VERSION;

class WindowLanguageTest : public WindowTest {
 protected:
  void Launch(const char* locale) {
    window.reset();
    qunsetenv("LANGUAGE");
    qputenv("LC_ALL", locale);
    UseLanguageOfLocale();
    UseOwnLook();
    window = std::make_unique<TestWindow>();
    window->InitButton();
    window->show();
    Settle();
  }
  // All that stands in a window, its menus included.
  static std::vector<std::string> TextsIn(const QWidget& widget) {
    std::vector<std::string> texts = {widget.windowTitle().toStdString()};
    for (const auto* label : widget.findChildren<QLabel*>()) {
      const auto* const text = qobject_cast<const TextLabel*>(label);
      texts.push_back((text != nullptr ? text->Shown() : label->text()).toStdString());
      texts.push_back(label->toolTip().toStdString());
    }
    for (const auto* button : widget.findChildren<QPushButton*>()) {
      texts.push_back(button->text().toStdString());
    }
    for (const auto* action : widget.findChildren<QAction*>()) {
      texts.push_back(action->text().toStdString());
    }
    for (const auto* field : widget.findChildren<QLineEdit*>()) {
      texts.push_back(field->placeholderText().toStdString());
    }
    return texts;
  }
  static void ExpectNoTextCut(const QWidget& widget) {
    for (const auto* label : widget.findChildren<QLabel*>()) {
      if (!label->isVisible() || label->text().isEmpty()) continue;
      const int needed = label->hasHeightForWidth() ? label->heightForWidth(label->width())
                                                    : label->sizeHint().height();
      EXPECT_GE(label->height(), needed) << label->text().toStdString();
      if (label->wordWrap()) continue;
      EXPECT_GE(label->width(), label->sizeHint().width()) << label->text().toStdString();
    }
    for (const auto* button : widget.findChildren<QPushButton*>()) {
      if (!button->isVisible()) continue;
      EXPECT_GE(button->width(), button->fontMetrics().horizontalAdvance(button->text()) + 16);
    }
  }
  void ExpectFieldShowsAllOf(const QLineEdit& field, const QString& text) {
    EXPECT_GE(field.width(), field.fontMetrics().horizontalAdvance(text)) << text.toStdString();
  }
};

class WindowTextRoomTest : public WindowLanguageTest,
                           public ::testing::WithParamInterface<const char*> {};

TEST_P(WindowTextRoomTest, NoTextIsCutInTheSmallestWindow) {
  Launch(GetParam());
  const RecordedPause pauses;
  const auto check = [this] {
    window->resize(1, 1);
    Settle();
    window->resize(1, 1);
    Settle();
    ExpectNoTextCut(*window);
  };
  ExpectFieldShowsAllOf(*window->textFieldPath, window->textFieldPath->placeholderText());
  check();
  OpenGoodPackage(0, {.model = std::string(16, 'W'),
                      .version = std::string(16, 'W'),
                      .keys = {"WWWWWWWW", "WWWWWWWW", "WWWWWWWW"}});
  check();
  OpenGoodPackage(2);
  check();
  UseFakeUpdate(3).failingStep = 1;
  check();
  window->duringDialog = check;
  Update();
  for (const Alert& alert : window->alerts) {
    const std::unique_ptr<QMessageBox> box(MakeAlertBox(alert, nullptr));
    box->show();
    Settle();
    ExpectNoTextCut(*box);
  }
  const std::unique_ptr<QDialog> about(MakeAboutBox(nullptr));
  about->show();
  Settle();
  ExpectNoTextCut(*about);
}

TEST_P(WindowTextRoomTest, NoteAboutRightsIsNotCut) {
  Launch(GetParam());
  EXPECT_FALSE(window->deviceNote->isVisible());
  window->deviceNote->show();
  window->resize(1, 1);
  Settle();
  ExpectNoTextCut(*window);
}

INSTANTIATE_TEST_SUITE_P(Languages, WindowTextRoomTest, ::testing::Values("C.UTF-8", "de_DE.UTF-8"),
                         [](const auto& test) {
                           return std::string(test.param).substr(0, test.param[1] == '.' ? 1 : 2);
                         });

TEST_F(WindowLanguageTest, LocaleWithoutATranslationShowsTheEnglishTexts) {
  Launch("C");
  const std::vector<std::string> english = TextsIn(*window);
  for (const char* locale : {"en_US.UTF-8", "fr_FR.UTF-8", "ja_JP.UTF-8", "xx"}) {
    Launch(locale);
    EXPECT_EQ(TextsIn(*window), english) << locale;
    EXPECT_EQ(TextsIn(*MakeOpenPanel(window.get())).at(0), "Open File");
    for (const auto* button : MakeOpenPanel(window.get())->findChildren<QPushButton*>()) {
      EXPECT_THAT((std::vector<std::string>{"&Open", "Cancel"}),
                  ::testing::Contains(button->text().toStdString()));
    }
  }
}

TEST_F(WindowLanguageTest, SecondChoiceOfTheUserIsNotMixedIn) {
  qputenv("LANGUAGE", "fr:de");
  qputenv("LC_ALL", "fr_FR.UTF-8");
  UseLanguageOfLocale();
  EXPECT_EQ(MainWindow::tr("Update Error!"), "Update Error!");
}

TEST_F(WindowLanguageTest, GermanWindowHasNoEnglishTextLeft) {
  Launch("C");
  std::vector<std::string> english = TextsIn(*window);
  const std::vector<std::string> aboutInEnglish = TextsIn(*MakeAboutBox(window.get()));
  english.insert(english.end(), aboutInEnglish.begin(), aboutInEnglish.end());
  Launch("de_AT.UTF-8");
  std::vector<std::string> german = TextsIn(*window);
  const std::vector<std::string> about = TextsIn(*MakeAboutBox(window.get()));
  german.insert(german.end(), about.begin(), about.end());
  ASSERT_EQ(german.size(), english.size());
  // The same in every language.
  const std::vector<std::string> names = {"",       "\u2013",       "&Keyboard", kNameAndVersion,
                                          "Hollin", "MIT",          "Qt 6",      "LGPL-3.0",
                                          "hidapi", "BSD-3-Clause", "libudev",   "LGPL-2.1",
                                          "{fmt}",  "utfcpp",       "BSL-1.0"};
  for (size_t i = 0; i < english.size(); i++) {
    if (std::ranges::find(names, english[i]) != names.end()) continue;
    EXPECT_NE(german[i], english[i]);
  }
}

TEST_F(WindowLanguageTest, StatesAreToldInGerman) {
  Launch("de_DE.UTF-8");
  OpenGoodPackage(1);
  EXPECT_EQ(Status(),
            "Das TS30 ist verbunden. Bitte dr\u00FCcken Sie jetzt auf \u201EAktualisieren\u201C.");
  OpenGoodPackage(2);
  EXPECT_EQ(Status(), "Mehr als ein Ger\u00E4t! Bitte entfernen Sie die \u00FCberz\u00E4hligen.");
  OpenGoodPackage(0);
  EXPECT_EQ(Status(), "Das TS30 ist nicht verbunden.");
  Open(folder.Path("missing.dat"));
  EXPECT_EQ(window->alerts.at(0).message, "Fehler");
  EXPECT_EQ(AlertText(),
            "Die dat-Datei kann nicht ge\u00F6ffnet werden: " + folder.Path("missing.dat"));
}

TEST_F(WindowLanguageTest, ButtonsToHoldAreNamedInGerman) {
  Launch("de_DE.UTF-8");
  const std::string begin = "Das TS30 ist nicht verbunden. Bitte halten Sie die ";
  const std::string end = " gedr\u00FCckt, w\u00E4hrend Sie das TS30 einschalten.";
  OpenGoodPackage(0, {.keys = {"A", "", ""}});
  EXPECT_EQ(Status(), begin + "Taste \u201EA\u201C" + end);
  OpenGoodPackage(0, {.keys = {"A", "%1", ""}});
  EXPECT_EQ(Status(), begin + "Tasten \u201EA\u201C und \u201E%1\u201C" + end);
  OpenGoodPackage(0, {.keys = {"%2", "%3", "C"}});
  EXPECT_EQ(Status(), begin + "Tasten \u201E%2\u201C + \u201E%3\u201C + \u201EC\u201C" + end);
}

TEST_F(WindowLanguageTest, CaptionIsNotTranslated) {
  Launch("de_DE.UTF-8");
  LoadDeviceSettings(*window);
  EXPECT_EQ(window->windowTitle(), "Varnholt TS30 Firmware Update V2.0.0");
}

TEST_F(WindowLanguageTest, PanelSpeaksGerman) {
  Launch("de_DE.UTF-8");
  EXPECT_EQ(MakeOpenPanel(window.get())->windowTitle(), "Datei \u00F6ffnen");
}

}  // namespace
}  // namespace hollin
