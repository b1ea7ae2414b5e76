// SPDX-License-Identifier: MIT
// The one place where errors of the data store become alerts.
#pragma once

class QWidget;

namespace hollin {

struct AppError;

// Shows the error's description and failure reason and returns when the alert was dismissed; tells
// whether what the user chose has removed the error's cause, which an alert that offers nothing but
// to go on never does. Runs an event loop of its own: `parent` may be gone afterwards.
bool PresentError(const AppError& error, QWidget* parent);

}  // namespace hollin
