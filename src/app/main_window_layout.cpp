// SPDX-License-Identifier: MIT
// How the window looks: one function for each group of widgets, in the order in which a user goes
// through them.
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>
#include <vector>

#include "app/main_window.h"

namespace hollin {
namespace {

// Room for the longest message about a keyboard, which names three buttons.
constexpr int kStatusColumns = 60;
constexpr int kStatusLines = 4;

QLabel* MakePlainLabel(const QString& accessibleName) {
  auto* const label = new QLabel;
  label->setTextFormat(Qt::PlainText);
  label->setAccessibleName(accessibleName);
  return label;
}

QLabel* MakeStatusLabel(const QString& accessibleName) {
  QLabel* const label = MakePlainLabel(accessibleName);
  label->setWordWrap(true);
  label->setAlignment(Qt::AlignTop | Qt::AlignLeft);
  const QFontMetrics font = label->fontMetrics();
  label->setMinimumSize(kStatusColumns * font.averageCharWidth(),
                        kStatusLines * font.lineSpacing());
  return label;
}

QLineEdit* MakePathField(const QString& accessibleName) {
  auto* const field = new QLineEdit;
  field->setReadOnly(true);
  field->setAcceptDrops(false);  // what is dropped is the window's
  field->setFocusPolicy(Qt::ClickFocus);
  field->setAccessibleName(accessibleName);
  return field;
}

// Buttons below each other look better alike.
void GiveSameWidth(const std::vector<QPushButton*>& buttons) {
  int width = 0;
  for (const QPushButton* button : buttons) width = std::max(width, button->sizeHint().width());
  for (QPushButton* button : buttons) button->setMinimumWidth(width);
}

QGroupBox* MakeRow(const QString& title, QWidget* content, QPushButton* button) {
  auto* const group = new QGroupBox(title);
  auto* const row = new QHBoxLayout(group);
  row->addWidget(content, 1);
  row->addWidget(button, 0, Qt::AlignTop);
  return group;
}

}  // namespace

void MainWindow::BuildLayout() {
  auto* const content = new QWidget(this);
  auto* const column = new QVBoxLayout(content);
  imageView = new QLabel;
  imageView->setAlignment(Qt::AlignCenter);
  column->addWidget(imageView);
  column->addWidget(MakePackageGroup());
  column->addWidget(MakeDeviceGroup(), 1);
  column->addWidget(MakeUpdateGroup());
  GiveSameWidth({buttonOpen, buttonRefresh, buttonUpdate});
  setCentralWidget(content);
}

QWidget* MainWindow::MakePackageGroup() {
  textFieldPath = MakePathField(tr("Path of the update package"));
  textFieldProductModel = MakePlainLabel(tr("Product model"));
  textFieldFirmwareVersion = MakePlainLabel(tr("Firmware version"));
  buttonOpen = new QPushButton(tr("Open"));
  auto* const fields = new QWidget;
  auto* const form = new QFormLayout(fields);
  form->setContentsMargins(0, 0, 0, 0);
  form->addRow(tr("File:"), textFieldPath);
  form->addRow(tr("Product model:"), textFieldProductModel);
  form->addRow(tr("Firmware version:"), textFieldFirmwareVersion);
  return MakeRow(tr("Package"), fields, buttonOpen);
}

QWidget* MainWindow::MakeDeviceGroup() {
  textFieldDeviceStatus = MakeStatusLabel(QString());
  buttonRefresh = new QPushButton(tr("Refresh"));
  return MakeRow(tr("Keyboard"), textFieldDeviceStatus, buttonRefresh);
}

QWidget* MainWindow::MakeUpdateGroup() {
  progressStatus = new QProgressBar;
  progressStatus->setTextVisible(false);
  progressStatus->setAccessibleName(tr("Progress of the update"));
  buttonUpdate = new QPushButton(tr("Update"));
  return MakeRow(tr("Update"), progressStatus, buttonUpdate);
}

void MainWindow::ConnectActions() {
  connect(buttonOpen, &QPushButton::clicked, this, &MainWindow::OpenDat);
  connect(buttonRefresh, &QPushButton::clicked, this, &MainWindow::RefreshDevice);
  connect(buttonUpdate, &QPushButton::clicked, this, &MainWindow::UpdateDevice);
}

}  // namespace hollin
