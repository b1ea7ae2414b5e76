// SPDX-License-Identifier: MIT
// The drawing of a keyboard that decorates the window.
#pragma once

#include <QPixmap>

namespace hollin {

// As wide as asked for, with `ratio` device pixels for each pixel.
[[nodiscard]] QPixmap DrawKeyboard(int width, double ratio);

}  // namespace hollin
