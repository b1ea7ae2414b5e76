// SPDX-License-Identifier: MIT
// The dialogs themselves, and texts that only look like markup, formats or marks of Qt's.
#include <QAbstractItemView>
#include <QFileDialog>
#include <QFileIconProvider>
#include <QMessageBox>
#include <QTimer>
#include <QWindow>
#include <filesystem>

#include "app/keyboard_picture.h"
#include "app/open_panel.h"
#include "tests/app/window_test.h"

namespace hollin {
namespace {

constexpr const char* kTrickyText = "<img src=/x> %1 %2 {} &n [*] \x01 \xF0\x9F\x8E\xB9";

class WindowDialogTest : public WindowTest {
 protected:
  // The panel remembers its last folder below there.
  WindowDialogTest() {
    qputenv("XDG_CONFIG_HOME", QByteArray::fromStdString(folder.Path("settings")));
    qputenv("HOME", QByteArray::fromStdString(folder.Path()));
  }

  // Once the next dialog is up, does `answer` with it.
  template <typename Dialog>
  void AnswerNext(const std::function<void(Dialog&)>& answer) {
    QTimer::singleShot(0, &application, [this, answer] {
      auto* const dialog = qobject_cast<Dialog*>(QApplication::activeModalWidget());
      if (dialog == nullptr) return AnswerNext<Dialog>(answer);
      answer(*dialog);
    });
  }
  [[nodiscard]] QMessageBox& Box(const Alert& alert) { return *MakeAlertBox(alert, window.get()); }
};

std::string ShownTitle(const QWidget& widget) {
  return widget.windowHandle()->title().toStdString();
}

TEST_F(WindowDialogTest, AlertBoxShowsTitleAndText) {
  const QMessageBox& box = Box({.message = "Error", .informativeText = "What happened"});
  EXPECT_EQ(box.windowTitle(), "Error");
  EXPECT_EQ(box.text(), "Error");
  EXPECT_EQ(box.informativeText(), "What happened");
}

TEST_F(WindowDialogTest, AlertBoxShowsItsStyle) {
  EXPECT_EQ(Box({.style = AlertStyle::kWarning}).icon(), QMessageBox::Warning);
  EXPECT_EQ(Box({.style = AlertStyle::kInformational}).icon(), QMessageBox::Information);
}

TEST_F(WindowDialogTest, AlertBoxShowsAFolder) {
  const QMessageBox& box = Box({.icon = AlertIcon::kFolder});
  EXPECT_FALSE(box.iconPixmap().isNull());
  const QPixmap information = Box({}).iconPixmap();
  EXPECT_NE(box.iconPixmap().toImage(), information.toImage());
}

TEST_F(WindowDialogTest, AlertBoxTakesNoTextForMarkup) {
  const QMessageBox& box = Box({.message = kTrickyText, .informativeText = kTrickyText});
  EXPECT_EQ(box.informativeText().toStdString(), kTrickyText);
  size_t labels = 0;
  for (const QLabel* label : box.findChildren<QLabel*>()) {
    EXPECT_EQ(label->textFormat(), Qt::PlainText);
    labels++;
  }
  EXPECT_GE(labels, 2U);
}

TEST_F(WindowDialogTest, AlertIsModalAndGoneWhenDismissed) {
  bool isModal = false;
  AnswerNext<QMessageBox>([&](QMessageBox& box) {
    isModal = box.isModal();
    box.accept();
  });
  RunAlert({.message = "Error", .informativeText = "x"}, window.get());
  EXPECT_TRUE(isModal);
  EXPECT_TRUE(window->findChildren<QMessageBox*>().empty());
}

TEST_F(WindowDialogTest, AlertBearsThatItsWindowGoes) {
  AnswerNext<QMessageBox>([&](QMessageBox&) { window.reset(); });
  RunAlert({.message = "Error", .informativeText = "x"}, window.get());
  EXPECT_EQ(window, nullptr);
}

TEST_F(WindowDialogTest, OpenPanelIsSetAsItShouldBe) {
  QFileDialog& panel = *MakeOpenPanel(window.get());
  EXPECT_EQ(panel.windowTitle(), "Open File");
  EXPECT_EQ(panel.fileMode(), QFileDialog::ExistingFile);
  EXPECT_EQ(panel.acceptMode(), QFileDialog::AcceptOpen);
  ASSERT_EQ(panel.nameFilters().size(), 1);
  EXPECT_TRUE(panel.nameFilters().at(0).endsWith("(*.dat)"));
}

TEST_F(WindowDialogTest, OpenPanelShowsItsMessage) {
  QFileDialog& panel = *MakeOpenPanel(window.get());
  panel.show();
  const QLabel* message = nullptr;
  for (const QLabel* label : panel.findChildren<QLabel*>()) {
    if (label->text() == "Open the update file") message = label;
  }
  ASSERT_NE(message, nullptr);
  EXPECT_TRUE(message->isVisible());
  EXPECT_EQ(message->textFormat(), Qt::PlainText);
}

TEST_F(WindowDialogTest, OpenPanelGivesThePathOfTheChosenFile) {
  const std::string path = folder.Write(
      "Gr\xC3\xBC\xC3\x9F"
      "e %1.DAT",
      MakePackage());
  AnswerNext<QFileDialog>([&](QFileDialog& panel) {
    panel.setDirectory(QString::fromStdString(folder.Path()));
    panel.selectFile(QString::fromStdString(path));
    QMetaObject::invokeMethod(&panel, "accept");
  });
  EXPECT_EQ(RunOpenPanel(window.get()), path);
  EXPECT_TRUE(window->findChildren<QFileDialog*>().empty());
}

TEST_F(WindowDialogTest, OpenPanelTakesNoFolder) {
  AnswerNext<QFileDialog>([&](QFileDialog& panel) {
    panel.selectFile(QString::fromStdString(folder.Path()));
    QMetaObject::invokeMethod(&panel, "accept");
    EXPECT_TRUE(panel.isVisible());
    panel.reject();
  });
  EXPECT_EQ(RunOpenPanel(window.get()), "");
}

TEST_F(WindowDialogTest, OpenPanelOffersDatInAnyLetterCaseAndNothingElse) {
  folder.Write("lower.dat", MakePackage());
  folder.Write("UPPER.DAT", MakePackage());
  folder.Write("other.bin", MakePackage());
  QFileDialog& panel = *MakeOpenPanel(window.get());
  panel.setDirectory(QString::fromStdString(folder.Path()));
  panel.show();
  const auto* const list = panel.findChild<QAbstractItemView*>("listView");
  ASSERT_NE(list, nullptr);
  const auto names = [list] {
    QStringList found;
    for (int row = 0; row < list->model()->rowCount(list->rootIndex()); row++) {
      found << list->model()->index(row, 0, list->rootIndex()).data().toString();
    }
    found.sort();
    return found;
  };
  EXPECT_TRUE(Await([&] { return names() == QStringList{"UPPER.DAT", "lower.dat"}; }));
}

TEST_F(WindowDialogTest, NameOfAPackageEndsInDatInAnyLetterCase) {
  for (const char* name : {"a.dat", "a.DAT", "/b/a.dAt", ".dat"}) EXPECT_TRUE(IsPackageName(name));
  for (const char* name : {"a.data", "a.da", "adat", "dat", "a.dat ", ""}) {
    EXPECT_FALSE(IsPackageName(name)) << name;
  }
}

TEST_F(WindowDialogTest, TypedNameOfAnotherTypeIsRefusedByThePanel) {
  folder.Write("other.bin", MakePackage());
  std::string refusal;
  AnswerNext<QFileDialog>([&](QFileDialog& panel) {
    panel.setDirectory(QString::fromStdString(folder.Path()));
    panel.findChild<QLineEdit*>("fileNameEdit")->setText("other.bin");
    AnswerNext<QMessageBox>([&](QMessageBox& box) {
      refusal = box.informativeText().toStdString();
      box.accept();
    });
    QMetaObject::invokeMethod(&panel, "accept");
    EXPECT_TRUE(panel.isVisible());
    panel.reject();
  });
  EXPECT_EQ(RunOpenPanel(window.get()), "");
  EXPECT_EQ(refusal, "An update package has a name that ends in .dat.");
}

TEST_F(WindowDialogTest, OpenPanelRemembersTheFolderOfTheChosenPackage) {
  const auto openedFolder = [this] {
    return MakeOpenPanel(window.get())->directory().path().toStdString();
  };
  EXPECT_EQ(openedFolder(), folder.Path());  // the home folder at first
  std::filesystem::create_directory(folder.Path("packages"));
  const std::string path = folder.Write("packages/a.dat", MakePackage());
  AnswerNext<QFileDialog>([&](QFileDialog& panel) {
    panel.selectFile(QString::fromStdString(path));
    QMetaObject::invokeMethod(&panel, "accept");
  });
  EXPECT_EQ(RunOpenPanel(window.get()), path);
  EXPECT_EQ(openedFolder(), folder.Path("packages"));
  std::filesystem::remove_all(folder.Path("packages"));
  EXPECT_EQ(openedFolder(), folder.Path());
}

TEST_F(WindowDialogTest, OpenPanelBeginsAmongTheDownloads) {
  std::filesystem::create_directory(folder.Path("Downloads"));
  EXPECT_EQ(MakeOpenPanel(window.get())->directory().path().toStdString(),
            folder.Path("Downloads"));
}

TEST_F(WindowDialogTest, OpenPanelTellsPackagesFromFolders) {
  std::filesystem::create_directory(folder.Path("folder.dat"));
  const QFileInfo package(QString::fromStdString(folder.Write("PACKAGE.DAT", MakePackage())));
  const QFileInfo directory(QString::fromStdString(folder.Path("folder.dat")));
  const QAbstractFileIconProvider& icons = *MakeOpenPanel(window.get())->iconProvider();
  EXPECT_EQ(icons.type(package), "Update package");
  EXPECT_EQ(icons.type(directory), "Folder");
  const auto picture = [&](const QFileInfo& file) {
    return icons.icon(file).pixmap(16).toImage().convertToFormat(QImage::Format_RGB32);
  };
  EXPECT_EQ(picture(package),
            DrawProgramIcon().pixmap(16).toImage().convertToFormat(QImage::Format_RGB32));
  EXPECT_NE(picture(directory), picture(package));
}

TEST_F(WindowDialogTest, OpenPanelOffersTheUsersPlacesOnceEach) {
  const auto places = [this] { return MakeOpenPanel(window.get())->sidebarUrls(); };
  const QUrl home = QUrl::fromLocalFile(QString::fromStdString(folder.Path()));
  const QUrl computer("file:");
  EXPECT_EQ(places(), (QList<QUrl>{home, computer}));
  std::filesystem::create_directory(folder.Path("Downloads"));
  std::filesystem::create_directory(folder.Path("Desktop"));
  EXPECT_EQ(places(), (QList<QUrl>{home, QUrl(home.toString() + "/Downloads"),
                                   QUrl(home.toString() + "/Desktop"), computer}));
  std::filesystem::create_directory(folder.Path("settings"));
  folder.Write("settings/user-dirs.dirs",
               "XDG_DOWNLOAD_DIR=\"$HOME/\"\nXDG_DESKTOP_DIR=\"$HOME/\"\n");
  EXPECT_EQ(places(), (QList<QUrl>{home, computer}));
}

TEST_F(WindowDialogTest, CancelledPanelGivesNoPath) {
  AnswerNext<QFileDialog>([](QFileDialog& panel) { panel.reject(); });
  EXPECT_EQ(RunOpenPanel(window.get()), "");
}

TEST_F(WindowDialogTest, OpenPanelBearsThatItsWindowGoes) {
  AnswerNext<QFileDialog>([&](QFileDialog&) { window.reset(); });
  EXPECT_EQ(RunOpenPanel(window.get()), "");
  EXPECT_EQ(window, nullptr);
}

TEST_F(WindowDialogTest, TextsOfAPackageAreShownAsTheyAre) {
  OpenGoodPackage(0, {.model = "<img src=/x>%1", .version = "<b>&V1 [*]{}\x01"});
  EXPECT_EQ(Model(), "<img src=/x>%1");
  EXPECT_EQ(Version(), "<b>&V1 [*]{}\x01");
  EXPECT_EQ(window->textFieldProductModel->textFormat(), Qt::PlainText);
  EXPECT_EQ(window->textFieldFirmwareVersion->textFormat(), Qt::PlainText);
  EXPECT_EQ(window->textFieldDeviceStatus->textFormat(), Qt::PlainText);
}

TEST_F(WindowDialogTest, TextsThatAreNotUtf8AreShownWithReplacements) {
  OpenGoodPackage(0, {.model = "A\xFF"
                               "B"});
  EXPECT_EQ(Model(),
            "A\xEF\xBF\xBD"
            "B");
}

TEST_F(WindowDialogTest, PathsAreShownAsTheyAre) {
  const std::string path =
      folder.Path(kTrickyText).substr(0, folder.Path().size() + 1) + "<b>%1 %2 [*] &x.dat";
  Open(path);
  EXPECT_EQ(Path(), path);
  EXPECT_EQ(AlertText(), "Unable to open dat file: " + path);
}

TEST_F(WindowDialogTest, PathThatIsNotUtf8IsOpenedAndShownWithReplacements) {
  const std::string path = folder.Write("\xFF.dat", MakePackage());
  Open(path);
  EXPECT_TRUE(window->datFile.IsFileReady());
  EXPECT_EQ(Path(), folder.Path("\xEF\xBF\xBD.dat"));
}

TEST_F(WindowDialogTest, CaptionIsShownAsItIs) {
  window->show();
  for (const std::string caption : {"Varnholt", "a [*] b", "[*][*]", "x[*]", "%1 <b>&n</b> {}"}) {
    window->SetCaption(caption);
    EXPECT_EQ(ShownTitle(*window), caption);
  }
}

}  // namespace
}  // namespace hollin
