// SPDX-License-Identifier: MIT
// One of the three steps on the way to an updated keyboard: a card with the step's sign, its title,
// what belongs to it and its button. The sign tells the step's state by its shape, in a tooltip and
// to screen readers; the colours only repeat it.
#pragma once

#include <QLabel>
#include <QWidget>

class QGridLayout;
class QPushButton;

namespace hollin {

enum class StepState {
  kWaiting,  // its turn comes later
  kNext,     // what the user does now
  kBusy,     // the program is at it
  kDone,
  kAttention,  // the user has to put something right
  kFailed,
};

class StepSign : public QLabel {
  Q_OBJECT

 public:
  explicit StepSign(int number, QWidget* parent = nullptr);
  void SetState(StepState newState);
  [[nodiscard]] StepState State() const { return state; }

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  int number;  // from 1
  StepState state = StepState::kWaiting;
};

class StepCard : public QWidget {
  Q_OBJECT

 public:
  // Takes `button`, which is told to be the one to press while the step is next.
  StepCard(int number, const QString& title, QPushButton* button, QWidget* parent = nullptr);

  // Below what was added before.
  void Add(QWidget* content);
  void SetState(StepState state);
  [[nodiscard]] StepState State() const { return sign->State(); }

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  StepSign* sign;
  QPushButton* button;
  QGridLayout* grid;
};

}  // namespace hollin
