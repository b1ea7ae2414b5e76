// SPDX-License-Identifier: MIT
#include "app/not_connected_text.h"

#include <QCoreApplication>
#include <QStringList>
#include <array>

#include "package/dat_file_examine.h"

namespace hollin {
namespace {

// By the number of buttons.
constexpr std::array<const char*, 4> kMessages = {
    QT_TRANSLATE_NOOP("NotConnected", "The TS30 is not connected."),
    QT_TRANSLATE_NOOP("NotConnected",
                      "The TS30 is not connected. Please hold down the \"%1\" \r\n buttons while "
                      "powering on the TS30."),
    QT_TRANSLATE_NOOP("NotConnected",
                      "The TS30 is not connected. Please hold down the \"%1\" and \"%2\" \r\n "
                      "buttons while powering on the TS30."),
    QT_TRANSLATE_NOOP("NotConnected",
                      "The TS30 is not connected. Please hold down the \"%1\" + \"%2\" + \"%3\" "
                      "\r\n buttons while powering on the TS30."),
};

// All at once: a button may be named "%2".
QString Filled(const QString& message, const QStringList& names) {
  switch (names.size()) {
    case 1:
      return message.arg(names[0]);
    case 2:
      return message.arg(names[0], names[1]);
    case 3:
      return message.arg(names[0], names[1], names[2]);
    default:
      return message;
  }
}

}  // namespace

QString NotConnectedText(const DatFileExamine& datFile) {
  QStringList names;
  for (const std::string& name : datFile.ButtonsToHold()) names << QString::fromStdString(name);
  const char* const english = kMessages.at(static_cast<size_t>(names.size()));
  const QString message = QCoreApplication::translate("NotConnected", english);
  if (message == QLatin1String(english)) {
    return QString::fromStdString(datFile.NotConnectedMessage());
  }
  return Filled(message, names);
}

}  // namespace hollin
