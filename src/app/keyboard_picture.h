// SPDX-License-Identifier: MIT
// The program's own drawings: the keyboard that decorates the window, and the program's icon.
#pragma once

#include <QIcon>
#include <QLabel>
#include <QPixmap>

namespace hollin {

// The keyboard, as wide as asked for, with `ratio` device pixels for each pixel.
[[nodiscard]] QPixmap DrawKeyboard(int width, double ratio);

// In the sizes that desktops use. Takes some milliseconds.
[[nodiscard]] QIcon DrawProgramIcon();

// Shows the keyboard as sharp as the screen is that it has come to.
class KeyboardPicture : public QLabel {
  Q_OBJECT

 public:
  explicit KeyboardPicture(int width, QWidget* parent = nullptr);

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  int pictureWidth;
};

}  // namespace hollin
