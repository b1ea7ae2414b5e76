// SPDX-License-Identifier: MIT
#include "app/app_error.h"

#include <QFile>
#include <cstring>

namespace hollin {

QString PathName(const std::string& path) { return QFile::decodeName(QByteArray(path.c_str())); }

AppError SystemError(int number, const QString& description) {
  return {.domain = kSystemErrorDomain,
          .code = number,
          .description = description,
          .failureReason = QString::fromLocal8Bit(std::strerror(number))};
}

}  // namespace hollin
