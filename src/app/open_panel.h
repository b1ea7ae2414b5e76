// SPDX-License-Identifier: MIT
// The panel in which the user chooses an update package.
#pragma once

#include <string>

class QFileDialog;
class QWidget;

namespace hollin {

// The panel itself, owned by `parent`.
[[nodiscard]] QFileDialog* MakeOpenPanel(QWidget* parent);

// Shows the panel; the path of the chosen file in the file system's own bytes, empty when the user
// cancelled. Runs an event loop of its own: `parent` may be gone afterwards.
[[nodiscard]] std::string RunOpenPanel(QWidget* parent);

}  // namespace hollin
