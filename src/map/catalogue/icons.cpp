#include "map/catalogue/icons.h"

#include <algorithm>
#include <vector>

#include <QDir>

#include "map/catalogue/art_resources.h"

namespace orvel {

std::span<const uint16_t> iconIds() {
  static const std::vector<uint16_t> ids = [] {
    initArtResources();
    std::vector<uint16_t> out;
    const QDir dir(artPath(QStringLiteral("icons")));
    for (const QString& name : dir.entryList({QStringLiteral("*.png")}, QDir::Files)) {
      bool ok = false;
      const uint id = QStringView(name).chopped(4).toUInt(&ok);
      if (ok && id > 0 && id <= 0xFFFF) out.push_back(static_cast<uint16_t>(id));
    }
    std::sort(out.begin(), out.end());
    return out;
  }();
  return ids;
}

QImage loadIcon(uint16_t id) {
  initArtResources();
  QImage image(artPath(QStringLiteral("icons/%1.png").arg(id)));
  if (image.isNull()) return {};
  return image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
}

}  // namespace orvel
