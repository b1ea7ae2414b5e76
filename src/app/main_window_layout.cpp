// SPDX-License-Identifier: MIT
// How the window looks: a heading, and the three steps in the order in which a user goes through
// them, each on a card of its own.
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>
#include <array>

#include "app/keyboard_picture.h"
#include "app/main_window.h"
#include "app/step_card.h"
#include "app/text_label.h"

namespace hollin {
namespace {

constexpr int kMargin = 24;
constexpr int kGap = 12;  // between the cards
constexpr int kPictureWidth = 290;
constexpr int kBarHeight = 10;
constexpr int kButtonInset = 2;  // what is left around a button for its focus ring
constexpr int kWindowWidth = 720;
constexpr int kLeastWidth = 580;
constexpr int kStatusLines = 2;

// Captions and notes are drawn back behind what the user has to read.
template <typename Label>
Label* Quiet(Label* label) {
  label->setForegroundRole(QPalette::PlaceholderText);
  return label;
}

template <typename Widget>
Widget* Scaled(Widget* widget, double factor, QFont::Weight weight = QFont::Normal) {
  QFont font = widget->font();
  font.setPointSizeF(font.pointSizeF() * factor);
  font.setWeight(weight);
  widget->setFont(font);
  return widget;
}

TextLabel* MakeText(const QString& text) {
  auto* const label = new TextLabel;
  label->setText(text);
  return label;
}

// A caption and the field it names, which screen readers tell together.
TextLabel* AddField(QGridLayout& fields, int column, const QString& caption) {
  auto* const value = new TextLabel;
  value->SetPlaceholder(QStringLiteral("–"));
  auto* const name = Quiet(new QLabel(caption));
  name->setBuddy(value);
  fields.addWidget(name, 0, column);
  fields.addWidget(value, 1, column);
  fields.setColumnStretch(column, 1);
  return value;
}

QLineEdit* MakePathField(const QString& accessibleName, const QString& placeholder) {
  auto* const field = new QLineEdit;
  field->setReadOnly(true);
  field->setFrame(false);
  field->setAcceptDrops(false);  // what is dropped is the window's
  field->setFocusPolicy(Qt::ClickFocus);
  field->setAccessibleName(accessibleName);
  field->setPlaceholderText(placeholder);
  field->setAccessibleDescription(placeholder);
  field->setTextMargins(-2, 0, 0, 0);  // in line with the texts around it
  return field;
}

QProgressBar* MakeProgressBar(const QString& accessibleName) {
  auto* const bar = new QProgressBar;
  bar->setTextVisible(false);
  bar->setFixedHeight(kBarHeight);
  bar->setAccessibleName(accessibleName);
  return bar;
}

// Buttons below each other look better alike.
void GiveSameWidth(const std::array<QPushButton*, 3>& buttons) {
  int width = 0;
  for (const QPushButton* button : buttons) width = std::max(width, button->sizeHint().width());
  for (QPushButton* button : buttons) button->setMinimumWidth(width);
}

}  // namespace

void MainWindow::BuildLayout() {
  auto* const content = new QWidget(this);
  auto* const column = new QVBoxLayout(content);
  column->setContentsMargins(kMargin, kMargin - 4, kMargin, kMargin);
  column->setSpacing(kGap);
  column->addLayout(MakeHeading());
  column->addSpacing(4);
  column->addWidget(MakePackageCard());
  column->addWidget(MakeKeyboardCard());
  column->addWidget(MakeUpdateCard());
  column->addStretch(1);
  GiveSameWidth({buttonOpen, buttonRefresh, buttonUpdate});
  setCentralWidget(content);
  setMinimumWidth(kLeastWidth);
  resize(kWindowWidth, sizeHint().height());
}

QLayout* MainWindow::MakeHeading() {
  auto* const texts = new QVBoxLayout;
  texts->setSpacing(6);
  texts->addStretch(1);
  texts->addWidget(Scaled(MakeText(tr("Update your TS30")), 1.7, QFont::DemiBold));
  texts->addWidget(
      Quiet(MakeText(tr("Three steps. Leave the keyboard connected and switched on "
                        "until the last one is done."))));
  texts->addStretch(1);
  imageView = new KeyboardPicture(kPictureWidth);
  imageView->setAccessibleName(tr("Drawing of a keyboard"));
  auto* const row = new QHBoxLayout;
  row->setSpacing(kMargin);
  row->addLayout(texts, 1);
  row->addWidget(imageView);
  return row;
}

QWidget* MainWindow::MakePackageCard() {
  buttonOpen = new QPushButton(tr("Open"));
  textFieldPath = MakePathField(tr("Path of the update package"),
                                tr("Press Open, or drop an update package here."));
  auto* const fields = new QWidget;
  auto* const grid = new QGridLayout(fields);
  grid->setContentsMargins(0, 0, 0, 0);
  grid->setVerticalSpacing(1);
  textFieldProductModel = AddField(*grid, 0, tr("Product model"));
  textFieldFirmwareVersion = AddField(*grid, 1, tr("Firmware version"));
  packageCard = new StepCard(1, tr("Choose the update package"), buttonOpen);
  packageCard->Add(textFieldPath);
  packageCard->Add(fields);
  return packageCard;
}

QWidget* MainWindow::MakeKeyboardCard() {
  buttonRefresh = new QPushButton(tr("Refresh"));
  auto* const status = new TextLabel(kStatusLines);
  const QString hint = tr("Comes after the package, which says how to switch the keyboard on.");
  status->SetPlaceholder(hint);
  status->setAccessibleDescription(hint);  // until there is a status
  textFieldDeviceStatus = status;
  keyboardCard = new StepCard(2, tr("Connect the keyboard"), buttonRefresh);
  keyboardCard->Add(status);
  deviceNote = new TextLabel;
  deviceNote->setText(
      tr("No right to open the keyboard. Install Hollin's udev rule, then plug the "
         "keyboard in again."));
  deviceNote->hide();
  keyboardCard->Add(deviceNote);
  return keyboardCard;
}

QWidget* MainWindow::MakeUpdateCard() {
  buttonUpdate = new QPushButton(tr("Update"));
  progressStatus = MakeProgressBar(tr("Progress of the update"));
  progressNote = Quiet(new TextLabel);
  updateCard = new StepCard(3, tr("Update the keyboard"), buttonUpdate);
  auto* const barRow = new QWidget;
  auto* const row = new QHBoxLayout(barRow);
  row->setContentsMargins(0, 0, kButtonInset, 0);  // in line with the button above
  row->addWidget(progressStatus);
  updateCard->Add(barRow);
  updateCard->Add(progressNote);
  return updateCard;
}

void MainWindow::ConnectActions() {
  connect(buttonOpen, &QPushButton::clicked, this, &MainWindow::OpenDat);
  connect(buttonRefresh, &QPushButton::clicked, this, &MainWindow::RefreshDevice);
  connect(buttonUpdate, &QPushButton::clicked, this, &MainWindow::UpdateDevice);
}

namespace {

struct CardStates {
  StepState package, keyboard, update;
};

CardStates StatesOf(Stage stage) {
  using enum StepState;
  switch (stage) {
    case Stage::kChoosePackage:
      return {kNext, kWaiting, kWaiting};
    case Stage::kPackageRefused:
      return {kAttention, kWaiting, kWaiting};
    case Stage::kConnect:
      return {kDone, kNext, kWaiting};
    case Stage::kTooManyKeyboards:
      return {kDone, kAttention, kWaiting};
    case Stage::kReady:
      return {kDone, kDone, kNext};
    case Stage::kUpdating:
      return {kDone, kDone, kBusy};
    case Stage::kUpdated:
      return {kDone, kDone, kDone};
    case Stage::kUpdateFailed:
      return {kDone, kDone, kFailed};
  }
  return {};
}

}  // namespace

void MainWindow::ShowStage(Stage stage) {
  const CardStates states = StatesOf(stage);
  packageCard->SetState(states.package);
  keyboardCard->SetState(states.keyboard);
  updateCard->SetState(states.update);
}

}  // namespace hollin
