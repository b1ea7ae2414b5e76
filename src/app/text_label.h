// SPDX-License-Identifier: MIT
// A text that is wrapped and never cut: the label asks for the height that its text needs at its
// width. Blanks around a line break are not drawn. While there is no text, something else is shown,
// which is not its text.
#pragma once

#include <QLabel>
#include <map>

namespace hollin {

class TextLabel : public QLabel {
  Q_OBJECT

 public:
  // At least `lineCount` lines high, so that what is below need not move with every text.
  explicit TextLabel(int lineCount = 1, QWidget* parent = nullptr);

  void SetPlaceholder(const QString& text);
  // What is drawn.
  [[nodiscard]] QString Shown() const;

  [[nodiscard]] int heightForWidth(int width) const override;
  [[nodiscard]] QSize minimumSizeHint() const override;
  [[nodiscard]] QSize sizeHint() const override;

 protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;

 private:
  [[nodiscard]] int MeasuredHeight(int width) const;

  int lines;
  QString placeholder;
  // Heights by width, of one text in one font: a layout asks for the same few again and again.
  struct Measured {
    QString text;
    QFont font;
    int resolution = 0;
    std::map<int, int> heights;
  };
  mutable Measured measured;
};

}  // namespace hollin
