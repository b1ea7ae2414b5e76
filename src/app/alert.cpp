// SPDX-License-Identifier: MIT
#include "app/alert.h"

#include <QIcon>
#include <QLabel>
#include <QLayout>
#include <QMessageBox>
#include <QPointer>
#include <QStyle>

#include "app/alert_scope.h"

namespace hollin {
namespace {

constexpr int kTextWidth = 300;

void SetFolderIcon(QMessageBox& box) {
  const QIcon folder = box.style()->standardIcon(QStyle::SP_DirIcon, nullptr, &box);
  const int size = box.style()->pixelMetric(QStyle::PM_MessageBoxIconSize, nullptr, &box);
  box.setIconPixmap(folder.pixmap(size));
}

// Only the sign that will be seen: the search of an icon theme takes as long as all the rest.
void SetSign(QMessageBox& box, const Alert& alert) {
  if (alert.icon == AlertIcon::kFolder) {
    SetFolderIcon(box);
  } else {
    box.setIcon(alert.style == AlertStyle::kWarning ? QMessageBox::Warning
                                                    : QMessageBox::Information);
  }
}

// The box's own setting does not reach its second label, which would take "<" for markup.
void ShowTextsPlainly(QMessageBox& box) {
  box.setTextFormat(Qt::PlainText);
  for (QLabel* label : box.findChildren<QLabel*>()) label->setTextFormat(Qt::PlainText);
}

void Arrange(QMessageBox& box) {
  box.layout()->setContentsMargins(22, 20, 22, 18);
  if (auto* const title = box.findChild<QLabel*>("qt_msgbox_label")) {
    QFont font = title->font();
    font.setPointSizeF(font.pointSizeF() * 1.15);
    font.setWeight(QFont::DemiBold);
    title->setFont(font);
  }
  if (auto* const text = box.findChild<QLabel*>("qt_msgbox_informativelabel")) {
    text->setMinimumWidth(kTextWidth);
  }
}

}  // namespace

QMessageBox* MakeAlertBox(const Alert& alert, QWidget* parent) {
  auto* const box = new QMessageBox(parent);
  box->setWindowTitle(alert.message);
  box->setText(alert.message);
  box->setInformativeText(alert.informativeText);
  SetSign(*box, alert);
  ShowTextsPlainly(*box);
  Arrange(*box);
  return box;
}

void RunAlert(const Alert& alert, QWidget* parent) {
  const AlertScope scope;
  const QPointer<QMessageBox> box(MakeAlertBox(alert, parent));
  box->exec();
  delete box;  // null when it went with its parent
}

}  // namespace hollin
