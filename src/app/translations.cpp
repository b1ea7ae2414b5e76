// SPDX-License-Identifier: MIT
#include "app/translations.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>

namespace hollin {
namespace {

// "de" of "de-AT". Languages that the user would take instead are not asked for: a mixture of
// places where the choice is made helps nobody.
QString LanguageOfLocale() {
  return QLocale::system().uiLanguages().value(0).section('-', 0, 0).section('_', 0, 0);
}

// False when there is no such translation.
bool Use(const QString& file, const QString& folder) {
  auto* const translator = new QTranslator(QCoreApplication::instance());
  return translator->load(file, folder) && QCoreApplication::installTranslator(translator);
}

}  // namespace

void UseLanguageOfLocale() {
  const QString language = LanguageOfLocale();
  if (!Use("hollin_" + language, ":/hollin/translations")) return;
  Use("qtbase_" + language, QLibraryInfo::path(QLibraryInfo::TranslationsPath));
}

}  // namespace hollin
