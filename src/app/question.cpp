// SPDX-License-Identifier: MIT
#include "app/question.h"

#include <QMessageBox>
#include <QPointer>
#include <QPushButton>

#include "app/alert_scope.h"

namespace hollin {

QMessageBox* MakeQuestionBox(const Question& question, QWidget* parent) {
  QMessageBox* const box = MakeAlertBox(question.alert, parent);
  box->addButton(question.firstButton, QMessageBox::AcceptRole);
  QPushButton* const second = box->addButton(question.secondButton, QMessageBox::RejectRole);
  box->setDefaultButton(second);
  box->setEscapeButton(second);
  return box;
}

int AskQuestion(const Question& question, QWidget* parent) {
  const AlertScope scope;
  const QPointer<QMessageBox> box(MakeQuestionBox(question, parent));
  box->exec();
  const bool isFirst = !box.isNull() && box->clickedButton() != nullptr &&
                       box->clickedButton() != box->escapeButton();
  delete box;  // null when it went with its parent
  return isFirst ? kFirstButton : kSecondButton;
}

}  // namespace hollin
