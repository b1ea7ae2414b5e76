// SPDX-License-Identifier: MIT
// The panel in which the user chooses an update package.
#pragma once

#include <string>

class QFileDialog;
class QString;
class QWidget;

namespace hollin {

// Whether a file's name or path ends as a package's does, in any letter case.
[[nodiscard]] bool IsPackageName(const QString& name);

// The panel itself, owned by `parent`. It opens in the folder of the package that was chosen last,
// and does not end with a name that is no package's.
[[nodiscard]] QFileDialog* MakeOpenPanel(QWidget* parent);

// Shows the panel; the path of the chosen file in the file system's own bytes, empty when the user
// cancelled. Runs an event loop of its own: `parent` may be gone afterwards.
[[nodiscard]] std::string RunOpenPanel(QWidget* parent);

}  // namespace hollin
