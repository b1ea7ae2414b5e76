// SPDX-License-Identifier: MIT
// The box that says which version this is and under which licences it and its libraries stand.
#pragma once

class QDialog;
class QWidget;

namespace hollin {

// Not shown yet. Owned by `parent`.
[[nodiscard]] QDialog* MakeAboutBox(QWidget* parent);

}  // namespace hollin
