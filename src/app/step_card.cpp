// SPDX-License-Identifier: MIT
#include "app/step_card.h"

#include <QGridLayout>
#include <QPainter>
#include <QPainterPath>
#include <QPushButton>
#include <array>

#include "app/theme.h"

namespace hollin {
namespace {

constexpr int kStepCount = 3;
constexpr int kSignSize = 32;
constexpr double kCardRadius = 10;

QString WordsFor(StepState state) {
  switch (state) {
    case StepState::kWaiting:
      return StepSign::tr("waiting");
    case StepState::kNext:
      return StepSign::tr("next");
    case StepState::kBusy:
      return StepSign::tr("in progress");
    case StepState::kDone:
      return StepSign::tr("done");
    case StepState::kAttention:
      return StepSign::tr("needs attention");
    case StepState::kFailed:
      return StepSign::tr("failed");
  }
  return {};
}

QColor ColourOf(StepState state, const Theme& theme) {
  switch (state) {
    case StepState::kWaiting:
      return theme.quietText;
    case StepState::kNext:
    case StepState::kBusy:
      return theme.accent;
    case StepState::kDone:
      return theme.good;
    case StepState::kAttention:
      return theme.caution;
    case StepState::kFailed:
      return theme.bad;
  }
  return {};
}

// In a square from (-1, -1) to (1, 1).
QPainterPath CheckMark() {
  QPainterPath path({-0.42, 0.02});
  path.lineTo(-0.12, 0.32);
  path.lineTo(0.44, -0.30);
  return path;
}

QPainterPath Cross() {
  QPainterPath path({-0.3, -0.3});
  path.lineTo(0.3, 0.3);
  path.moveTo(0.3, -0.3);
  path.lineTo(-0.3, 0.3);
  return path;
}

QPainterPath ExclamationMark() {
  QPainterPath path({0, -0.46});
  path.lineTo(0, 0.1);
  path.moveTo(0, 0.42);
  path.lineTo(0, 0.44);
  return path;
}

QPainterPath Arrows() {
  QPainterPath path({-0.44, -0.14});
  path.lineTo(0, -0.52);
  path.lineTo(0.44, -0.14);
  path.moveTo(0, -0.5);
  path.lineTo(0, 0.5);
  return path;
}

// Empty for the states that show the step's number.
QPainterPath MarkFor(StepState state) {
  switch (state) {
    case StepState::kWaiting:
    case StepState::kNext:
      return {};
    case StepState::kBusy:
      return Arrows();
    case StepState::kDone:
      return CheckMark();
    case StepState::kAttention:
      return ExclamationMark();
    case StepState::kFailed:
      return Cross();
  }
  return {};
}

// A circle for what goes well, other outlines for what does not.
void DrawGround(QPainter& painter, StepState state, const Theme& theme) {
  const QColor colour = ColourOf(state, theme);
  const bool isWaiting = state == StepState::kWaiting;
  painter.setPen(QPen(isWaiting ? theme.stroke : colour, 0.1));
  painter.setBrush(isWaiting ? QBrush(Qt::NoBrush) : QBrush(colour));
  if (state == StepState::kAttention) {
    const std::array<QPointF, 3> triangle = {QPointF(0, -0.95), {0.98, 0.78}, {-0.98, 0.78}};
    painter.setPen(QPen(colour, 0.2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawConvexPolygon(triangle.data(), static_cast<int>(triangle.size()));
  } else if (state == StepState::kFailed) {
    painter.drawRoundedRect(QRectF(-0.9, -0.9, 1.8, 1.8), 0.4, 0.4);
  } else {
    painter.drawEllipse(QPointF(0, 0), 0.94, 0.94);
  }
}

// The number's too: each further font costs the start of the program a millisecond or two.
QFont TitleFont(QFont font) {
  font.setPointSizeF(font.pointSizeF() * 1.15);
  font.setWeight(QFont::DemiBold);
  return font;
}

QLabel* MakeTitle(const QString& text) {
  auto* const title = new QLabel(text);
  title->setTextFormat(Qt::PlainText);
  title->setFont(TitleFont(title->font()));
  return title;
}

}  // namespace

StepSign::StepSign(int stepNumber, QWidget* parent) : QLabel(parent), number(stepNumber) {
  setFixedSize(kSignSize, kSignSize);
  SetState(StepState::kWaiting);
}

void StepSign::SetState(StepState newState) {
  state = newState;
  const QString words = WordsFor(state);
  setToolTip(words);
  setAccessibleName(
      tr("Step %1 of %2: %3").arg(QString::number(number), QString::number(kStepCount), words));
  update();
}

void StepSign::paintEvent(QPaintEvent* /*event*/) {
  const Theme& theme = ThemeFor(palette());
  const QColor onGround = state == StepState::kWaiting ? theme.quietText : theme.onAccent;
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.save();
  painter.translate(width() / 2.0, height() / 2.0);
  painter.scale(width() / 2.0, height() / 2.0);
  DrawGround(painter, state, theme);
  const QPainterPath mark = MarkFor(state);
  painter.setPen(QPen(onGround, 0.17, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  painter.setBrush(Qt::NoBrush);
  if (state == StepState::kAttention) painter.translate(0, 0.18);
  painter.drawPath(mark);
  painter.restore();
  if (!mark.isEmpty()) return;
  painter.setFont(TitleFont(font()));
  painter.setPen(onGround);
  painter.drawText(rect(), Qt::AlignCenter, QString::number(number));
}

StepCard::StepCard(int number, const QString& title, QPushButton* stepButton, QWidget* parent)
    : QWidget(parent), sign(new StepSign(number)), button(stepButton), grid(new QGridLayout(this)) {
  grid->setContentsMargins(18, 14, 16, 16);
  grid->setHorizontalSpacing(16);
  grid->setVerticalSpacing(8);
  grid->setColumnStretch(1, 1);
  grid->addWidget(sign, 0, 0, Qt::AlignCenter);
  grid->addWidget(MakeTitle(title), 0, 1);
  grid->addWidget(button, 0, 2);
}

void StepCard::Add(QWidget* content) { grid->addWidget(content, grid->rowCount(), 1, 1, 2); }

void StepCard::SetState(StepState state) {
  sign->SetState(state);
  button->setDefault(state == StepState::kNext || state == StepState::kAttention ||
                     state == StepState::kFailed);
  update();
}

void StepCard::paintEvent(QPaintEvent* /*event*/) {
  const Theme& theme = ThemeFor(palette());
  const StepState state = sign->State();
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const bool isQuiet = state == StepState::kWaiting || state == StepState::kDone;
  const double line = isQuiet ? 1 : 2;
  painter.setPen(QPen(isQuiet ? theme.stroke : ColourOf(state, theme), line));
  painter.setBrush(theme.card);
  const double inset = line / 2;
  painter.drawRoundedRect(QRectF(rect()).adjusted(inset, inset, -inset, -inset), kCardRadius,
                          kCardRadius);
}

}  // namespace hollin
