// SPDX-License-Identifier: MIT
#include "app/open_panel.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QHeaderView>
#include <QLabel>
#include <QLayout>
#include <QPointer>
#include <QSettings>
#include <QStandardPaths>
#include <QTreeView>

#include "app/alert.h"

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

constexpr QSize kPanelSize(760, 480);
constexpr const char* kFolderKey = "lastFolder";

// Made anew each time: it is seldom used, and never at start.
QSettings UserSettings() {
  return QSettings(QSettings::IniFormat, QSettings::UserScope, "com.tovari.Hollin", "Hollin");
}

// A package was most likely downloaded.
QString FirstFolder() {
  QString last = UserSettings().value(kFolderKey).toString();
  if (!last.isEmpty() && QFileInfo(last).isDir()) return last;
  const QString downloads = QStandardPaths::writableLocation(QStandardPaths::DownloadLocation);
  return QFileInfo(downloads).isDir() ? downloads : QDir::homePath();
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
  panel->resize(kPanelSize);
  if (auto* const list = panel->findChild<QTreeView*>("treeView")) {
    list->header()->setSectionResizeMode(0, QHeaderView::Stretch);  // the names
  }
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
