// SPDX-License-Identifier: MIT
#include "app/about_box.h"

#include <QCoreApplication>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QVBoxLayout>
#include <array>
#include <utility>

namespace hollin {
namespace {

struct AboutBox {
  Q_DECLARE_TR_FUNCTIONS(AboutBox)
};

// Proper names, the same in every language.
constexpr std::array<std::pair<const char*, const char*>, 6> kLibraries = {{
    {"Qt 6", "LGPL-3.0"},
    {"hidapi", "BSD-3-Clause"},
    {"libudev", "LGPL-2.1"},
    {"fontconfig", "HPND-sell-variant"},
    {"{fmt}", "MIT"},
    {"utfcpp", "BSL-1.0"},
}};

QLabel* MakeText(const QString& text) {
  auto* const label = new QLabel(text);
  label->setTextFormat(Qt::PlainText);
  label->setTextInteractionFlags(Qt::TextSelectableByMouse);
  return label;
}

QLabel* MakeHeading(const QString& text, double size) {
  QLabel* const heading = MakeText(text);
  QFont font = heading->font();
  font.setPointSizeF(font.pointSizeF() * size);
  font.setWeight(QFont::DemiBold);
  heading->setFont(font);
  return heading;
}

QFormLayout* MakeLicences() {
  auto* const licences = new QFormLayout;
  licences->addRow(MakeText("Hollin"), MakeText("MIT"));
  for (const auto& [library, licence] : kLibraries) {
    licences->addRow(MakeText(library), MakeText(licence));
  }
  licences->setHorizontalSpacing(32);
  return licences;
}

}  // namespace

QDialog* MakeAboutBox(QWidget* parent) {
  auto* const box = new QDialog(parent);
  box->setWindowTitle(AboutBox::tr("About Hollin"));
  auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Close);
  QObject::connect(buttons, &QDialogButtonBox::rejected, box, &QDialog::reject);
  auto* const column = new QVBoxLayout(box);
  column->setContentsMargins(28, 24, 28, 20);
  column->setSpacing(12);
  column->addWidget(MakeHeading(QString("Hollin ") + HOLLIN_VERSION, 1.5));
  column->addWidget(MakeText(AboutBox::tr("Writes new firmware into the TS30 keyboard.")));
  column->addSpacing(4);
  column->addWidget(MakeHeading(AboutBox::tr("Licences"), 1));
  column->addLayout(MakeLicences());
  column->addSpacing(4);
  column->addWidget(buttons);
  column->setSizeConstraint(QLayout::SetFixedSize);
  return box;
}

}  // namespace hollin
