// SPDX-License-Identifier: MIT
// An alert with two buttons.
#pragma once

#include <QString>

#include "app/alert.h"

class QMessageBox;
class QWidget;

namespace hollin {

// What a question is answered with.
inline constexpr int kFirstButton = 1000;
inline constexpr int kSecondButton = 1001;

struct Question {
  Alert alert;
  QString firstButton = {};
  QString secondButton = {};  // what Esc and the closing of the alert choose too
};

// The box that shows a question, with its two buttons in their order. Owned by `parent`.
[[nodiscard]] QMessageBox* MakeQuestionBox(const Question& question, QWidget* parent);

// Shows the question and returns when it was answered. Runs an event loop of its own: `parent` may
// be gone afterwards.
[[nodiscard]] int AskQuestion(const Question& question, QWidget* parent);

}  // namespace hollin
