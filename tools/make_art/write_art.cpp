#include "make_art/write_art.h"

#include <QDir>
#include <QImage>

#include "make_art/draw_icons.h"
#include "make_art/draw_patterns.h"
#include "map/catalogue/patterns.h"

namespace orvel::art {
namespace {

QString save(const QImage& image, const QDir& dir, int id) {
  const QString path = dir.filePath(QStringLiteral("%1.png").arg(id));
  if (image.isNull()) return QStringLiteral("nothing drawn for %1").arg(path);
  if (!image.save(path, "PNG")) return QStringLiteral("cannot write %1").arg(path);
  return {};
}

}  // namespace

QString writeArt(const QString& resDir) {
  const QDir res(resDir);
  for (const char* sub : {"icons", "patterns"}) {
    if (!res.mkpath(QLatin1String(sub))) {
      return QStringLiteral("cannot make %1").arg(res.filePath(QLatin1String(sub)));
    }
  }
  const QDir icons(res.filePath(QStringLiteral("icons")));
  for (uint16_t id : drawnIconIds()) {
    if (QString error = save(drawIcon(id), icons, id); !error.isEmpty()) return error;
  }
  const QDir patterns(res.filePath(QStringLiteral("patterns")));
  for (int id = kFirstPatternId; id <= kLastPatternId; ++id) {
    if (QString error = save(drawPatternTile(id), patterns, id); !error.isEmpty()) return error;
  }
  return {};
}

}  // namespace orvel::art
