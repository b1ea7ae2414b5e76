// SPDX-License-Identifier: MIT
#include "app/theme.h"

#include <QApplication>
#include <QPainter>
#include <QPalette>
#include <QPixmap>
#include <QPushButton>
#include <QStyleFactory>
#include <QStyleOption>
#include <algorithm>
#include <array>

namespace hollin {
namespace {

constexpr double kButtonRadius = 7;
constexpr int kButtonHeight = 36;
constexpr int kButtonPadding = 18;
constexpr int kRowHeight = 26;    // of lists
constexpr int kColumnMargin = 6;  // beside the texts of lists and their headings

const Theme& LightTheme() {
  static const Theme theme = {.ground = 0xF4F5F8,
                              .card = 0xFFFFFF,
                              .stroke = 0xD9DDE5,
                              .text = 0x1C212B,
                              .quietText = 0x5A6373,
                              .accent = 0x2A5BD7,
                              .onAccent = 0xFFFFFF,
                              .bar = 0x12388F,
                              .good = 0x197A4F,
                              .caution = 0xA15C00,
                              .bad = 0xC02F38};
  return theme;
}

const Theme& DarkTheme() {
  static const Theme theme = {.ground = 0x16181D,
                              .card = 0x1F232A,
                              .stroke = 0x3A414D,
                              .text = 0xE9ECF1,
                              .quietText = 0xA3ACBA,
                              .accent = 0x7AA5FF,
                              .onAccent = 0x0C1730,
                              .bar = 0xF1F5FF,
                              .good = 0x52CB92,
                              .caution = 0xF0B250,
                              .bad = 0xFF8585};
  return theme;
}

QColor Mixed(const QColor& a, const QColor& b, double partOfB) {
  const auto mix = [partOfB](double from, double to) {
    return static_cast<float>(from + (to - from) * partOfB);
  };
  return QColor::fromRgbF(mix(a.redF(), b.redF()), mix(a.greenF(), b.greenF()),
                          mix(a.blueF(), b.blueF()));
}

void FillRounded(QPainter& painter, const QRectF& area, double radius, const QColor& fill,
                 const QPen& outline = Qt::NoPen) {
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(outline);
  painter.setBrush(fill);
  painter.drawRoundedRect(area, radius, radius);
}

// The button that comes next is its window's default one.
bool IsNext(const QStyleOption& option) {
  const auto* const button = qstyleoption_cast<const QStyleOptionButton*>(&option);
  return button != nullptr && button->features.testFlag(QStyleOptionButton::DefaultButton) &&
         option.state.testFlag(QStyle::State_Enabled);
}

QColor ButtonFill(const QStyleOption& option, const Theme& theme) {
  if (!option.state.testFlag(QStyle::State_Enabled)) return theme.ground;
  const QColor fill = IsNext(option) ? theme.accent : theme.card;
  if (option.state.testFlag(QStyle::State_Sunken)) return Mixed(fill, theme.text, 0.16);
  if (option.state.testFlag(QStyle::State_MouseOver)) return Mixed(fill, theme.text, 0.07);
  return fill;
}

void DrawButton(const QStyleOption& option, QPainter& painter) {
  const Theme& theme = ThemeFor(option.palette);
  const bool isNext = IsNext(option);
  const QRectF area = QRectF(option.rect).adjusted(2.5, 2.5, -2.5, -2.5);
  FillRounded(painter, area, kButtonRadius, ButtonFill(option, theme),
              isNext ? QPen(theme.accent) : QPen(theme.stroke));
  if (!option.state.testFlag(QStyle::State_HasFocus)) return;
  const QRectF ring = QRectF(option.rect).adjusted(1, 1, -1, -1);
  FillRounded(painter, ring, kButtonRadius + 1.5, Qt::transparent,
              QPen(isNext ? theme.text : theme.accent, 2));
}

// Thinner than what fills it, lest an empty bar looks like a full one.
void DrawBarGround(const QStyleOption& option, QPainter& painter) {
  const double inset = option.rect.height() * 0.3;
  const QRectF area = QRectF(option.rect).adjusted(0, inset, 0, -inset);
  FillRounded(painter, area, area.height() / 2, option.palette.color(QPalette::Base));
}

void DrawBarContents(const QStyleOptionProgressBar& bar, QPainter& painter) {
  const int range = bar.maximum - bar.minimum;
  if (range <= 0 || bar.progress <= bar.minimum) return;
  const double part = (static_cast<double>(bar.progress) - bar.minimum) / range;
  const QRectF ground(bar.rect);
  QRectF area = ground;
  area.setWidth(std::max(ground.height(), ground.width() * part));
  if (bar.direction == Qt::RightToLeft) area.moveRight(ground.right());
  FillRounded(painter, area, area.height() / 2, ThemeFor(QApplication::palette()).bar);
}

// Drawn in several sizes, of which the alert takes the one it needs.
QIcon WarningSign(const QColor& colour, const QColor& mark) {
  QIcon icon;
  for (const int size : {32, 48, 64, 96, 128}) {
    QPixmap pixmap(size, size);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(size / 32.0, size / 32.0);
    const std::array<QPointF, 3> triangle = {QPointF(16, 5), {28, 26}, {4, 26}};
    painter.setPen(QPen(colour, 4, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(colour);
    painter.drawConvexPolygon(triangle.data(), static_cast<int>(triangle.size()));
    painter.setPen(QPen(mark, 2.6, Qt::SolidLine, Qt::RoundCap));
    painter.drawLine(QPointF(16, 12), QPointF(16, 18));
    painter.drawPoint(QPointF(16, 23));
    icon.addPixmap(pixmap);
  }
  return icon;
}

// Two arrows to the right, where a menu bar has more than it shows. Every menu bar asks for it when
// it is made, and the desktop's own takes as long to find as the rest of the bar.
QIcon MoreSign(const QColor& colour) {
  QPixmap pixmap(32, 32);
  pixmap.fill(Qt::transparent);
  QPainter painter(&pixmap);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(QPen(colour, 3, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  for (const int left : {7, 17}) {
    const std::array<QPointF, 3> arrow = {QPointF(left, 8), {left + 8.0, 16}, QPointF(left, 24)};
    painter.drawPolyline(arrow.data(), static_cast<int>(arrow.size()));
  }
  return QIcon(pixmap);
}

}  // namespace

bool IsDark(const QPalette& palette) {
  return palette.color(QPalette::Window).lightness() <
         palette.color(QPalette::WindowText).lightness();
}

const Theme& ThemeFor(const QPalette& palette) {
  return IsDark(palette) ? DarkTheme() : LightTheme();
}

QPalette PaletteOf(const Theme& theme) {
  QPalette palette(theme.text, theme.card, Mixed(theme.card, Qt::white, 0.3),
                   Mixed(theme.stroke, theme.text, 0.4), theme.stroke, theme.text, theme.text,
                   theme.card, theme.ground);
  palette.setColor(QPalette::AlternateBase, Mixed(theme.card, theme.ground, 0.5));
  palette.setColor(QPalette::ToolTipBase, theme.card);
  palette.setColor(QPalette::ToolTipText, theme.text);
  palette.setColor(QPalette::PlaceholderText, theme.quietText);
  palette.setColor(QPalette::Highlight, theme.accent);
  palette.setColor(QPalette::HighlightedText, theme.onAccent);
  palette.setColor(QPalette::Link, theme.accent);
  const QColor disabled = Mixed(theme.quietText, theme.ground, 0.25);
  for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
    palette.setColor(QPalette::Disabled, role, disabled);
  }
  return palette;
}

HollinStyle::HollinStyle() : QProxyStyle(QStyleFactory::create("Fusion")) {}

void HollinStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option,
                                QPainter* painter, const QWidget* widget) const {
  const bool isButton = qobject_cast<const QPushButton*>(widget) != nullptr;
  if (element == PE_FrameFocusRect && isButton) return;  // drawn with the button
  if (element != PE_PanelButtonCommand) {
    return QProxyStyle::drawPrimitive(element, option, painter, widget);
  }
  painter->save();
  DrawButton(*option, *painter);
  painter->restore();
}

void HollinStyle::drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                              const QWidget* widget) const {
  const auto* const button = qstyleoption_cast<const QStyleOptionButton*>(option);
  const auto* const bar = qstyleoption_cast<const QStyleOptionProgressBar*>(option);
  painter->save();
  if (element == CE_PushButtonLabel && button != nullptr && IsNext(*option)) {
    QStyleOptionButton next(*button);
    next.palette.setColor(QPalette::ButtonText, ThemeFor(option->palette).onAccent);
    QProxyStyle::drawControl(element, &next, painter, widget);
  } else if (element == CE_ProgressBarGroove) {
    DrawBarGround(*option, *painter);
  } else if (element == CE_ProgressBarContents && bar != nullptr) {
    DrawBarContents(*bar, *painter);
  } else {
    QProxyStyle::drawControl(element, option, painter, widget);
  }
  painter->restore();
}

QSize HollinStyle::sizeFromContents(ContentsType type, const QStyleOption* option,
                                    const QSize& size, const QWidget* widget) const {
  const QSize usual = QProxyStyle::sizeFromContents(type, option, size, widget);
  if (type == CT_ItemViewItem) return {usual.width(), std::max(usual.height(), kRowHeight)};
  if (type != CT_PushButton) return usual;
  return {std::max(usual.width(), size.width() + 2 * kButtonPadding),
          std::max(usual.height(), kButtonHeight)};
}

int HollinStyle::pixelMetric(PixelMetric metric, const QStyleOption* option,
                             const QWidget* widget) const {
  if (metric == PM_FocusFrameHMargin || metric == PM_HeaderMargin) return kColumnMargin;
  return QProxyStyle::pixelMetric(metric, option, widget);
}

QIcon HollinStyle::standardIcon(StandardPixmap icon, const QStyleOption* option,
                                const QWidget* widget) const {
  const Theme& theme = ThemeFor(QApplication::palette());
  if (icon == SP_ToolBarHorizontalExtensionButton) return MoreSign(theme.text);
  if (icon != SP_MessageBoxWarning) return QProxyStyle::standardIcon(icon, option, widget);
  return WarningSign(theme.caution, theme.onAccent);
}

int HollinStyle::styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                           QStyleHintReturn* data) const {
  if (hint == SH_DialogButtonBox_ButtonsHaveIcons) return 0;
  return QProxyStyle::styleHint(hint, option, widget, data);
}

// Without a palette of the application its palette is the desktop's.
void UseDesktopColours() {
  QApplication::setPalette(QPalette());
  QApplication::setPalette(PaletteOf(ThemeFor(QApplication::palette())));
}

void UseOwnLook() {
  const Theme& theme = ThemeFor(QApplication::palette());
  QApplication::setStyle(new HollinStyle);
  QApplication::setPalette(PaletteOf(theme));
}

}  // namespace hollin
