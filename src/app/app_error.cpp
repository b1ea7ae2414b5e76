// SPDX-License-Identifier: MIT
#include "app/app_error.h"

#include <cstring>

namespace hollin {

AppError SystemError(int number, const QString& description) {
  return {.domain = kSystemErrorDomain,
          .code = number,
          .description = description,
          .failureReason = QString::fromLocal8Bit(std::strerror(number))};
}

}  // namespace hollin
