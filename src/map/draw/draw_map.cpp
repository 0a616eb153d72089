#include "map/draw/draw_map.h"

#include <QPainter>

#include "map/draw/map_painter.h"
#include "map/format/map_file.h"

namespace orvel {

void drawMap(QPainter& painter, MapFile& map, const MapView& view, const MapRect& visible, MapDrawContext& context) {
  painter.save();
  MapPainter mapPainter(painter, view, visible, map, context);
  mapPainter.begin();
  map.decode(view, visible, mapPainter);
  mapPainter.finish();
  painter.restore();
}

}  // namespace orvel
