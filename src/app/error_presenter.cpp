// SPDX-License-Identifier: MIT
#include "app/error_presenter.h"

#include "app/alert.h"
#include "app/app_error.h"

namespace hollin {

bool PresentError(const AppError& error, QWidget* parent) {
  RunAlert({.message = error.description,
            .informativeText = error.failureReason,
            .style = AlertStyle::kWarning},
           parent);
  return false;
}

}  // namespace hollin
