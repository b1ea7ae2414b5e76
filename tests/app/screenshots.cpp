// SPDX-License-Identifier: MIT
// Makes a picture of the window in each of its states: hollin_screenshots FOLDER SUFFIX
// [light|dark]
#include <QApplication>
#include <QComboBox>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QScreen>
#include <QTreeView>
#include <chrono>
#include <cstdio>
#include <filesystem>

#include "app/about_box.h"
#include "app/app_delegate.h"
#include "app/main_window.h"
#include "app/open_panel.h"
#include "app/question.h"
#include "app/single_instance.h"
#include "app/text_label.h"
#include "app/theme.h"
#include "app/translations.h"
#include "tests/app/sample_package.h"
#include "tests/app/settle.h"
#include "tests/support/scripted_hidapi.h"
#include "tests/support/temp_folder.h"

namespace hollin {
namespace {

constexpr const char* kUsersFolder = "/home/anna/Downloads";

class Album {
 public:
  Album(std::string albumFolder, std::string pictureSuffix)
      : folder(std::move(albumFolder)), suffix(std::move(pictureSuffix)) {}

  void Take(QWidget& widget, const std::string& name) {
    widget.show();
    Settle();
    const QString path = QString::fromStdString(folder + "/" + name + suffix + ".png");
    if (!widget.grab().save(path)) throw std::runtime_error("cannot write " + path.toStdString());
    std::puts(path.toUtf8().constData());
  }

 private:
  std::string folder, suffix;
};

// Pictures the alerts instead of waiting for an answer.
class PicturedWindow : public MainWindow {
 public:
  explicit PicturedWindow(Album& pictures) : album(pictures) {}
  std::string nextAlert;  // its picture's name; empty for none
  ProgressWords::Time now;

 protected:
  [[nodiscard]] ProgressWords::Time Now() const override { return now; }
  void ShowAlert(const Alert& alert) override {
    if (nextAlert.empty()) return;
    QMessageBox* const box = MakeAlertBox(alert, this);
    album.Take(*box, nextAlert);
    delete box;
    nextAlert.clear();
  }

 private:
  Album& album;
};

// The first steps of an update of twelve, in 7 seconds each.
void BeginUpdate(PicturedWindow& window) {
  window.progressStatus->setRange(0, 12);
  window.ShowUpdating(12);
  for (int step = 0; step < 4; step++) {
    window.now += std::chrono::seconds(7);
    window.RefreshProgress(step);
  }
}

void TakeUpdate(PicturedWindow& window, Album& album) {
  BeginUpdate(window);
  album.Take(window, "6-updating");
  window.now += std::chrono::seconds(58);
  window.nextAlert = "7-completed-alert";
  window.RefreshProgress(-1);
  album.Take(window, "7-completed");
  BeginUpdate(window);
  window.now += std::chrono::seconds(3);
  window.nextAlert = "8-failed-alert";
  window.RefreshProgress(-2);
  album.Take(window, "8-failed");
}

// The home folder of a user who has downloaded packages.
class UsersHome {
 public:
  UsersHome() {
    using namespace std::chrono;
    std::filesystem::create_directories(folder.Path("anna/Downloads/Older packages"));
    WritePackage("TS30_V1.4.1.dat", 2025y / November / 3);
    WritePackage("TS30_V1.4.2.dat", 2026y / May / 19);
    SetDate(folder.Path("anna/Downloads/Older packages"), 2025y / November / 3);
    qputenv("HOME", QByteArray::fromStdString(folder.Path("anna")));
    qputenv("XDG_CONFIG_HOME", QByteArray::fromStdString(folder.Path("settings")));
  }
  UsersHome(const UsersHome&) = delete;
  UsersHome& operator=(const UsersHome&) = delete;

 private:
  static void SetDate(const std::string& path, std::chrono::sys_days date) {
    const auto noon = std::chrono::sys_seconds(date) + std::chrono::hours(12);
    std::filesystem::last_write_time(path, std::chrono::file_clock::from_sys(noon));
  }
  void WritePackage(const std::string& name, std::chrono::sys_days date) const {
    SetDate(folder.Write("anna/Downloads/" + name, MakePackage({.imageSize = 393216})), date);
  }

  TempFolder folder;
};

// The panel shows its folder with the whole path to it.
void TakePanel(PicturedWindow& window, Album& album) {
  QFileDialog& panel = *MakeOpenPanel(&window);
  panel.show();
  Settle();
  auto* const folderBox = panel.findChild<QComboBox*>("lookInCombo");
  folderBox->setItemText(folderBox->currentIndex(), kUsersFolder);
  const auto* const list = panel.findChild<QTreeView*>("treeView");
  if (!Await([list] { return list->model()->rowCount(list->rootIndex()) == 3; })) {
    throw std::runtime_error("no packages in the panel");
  }
  album.Take(panel, "9-panel");
  panel.close();
}

void TakeMenus(PicturedWindow& window, Album& album) {
  for (QAction* action : window.menuBar()->actions()) {
    album.Take(*action->menu(), "9-menu-" + action->text().remove('&').toLower().toStdString());
    action->menu()->close();
  }
}

void TakeDialogs(PicturedWindow& window, Album& album) {
  QDialog& about = *MakeAboutBox(&window);
  album.Take(about, "9-about");
  about.close();
  QMessageBox& question = *MakeQuestionBox(AppDelegate::QuitQuestion(), &window);
  album.Take(question, "9-quit-question");
  question.close();
  QMessageBox& error = *MakeAlertBox(
      {.message = AppDelegate::tr("Failed to initialize the store"),
       .informativeText = AppDelegate::tr("There was an error building up the data file."),
       .style = AlertStyle::kWarning},
      &window);
  album.Take(error, "9-store-error");
  error.close();
  QMessageBox& other = *MakeAnotherHollinBox();
  album.Take(other, "9-another-hollin");
  delete &other;
  TakeMenus(window, album);
}

void TakeAll(Album& album) {
  ScriptedHidapi& hidapi = Hidapi();
  const TempFolder folder;
  PicturedWindow window(album);
  window.InitButton();
  window.SetCaption("Varnholt TS30 Firmware Update V2.0.0");
  album.Take(window, "1-started");
  window.nextAlert = "2-refused-alert";
  window.OpenDatAtPath(std::string(kUsersFolder) + "/TS30_V1.4.2.dat");
  album.Take(window, "2-refused");
  hidapi.deviceCount = 0;
  window.OpenDatAtPath(folder.Write(
      "TS30_V1.4.2.dat",
      MakePackage({.version = "V1.4.2", .keys = {"Function", "Transp.", "Registry"}})));
  window.textFieldPath->setText(QString(kUsersFolder) + "/TS30_V1.4.2.dat");
  album.Take(window, "3-not-connected");
  hidapi.deviceCount = 2;
  window.RefreshDevice();
  album.Take(window, "4-too-many");
  hidapi.deviceCount = 1;
  window.RefreshDevice();
  album.Take(window, "5-ready");
  window.deviceNote->show();
  album.Take(window, "5-ready-without-rights");
  window.deviceNote->hide();
  TakePanel(window, album);
  TakeUpdate(window, album);
  TakeDialogs(window, album);
  window.resize(1, 1);
  album.Take(window, "10-smallest");
}

}  // namespace
}  // namespace hollin

// NOLINTNEXTLINE(bugprone-exception-escape): no picture is made then, and that is all.
int main(int argc, char** argv) {
  if (argc < 3) return 2;
  const hollin::UsersHome home;
  const QApplication application(argc, argv);
  const bool isDark = argc > 3 && QString(argv[3]) == "dark";
  if (isDark)
    QApplication::setPalette(QPalette(Qt::white, Qt::black, Qt::gray, Qt::gray, Qt::gray, Qt::white,
                                      Qt::white, Qt::black, Qt::black));
  hollin::UseLanguageOfLocale();
  hollin::UseOwnLook();
  hollin::Album album(argv[1], argv[2]);
  hollin::TakeAll(album);
}
