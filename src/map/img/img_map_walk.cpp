// Walking a view of an IMG map: decoding its objects for a consumer (drawing or a listing).
#include "map/img/img_map_file.h"
#include "map/img/rgn_decoder.h"

namespace orvel {
namespace {

// Hands objects on with the tile's slot put above their label reference.
class TileSlotConsumer final : public ObjectConsumer {
 public:
  explicit TileSlotConsumer(ObjectConsumer& out) : out_(out) {}
  void setSlot(uint32_t slot) { slot_ = slot; }
  void onObject(const MapObject& object) override {
    if (object.labelRef == 0) {
      out_.onObject(object);
      return;
    }
    MapObject tagged = object;
    // Tiles past the slots the reference has room for are drawn unlabelled; a view that
    // shows that many tiles is far too small for their labels anyway.
    tagged.labelRef = slot_ < kImgMaxLabelledTiles ? object.labelRef | slot_ << kImgTileSlotShift : 0;
    out_.onObject(tagged);
  }

 private:
  ObjectConsumer& out_;
  uint32_t slot_ = 0;
};

}  // namespace

void ImgMapFile::decode(const MapView& view, const MapRect& visible, ObjectConsumer& consumer) {
  if (mapSet_) {
    decodeSet(view, visible, consumer);
  } else {
    decodeImgView(makeImgDecodeInput(*this), visible, view.zoomLevel(), consumer);
  }
}

// All polygons of every tile in view before any polyline, and all polylines before any
// point, so that one tile's areas never cover a neighbour's roads. Tiles are culled by their
// bounds first; a tile's subdivision index is built the first time it comes into view.
void ImgMapFile::decodeSet(const MapView& view, const MapRect& visible, ObjectConsumer& consumer) {
  tilesMeeting(visible, visited_);
  size_t kept = 0;
  for (const uint32_t index : visited_) {
    if (tiles_[index].ensureIndex(file_)) visited_[kept++] = index;
  }
  visited_.resize(kept);

  TileSlotConsumer tagged(consumer);
  const int threshold = view.zoomLevel();
  for (ImgPass pass : {ImgPass::kPolygons, ImgPass::kLines, ImgPass::kPoints}) {
    for (uint32_t slot = 0; slot < visited_.size(); ++slot) {
      const ImgTile& tile = tiles_[visited_[slot]];
      const int level = selectLevel(tile.levels(), threshold);
      if (level < 0) continue;
      tagged.setSlot(slot);
      decodeImgLevelPass(makeImgDecodeInput(tile, file_), level, visible, pass, tagged);
    }
  }
}

bool ImgMapFile::isDrawn(const MapObject& object) const { return isDrawnObject(object); }

}  // namespace orvel
