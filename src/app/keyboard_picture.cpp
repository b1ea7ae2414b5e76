// SPDX-License-Identifier: MIT
#include "app/keyboard_picture.h"

#include <QPainter>
#include <QSvgRenderer>

// A static library's resources are only there when they are asked for; Qt wants that in no
// namespace.
static void LoadResources() { Q_INIT_RESOURCE(hollin); }

namespace hollin {
namespace {

QPixmap Draw(const QString& name, int width, double ratio) {
  LoadResources();
  QSvgRenderer drawing(":/hollin/images/" + name);
  const QSize drawn = drawing.defaultSize();
  const QSizeF size(width, static_cast<double>(width) * drawn.height() / drawn.width());
  QPixmap pixmap((size * ratio).toSize());
  pixmap.setDevicePixelRatio(ratio);
  pixmap.fill(Qt::transparent);
  QPainter painter(&pixmap);
  drawing.render(&painter, QRectF({0, 0}, size));
  return pixmap;
}

}  // namespace

QPixmap DrawKeyboard(int width, double ratio) { return Draw("keyboard.svg", width, ratio); }

QIcon DrawProgramIcon() {
  QIcon icon;
  for (const int size : {16, 24, 32, 48, 64, 128}) icon.addPixmap(Draw("icon.svg", size, 1));
  return icon;
}

KeyboardPicture::KeyboardPicture(int width, QWidget* parent) : QLabel(parent), pictureWidth(width) {
  setPixmap(DrawKeyboard(pictureWidth, devicePixelRatioF()));
}

void KeyboardPicture::paintEvent(QPaintEvent* event) {
  const double ratio = devicePixelRatioF();
  if (pixmap().devicePixelRatio() != ratio) setPixmap(DrawKeyboard(pictureWidth, ratio));
  QLabel::paintEvent(event);
}

}  // namespace hollin
