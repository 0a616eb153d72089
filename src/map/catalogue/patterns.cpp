#include "map/catalogue/patterns.h"

#include "map/catalogue/art_resources.h"

namespace orvel {

QImage loadPatternTile(int bitmapId) {
  if (bitmapId < kFirstPatternId || bitmapId > kLastPatternId) return {};
  initArtResources();
  QImage tile(artPath(QStringLiteral("patterns/%1.png").arg(bitmapId)));
  if (tile.isNull()) return {};
  return tile.convertToFormat(QImage::Format_RGB32);
}

}  // namespace orvel
