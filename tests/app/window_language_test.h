// SPDX-License-Identifier: MIT
// The ground of the tests of texts: a window that speaks the language of a locale.
#pragma once

#include <QAction>
#include <string>
#include <vector>

#include "app/text_label.h"
#include "app/theme.h"
#include "app/translations.h"
#include "tests/app/window_test.h"

namespace hollin {

class WindowLanguageTest : public WindowTest {
 protected:
  void Launch(const char* locale) {
    window.reset();
    qunsetenv("LANGUAGE");
    qputenv("LC_ALL", locale);
    UseLanguageOfLocale();
    UseOwnLook();
    window = std::make_unique<TestWindow>();
    window->InitButton();
    window->show();
    Settle();
  }
  // All that stands in a window, its menus included.
  static std::vector<std::string> TextsIn(const QWidget& widget) {
    std::vector<std::string> texts = {widget.windowTitle().toStdString()};
    for (const auto* label : widget.findChildren<QLabel*>()) {
      const auto* const text = qobject_cast<const TextLabel*>(label);
      texts.push_back((text != nullptr ? text->Shown() : label->text()).toStdString());
      texts.push_back(label->toolTip().toStdString());
    }
    for (const auto* button : widget.findChildren<QPushButton*>()) {
      texts.push_back(button->text().toStdString());
    }
    for (const auto* action : widget.findChildren<QAction*>()) {
      texts.push_back(action->text().toStdString());
    }
    for (const auto* field : widget.findChildren<QLineEdit*>()) {
      texts.push_back(field->placeholderText().toStdString());
    }
    return texts;
  }
};

}  // namespace hollin
