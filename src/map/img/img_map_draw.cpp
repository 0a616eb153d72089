// Walking a view of an IMG map: decoding its objects for a consumer, and drawing them.
#include <QPainter>

#include "map/draw/map_painter.h"
#include "map/img/img_map_file.h"
#include "map/img/rgn_decoder.h"

namespace orvel {

void ImgMapFile::decode(const MapView& view, const MapRect& visible, ObjectConsumer& consumer) {
  decodeImgView(makeImgDecodeInput(*this), visible, view.zoomLevel(), consumer);
}

void ImgMapFile::draw(QPainter& painter, const MapView& view, const MapRect& visible) {
  MapPainter mapPainter(painter, view, visible, *this, labels_, isDrawnObject);
  mapPainter.begin();
  decode(view, visible, mapPainter);
  mapPainter.finish();
}

}  // namespace orvel
