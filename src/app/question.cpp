// SPDX-License-Identifier: MIT
#include "app/question.h"

#include <QMessageBox>
#include <QPointer>
#include <QPushButton>

#include "app/alert_scope.h"

namespace hollin {

int AskQuestion(const Question& question, QWidget* parent) {
  const AlertScope scope;
  const QPointer<QMessageBox> box(MakeAlertBox(question.alert, parent));
  const QPushButton* const first = box->addButton(question.firstButton, QMessageBox::AcceptRole);
  QPushButton* const second = box->addButton(question.secondButton, QMessageBox::RejectRole);
  box->setDefaultButton(second);
  box->setEscapeButton(second);
  box->exec();
  const int answer = box && box->clickedButton() == first ? kFirstButton : kSecondButton;
  delete box;  // null when it went with its parent
  return answer;
}

}  // namespace hollin
