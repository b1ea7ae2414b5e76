// SPDX-License-Identifier: MIT
// How far an update is, in words: the step, the time that has gone by, and how long the rest may
// take. It reads no clock: who asks says when.
#pragma once

#include <QCoreApplication>
#include <QString>
#include <chrono>

namespace hollin {

class ProgressWords {
  Q_DECLARE_TR_FUNCTIONS(ProgressWords)

 public:
  using Time = std::chrono::steady_clock::time_point;

  void Start(int newStepCount, Time now);
  // The step with this number, counted from 0, has been completed.
  void CompleteStep(int step, Time now);

  // While the update runs; empty without a step.
  [[nodiscard]] QString Running(Time now) const;
  // When it has ended.
  [[nodiscard]] QString Completed(Time now) const;
  [[nodiscard]] QString Failed(Time now) const;

 private:
  [[nodiscard]] int CurrentStep() const;
  [[nodiscard]] QString StepText() const;
  [[nodiscard]] QString TimeLeft(Time now) const;

  int stepCount = 0;
  int completed = 0;  // steps
  Time start, lastCompletion;
};

}  // namespace hollin
