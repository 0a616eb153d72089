#include "app/desktop_entry.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>

#include "core/atomic_file.h"

namespace orvel {

QString desktopEntryText(const QString& programPath) {
  QString quoted = programPath;
  if (quoted.contains(u' ')) quoted = u'"' + quoted + u'"';
  return QStringLiteral(
             "[Desktop Entry]\n"
             "Type=Application\n"
             "Name=Orvel\n"
             "GenericName=Moving map\n"
             "GenericName[ru]=ГИС Орвел\n"
             "Comment=Vector maps with the position from a GPS receiver\n"
             "Exec=%1 %f\n"
             "Terminal=false\n"
             "Categories=Utility;Maps;\n"
             "MimeType=application/x-garmin-img;\n")
      .arg(quoted);
}

void writeDesktopEntry(const QString& programPath) {
  const QString folder =
      QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
      QStringLiteral("/applications");
  if (!QDir().mkpath(folder)) return;
  const QString path = folder + QStringLiteral("/orvel.desktop");
  const QByteArray wanted = desktopEntryText(programPath).toUtf8();
  QFile existing(path);
  if (existing.open(QIODevice::ReadOnly) && existing.readAll() == wanted) return;
  writeFileAtomically(std::filesystem::path(path.toStdString()),
                      std::string_view(wanted.constData(), size_t(wanted.size())));
}

}  // namespace orvel
