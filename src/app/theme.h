// SPDX-License-Identifier: MIT
// The colours of the window, one set for light palettes and one for dark ones, and the style that
// draws controls with them. Main thread only.
#pragma once

#include <QColor>
#include <QProxyStyle>

class QPalette;

namespace hollin {

// The ground of the progress bar, the same in both sets.
inline constexpr QRgb kSystemGray = qRgb(142, 142, 147);

struct Theme {
  QColor ground;  // of the window
  QColor card;    // what lies on it
  QColor stroke;  // outlines
  QColor text;
  QColor quietText;  // captions and what cannot be used now
  QColor accent;     // what comes next
  QColor onAccent;
  QColor bar;  // what the progress bar is filled with; stands off from the gray
  QColor good, caution, bad;
};

[[nodiscard]] bool IsDark(const QPalette& palette);
[[nodiscard]] const Theme& ThemeFor(const QPalette& palette);
[[nodiscard]] QPalette PaletteOf(const Theme& theme);

// Buttons, fields and bars, flat and rounded, and lists with some air; the rest is Fusion's.
class HollinStyle : public QProxyStyle {
  Q_OBJECT

 public:
  HollinStyle();

  void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override;
  void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                   const QWidget* widget) const override;
  [[nodiscard]] QSize sizeFromContents(ContentsType type, const QStyleOption* option,
                                       const QSize& size, const QWidget* widget) const override;
  [[nodiscard]] int pixelMetric(PixelMetric metric, const QStyleOption* option,
                                const QWidget* widget) const override;
  [[nodiscard]] QIcon standardIcon(StandardPixmap icon, const QStyleOption* option,
                                   const QWidget* widget) const override;
  [[nodiscard]] int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                              QStyleHintReturn* data) const override;
};

// Gives the application the style, and the set of colours that is like the desktop's. Once, before
// the first window is made.
void UseOwnLook();
// Changes to the other set of colours where the desktop has done so.
void UseDesktopColours();

}  // namespace hollin
