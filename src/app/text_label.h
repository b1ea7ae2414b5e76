// SPDX-License-Identifier: MIT
// A text that is wrapped and never cut: the label asks for the height that its text needs at its
// width. Blanks around a line break are not drawn. While there is no text, something else is shown,
// which is not its text.
#pragma once

#include <QLabel>

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
  int lines;
  QString placeholder;
};

}  // namespace hollin
