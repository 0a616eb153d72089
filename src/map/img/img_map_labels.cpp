// Label texts of an IMG map.
#include "map/img/img_map_file.h"
#include "map/img/label_decoder.h"
#include "map/img/rgn_decoder.h"

namespace orvel {

// A reference counts in units of 2^shift bytes (the LBL header's offset multiplier), so
// that maps whose label data outgrow 22 bits of byte offset still reach every label.
int ImgMapFile::getLabel(uint32_t labelRef, char16_t* out) {
  if (!mapSet_) {
    const ImgTile& tile = first();
    return decodeLabel(tile.labelData(), labelByteOffset(labelRef, tile.labelShift()), tile.labelSchema(),
                       tile.codePage(), out);
  }
  const uint32_t slot = labelRef >> kImgTileSlotShift;
  if (slot >= visited_.size()) {
    out[0] = 0;
    return 0;
  }
  const ImgTile& tile = tiles_[visited_[slot]];
  return decodeLabel(tile.labelData(), labelByteOffset(labelRef & kLabelRefMask, tile.labelShift()),
                     tile.labelSchema(), tile.codePage(), out);
}

}  // namespace orvel
