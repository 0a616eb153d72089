// Placeholders until object decoding, drawing and label lookup exist for IMG maps.
#include "map/img/img_map_file.h"

namespace orvel {

void ImgMapFile::decode(const MapView&, const MapRect&, ObjectConsumer&) {}

void ImgMapFile::draw(QPainter&, const MapView&, const MapRect&) {}

int ImgMapFile::getLabel(uint32_t, char16_t* out) {
  out[0] = 0;
  return 0;
}

}  // namespace orvel
