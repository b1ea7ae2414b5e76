// SPDX-License-Identifier: MIT
// The same window in the two languages.
#include "tests/app/window_language_test.h"

#include <gmock/gmock.h>

#include <QDialog>
#include <QFileDialog>
#include <QFileIconProvider>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <algorithm>

#include "app/about_box.h"
#include "app/app_delegate.h"
#include "app/open_panel.h"
#include "app/question.h"

namespace hollin {
namespace {

constexpr const char* kAboutHeading = "Hollin " HOLLIN_VERSION;

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
  const std::vector<std::string> names = {
      "",      "\u2013",   "&Keyboard", kAboutHeading,  "Hollin",           "MIT",
      "Qt 6",  "LGPL-3.0", "hidapi",    "BSD-3-Clause", "libudev",          "LGPL-2.1",
      "{fmt}", "utfcpp",   "BSL-1.0",   "fontconfig",   "HPND-sell-variant"};
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
  Open(folder.Write("broken.dat", BrokenPackage()));
  EXPECT_EQ(AlertText(1),
            "Pr\u00FCfsumme oder Dateiformat fehlerhaft: " + folder.Path("broken.dat"));
}

TEST_F(WindowLanguageTest, RightsAreAskedForInGerman) {
  Launch("de_DE.UTF-8");
  EXPECT_EQ(window->deviceNote->text(),
            "Keine Berechtigung, das Keyboard zu \u00F6ffnen. Installieren Sie die udev-Regel von "
            "Hollin und schlie\u00DFen Sie das Keyboard neu an.");
}

TEST_F(WindowLanguageTest, UpdateIsToldInGerman) {
  Launch("de_DE.UTF-8");
  window->ShowUpdating(3);
  EXPECT_EQ(window->progressNote->text(), "Schritt 1 von 3  \u00B7  0:00 vergangen");
  window->now += 60s;
  window->RefreshProgress(0);
  window->RefreshProgress(1);
  EXPECT_EQ(window->progressNote->text(),
            "Schritt 3 von 3  \u00B7  1:00 vergangen  \u00B7  noch etwa 0:30");
  window->RefreshProgress(-2);
  EXPECT_EQ(window->progressNote->text(), "In Schritt 3 von 3 nach 1:00 abgebrochen");
  EXPECT_EQ(window->alerts.at(0).message, "Fehler");
  EXPECT_EQ(AlertText(), "Fehler bei der Aktualisierung!");
  window->ShowUpdating(3);
  window->now += 4s;
  window->RefreshProgress(0);
  window->RefreshProgress(1);
  EXPECT_EQ(window->progressNote->text(),
            "Schritt 3 von 3  \u00B7  0:04 vergangen  \u00B7  noch wenige Sekunden");
  window->RefreshProgress(-1);
  EXPECT_EQ(window->progressNote->text(), "In 0:04 abgeschlossen");
  EXPECT_EQ(window->alerts.at(1).message, "Information");
  EXPECT_EQ(AlertText(1),
            "Die Aktualisierung ist abgeschlossen. Bitte starten Sie das Keyboard mit dem "
            "Netzschalter des TS30 neu.");
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
  const QFileDialog& panel = *MakeOpenPanel(window.get());
  EXPECT_EQ(panel.windowTitle(), "Datei \u00F6ffnen");
  EXPECT_THAT(TextsIn(panel), ::testing::Contains("\u00D6ffnen Sie die Update-Datei"));
  EXPECT_EQ(panel.nameFilters(), QStringList("Update-Pakete (*.dat)"));
  EXPECT_EQ(panel.iconProvider()->type(QFileInfo("/")), "Ordner");
  const std::string path = folder.Write("a.dat", MakePackage());
  EXPECT_EQ(panel.iconProvider()->type(QFileInfo(QString::fromStdString(path))), "Update-Paket");
}

TEST_F(WindowLanguageTest, QuestionBeforeQuittingIsAskedInGerman) {
  Launch("de_DE.UTF-8");
  const Question question = AppDelegate::QuitQuestion();
  EXPECT_EQ(question.alert.message,
            "Die \u00C4nderungen konnten beim Beenden nicht gesichert werden. Trotzdem beenden?");
  EXPECT_EQ(question.alert.informativeText,
            "Wenn Sie jetzt beenden, gehen alle \u00C4nderungen seit dem letzten erfolgreichen "
            "Sichern verloren");
  EXPECT_EQ(question.firstButton, "Trotzdem beenden");
  EXPECT_EQ(question.secondButton, "Abbrechen");
}

}  // namespace
}  // namespace hollin
