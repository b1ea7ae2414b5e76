// SPDX-License-Identifier: MIT
#include "app/text_label.h"

#include <QPainter>
#include <algorithm>

#include "app/theme.h"

namespace hollin {
namespace {

constexpr int kFlags = Qt::AlignTop | Qt::AlignLeading | Qt::TextWordWrap;
constexpr int kAnyHeight = 1 << 20;

}  // namespace

TextLabel::TextLabel(int lineCount, QWidget* parent) : QLabel(parent), lines(lineCount) {
  setTextFormat(Qt::PlainText);
  setWordWrap(true);  // and so a height that depends on the width
}

void TextLabel::SetPlaceholder(const QString& text) {
  placeholder = text;
  updateGeometry();
  update();
}

QString TextLabel::Shown() const {
  if (text().isEmpty()) return placeholder;
  QStringList shownLines = text().split('\n');
  for (QString& line : shownLines) line = line.trimmed();
  return shownLines.join('\n');
}

int TextLabel::heightForWidth(int width) const {
  const QString shown = Shown();
  if (shown != measured.text || font() != measured.font || logicalDpiY() != measured.resolution) {
    measured = {.text = shown, .font = font(), .resolution = logicalDpiY(), .heights = {}};
  }
  const auto known = measured.heights.find(width);
  if (known != measured.heights.end()) return known->second;
  return measured.heights[width] = MeasuredHeight(width);
}

int TextLabel::MeasuredHeight(int width) const {
  const auto heightOf = [this, width](const QString& shown) {
    return fontMetrics().boundingRect(QRect(0, 0, width, kAnyHeight), kFlags, shown).height();
  };
  const QString leastLines = QStringList(lines, "X").join('\n');
  return std::max(heightOf(leastLines), heightOf(measured.text));
}

// The height follows from the width that the label has got.
QSize TextLabel::minimumSizeHint() const { return {1, heightForWidth(std::max(width(), 1))}; }

QSize TextLabel::sizeHint() const {
  return {fontMetrics().boundingRect(Shown()).width() + 1, minimumSizeHint().height()};
}

void TextLabel::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  painter.setPen(text().isEmpty() ? ThemeFor(palette()).quietText
                                  : palette().color(foregroundRole()));
  painter.drawText(rect(), kFlags, Shown());
}

void TextLabel::resizeEvent(QResizeEvent* event) {
  QLabel::resizeEvent(event);
  updateGeometry();
}

}  // namespace hollin
