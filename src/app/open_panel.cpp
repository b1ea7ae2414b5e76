// SPDX-License-Identifier: MIT
#include "app/open_panel.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileDialog>
#include <QLabel>
#include <QLayout>
#include <QPointer>

namespace hollin {
namespace {

QString Translated(const char* text) { return QCoreApplication::translate("OpenPanel", text); }

QLabel* MakeMessage(QWidget* panel) {
  auto* const message = new QLabel(Translated("Open the update file"), panel);
  message->setTextFormat(Qt::PlainText);
  const int margin = panel->layout()->contentsMargins().left();
  message->setContentsMargins(margin, margin, margin, 0);
  return message;
}

}  // namespace

QFileDialog* MakeOpenPanel(QWidget* parent) {
  auto* const panel = new QFileDialog(parent, Translated("Open File"));
  panel->setOption(QFileDialog::DontUseNativeDialog);  // the desktops' own panels have no message
  panel->setAcceptMode(QFileDialog::AcceptOpen);
  panel->setFileMode(QFileDialog::ExistingFile);
  panel->setNameFilter(Translated("Update packages (*.dat)"));
  panel->layout()->setMenuBar(MakeMessage(panel));  // the one place above all that lies in there
  return panel;
}

std::string RunOpenPanel(QWidget* parent) {
  const QPointer<QFileDialog> panel(MakeOpenPanel(parent));
  const bool isChosen = panel->exec() == QDialog::Accepted;
  std::string path;
  if (panel && isChosen) path = QFile::encodeName(panel->selectedFiles().value(0)).toStdString();
  delete panel;
  return path;
}

}  // namespace hollin
