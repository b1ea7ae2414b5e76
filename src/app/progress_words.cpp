// SPDX-License-Identifier: MIT
#include "app/progress_words.h"

#include <QStringList>
#include <algorithm>

namespace hollin {
namespace {

using std::chrono::seconds;

constexpr int kStepsForAnEstimate = 2;  // one alone says little: the first is unlike the others
constexpr seconds kFew{10};

// 0:07, 12:34, 1:02:03
QString TimeText(seconds time) {
  const auto count = static_cast<int64_t>(time.count());
  const QChar zero('0');
  const QString rest = QString("%1").arg(count % 60, 2, 10, zero);
  const int64_t minutes = count / 60;
  if (minutes < 60) return QString("%1:%2").arg(QString::number(minutes), rest);
  return QString("%1:%2:%3")
      .arg(QString::number(minutes / 60), QString("%1").arg(minutes % 60, 2, 10, zero), rest);
}

QString Since(ProgressWords::Time start, ProgressWords::Time now) {
  return TimeText(std::chrono::duration_cast<seconds>(now - start));
}

// An estimate does not know single seconds.
seconds RoundedUp(seconds time) {
  const int64_t grain = time < std::chrono::minutes(2) ? 5 : 30;
  return seconds((time.count() + grain - 1) / grain * grain);
}

}  // namespace

void ProgressWords::Start(int newStepCount, Time now) {
  stepCount = newStepCount;
  completed = 0;
  start = now;
  lastCompletion = now;
}

void ProgressWords::CompleteStep(int step, Time now) {
  completed = step + 1;
  lastCompletion = now;
}

// There may be as many steps as an int can count.
int ProgressWords::CurrentStep() const { return std::min(completed, stepCount - 1) + 1; }

QString ProgressWords::StepText() const {
  return tr("Step %1 of %2").arg(QString::number(CurrentStep()), QString::number(stepCount));
}

// The rest is taken to go on as the steps so far went on the average.
QString ProgressWords::TimeLeft(Time now) const {
  if (completed < kStepsForAnEstimate || completed >= stepCount) return {};
  const std::chrono::duration<double> past = lastCompletion - start;
  const auto rest = past / completed * (stepCount - completed);
  const auto left = std::chrono::duration_cast<seconds>(rest - (now - lastCompletion));
  if (left < kFew) return tr("a few seconds left");
  return tr("about %1 left").arg(TimeText(RoundedUp(left)));
}

QString ProgressWords::Running(Time now) const {
  if (stepCount <= 0) return {};
  QStringList parts = {StepText(), tr("%1 elapsed").arg(Since(start, now))};
  const QString left = TimeLeft(now);
  if (!left.isEmpty()) parts << left;
  return parts.join(QString::fromUtf8("  ·  "));
}

QString ProgressWords::Completed(Time now) const {
  return tr("Completed in %1").arg(Since(start, now));
}

QString ProgressWords::Failed(Time now) const {
  if (stepCount <= 0) return {};
  return tr("Stopped in step %1 of %2 after %3")
      .arg(QString::number(CurrentStep()), QString::number(stepCount), Since(start, now));
}

}  // namespace hollin
