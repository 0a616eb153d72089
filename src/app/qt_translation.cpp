#include "app/qt_translation.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>

namespace orvel {

bool installQtTranslation(QTranslator& translator) {
  const QString folder = QLibraryInfo::path(QLibraryInfo::TranslationsPath);
  if (!translator.load(QLocale(QLocale::Russian, QLocale::Russia), QStringLiteral("qtbase"), QStringLiteral("_"),
                       folder)) {
    return false;
  }
  return QCoreApplication::installTranslator(&translator);
}

}  // namespace orvel
