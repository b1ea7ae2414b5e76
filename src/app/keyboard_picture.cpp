// SPDX-License-Identifier: MIT
#include "app/keyboard_picture.h"

#include <QPainter>
#include <QSvgRenderer>

// A static library's resources are only there when they are asked for; Qt wants that in no
// namespace.
static void LoadResources() { Q_INIT_RESOURCE(hollin); }

namespace hollin {

QPixmap DrawKeyboard(int width, double ratio) {
  LoadResources();
  QSvgRenderer drawing(QStringLiteral(":/hollin/images/keyboard.svg"));
  const QSize drawn = drawing.defaultSize();
  const QSizeF size(width, static_cast<double>(width) * drawn.height() / drawn.width());
  QPixmap pixmap((size * ratio).toSize());
  pixmap.setDevicePixelRatio(ratio);
  pixmap.fill(Qt::transparent);
  QPainter painter(&pixmap);
  drawing.render(&painter, QRectF({0, 0}, size));
  return pixmap;
}

}  // namespace hollin
