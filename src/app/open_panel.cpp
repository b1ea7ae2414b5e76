// SPDX-License-Identifier: MIT
#include "app/open_panel.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFileIconProvider>
#include <QFileInfo>
#include <QHeaderView>
#include <QLabel>
#include <QLayout>
#include <QListView>
#include <QPointer>
#include <QSettings>
#include <QSplitter>
#include <QStandardPaths>
#include <QTreeView>
#include <QUrl>
#include <algorithm>

#include "app/alert.h"
#include "app/keyboard_picture.h"

namespace hollin {
namespace {

struct OpenPanelText {
  Q_DECLARE_TR_FUNCTIONS(OpenPanel)
};

QLabel* MakeMessage(QWidget* panel) {
  auto* const message = new QLabel(OpenPanelText::tr("Open the update file"), panel);
  message->setTextFormat(Qt::PlainText);
  const int margin = panel->layout()->contentsMargins().left();
  message->setContentsMargins(margin, margin, margin, 0);
  return message;
}

// Shows packages as what they are to the user. The panel asks from a thread of its own, which takes
// copies of what was made before.
class PackageIcons : public QFileIconProvider {
 public:
  using QFileIconProvider::icon;

  [[nodiscard]] QIcon icon(const QFileInfo& info) const override {
    return IsPackage(info) ? packageIcon : QFileIconProvider::icon(info);
  }
  [[nodiscard]] QString type(const QFileInfo& info) const override {
    if (info.isDir()) return OpenPanelText::tr("Folder");
    return IsPackage(info) ? OpenPanelText::tr("Update package") : QFileIconProvider::type(info);
  }

 private:
  static bool IsPackage(const QFileInfo& info) {
    return IsPackageName(info.fileName()) && info.isFile();
  }

  QIcon packageIcon = DrawProgramIcon();
};

// Never destroyed: the thread may still ask when its panel goes.
QFileIconProvider& Icons() {
  static auto& icons = *new PackageIcons;
  return icons;
}

constexpr QSize kPanelSize(860, 500);
constexpr int kLeastPlacesWidth = 150;
constexpr int kMostPlacesWidth = 260;
constexpr const char* kFolderKey = "lastFolder";

// Made anew each time: it is seldom used, and never at start.
QSettings UserSettings() {
  return QSettings(QSettings::IniFormat, QSettings::UserScope, "com.tovari.Hollin", "Hollin");
}

QString Downloads() { return QStandardPaths::writableLocation(QStandardPaths::DownloadLocation); }

// A package was most likely downloaded.
QString FirstFolder() {
  QString last = UserSettings().value(kFolderKey).toString();
  if (!last.isEmpty() && QFileInfo(last).isDir()) return last;
  return QFileInfo(Downloads()).isDir() ? Downloads() : QDir::homePath();
}

// Where packages come from, and the whole computer with what is plugged into it. The panel shows
// none twice.
QList<QUrl> Places() {
  QList<QUrl> places = {QUrl::fromLocalFile(QDir::homePath())};
  for (const QString& folder :
       {Downloads(), QStandardPaths::writableLocation(QStandardPaths::DesktopLocation)}) {
    if (QFileInfo(folder).isDir()) places << QUrl::fromLocalFile(folder);
  }
  return places << QUrl("file:");
}

int WidthFor(const QListView& places) {
  const QAbstractItemView& view = places;
  return std::clamp(view.sizeHintForColumn(0) + 2 * view.frameWidth(), kLeastPlacesWidth,
                    kMostPlacesWidth);
}

// The files' names get what the others leave.
void Arrange(const QFileDialog& panel) {
  if (auto* const list = panel.findChild<QTreeView*>("treeView")) {
    list->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    list->header()->setSectionResizeMode(0, QHeaderView::Stretch);
  }
  auto* const places = panel.findChild<QListView*>("sidebar");
  auto* const splitter = panel.findChild<QSplitter*>("splitter");
  if (places == nullptr || splitter == nullptr) return;
  places->setIconSize({16, 16});  // some of the desktops' icons are no larger
  const int width = WidthFor(*places);
  splitter->setSizes({width, kPanelSize.width() - width});
}

// A name can be typed, whatever the list offers.
class OpenPanel : public QFileDialog {
 public:
  using QFileDialog::QFileDialog;

 protected:
  void accept() override {
    const QString path = selectedFiles().value(0);
    if (IsPackageName(path) || QFileInfo(path).isDir()) return QFileDialog::accept();
    RunAlert(
        {.message = OpenPanelText::tr("Open File"),
         .informativeText = OpenPanelText::tr("An update package has a name that ends in .dat."),
         .style = AlertStyle::kWarning},
        this);
  }
};

}  // namespace

bool IsPackageName(const QString& name) { return name.endsWith(".dat", Qt::CaseInsensitive); }

QFileDialog* MakeOpenPanel(QWidget* parent) {
  auto* const panel = new OpenPanel(parent, OpenPanelText::tr("Open File"), FirstFolder());
  panel->setOption(QFileDialog::DontUseNativeDialog);  // the desktops' own panels have no message
  panel->setAcceptMode(QFileDialog::AcceptOpen);
  panel->setFileMode(QFileDialog::ExistingFile);
  panel->setNameFilter(OpenPanelText::tr("Update packages (*.dat)"));
  panel->setIconProvider(&Icons());
  panel->setSidebarUrls(Places());
  panel->setViewMode(QFileDialog::Detail);
  panel->resize(kPanelSize);
  Arrange(*panel);
  panel->layout()->setMenuBar(MakeMessage(panel));  // the one place above all that lies in there
  return panel;
}

std::string RunOpenPanel(QWidget* parent) {
  const QPointer<QFileDialog> panel(MakeOpenPanel(parent));
  const bool isChosen = panel->exec() == QDialog::Accepted;
  std::string path;
  if (panel && isChosen) {
    const QString file = panel->selectedFiles().value(0);
    UserSettings().setValue(kFolderKey, QFileInfo(file).path());
    path = QFile::encodeName(file).toStdString();
  }
  delete panel;
  return path;
}

}  // namespace hollin
