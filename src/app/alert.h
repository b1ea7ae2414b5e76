// SPDX-License-Identifier: MIT
// A message that the user has to answer before anything else goes on.
#pragma once

#include <QString>

class QMessageBox;
class QWidget;

namespace hollin {

enum class AlertStyle { kInformational, kWarning };
enum class AlertIcon { kOfStyle, kFolder };

struct Alert {
  QString message = {};  // the short title
  QString informativeText = {};
  AlertStyle style = AlertStyle::kInformational;
  AlertIcon icon = AlertIcon::kOfStyle;
};

// The box that shows an alert. Owned by `parent`. All texts are plain text, whatever stands in
// them.
[[nodiscard]] QMessageBox* MakeAlertBox(const Alert& alert, QWidget* parent);

// Shows an alert and returns when it was dismissed. Runs an event loop of its own, in which
// anything may happen: `parent` may be gone afterwards.
void RunAlert(const Alert& alert, QWidget* parent);

}  // namespace hollin
