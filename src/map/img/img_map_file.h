#pragma once
// The Garmin IMG map: a container of subfiles. Normally the TRE, RGN, LBL and NET of the
// tile named by the first directory entry are used. When that tile lacks TRE, RGN or LBL
// the container is read as a map set: every tile of the directory that has all three and
// is not locked is shown, side by side. Loading builds only the index (for a map set, a
// table of tiles whose subdivision indexes are built when a tile is first decoded); objects
// are decoded from the RGN data for each view, labels from the LBL data when asked for.
#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "map/img/img_container.h"
#include "map/img/img_subdivision.h"
#include "map/img/img_tile.h"
#include "map/img/label_decoder.h"
#include "map/format/map_file.h"

namespace orvel {

// Label references of a map set carry, above the 22 bits of the reference into the LBL
// data, the position of their tile in the list of tiles the last decode visited.
inline constexpr unsigned kImgTileSlotShift = 22;
inline constexpr uint32_t kImgMaxLabelledTiles = 1u << (32 - kImgTileSlotShift);

class ImgMapFile final : public MapFile {
 public:
  ImgMapFile();
  ~ImgMapFile() override;
  ImgMapFile(const ImgMapFile&) = delete;
  ImgMapFile& operator=(const ImgMapFile&) = delete;

  bool probe(Bytes file) override;
  bool load(Bytes file) override;
  void decode(const MapView& view, const MapRect& visible, ObjectConsumer& consumer) override;
  // isDrawnObject (rgn_decoder.h).
  bool isDrawn(const MapObject& object) const override;
  // One tile: labelRef as stored in the map; the text starts at byte labelRef << labelShift()
  // of the label data. A map set: valid until the next decode (see kImgTileSlotShift).
  int getLabel(uint32_t labelRef, char16_t* out) override;
  void describe(MapFacts& facts) const override;
  // For a map set, one fact per tile: "tile NAME" and "bounds_units W S E N; levels N
  // BITS...; subdivisions N (PER LEVEL...)". Nothing for a single-tile map.
  void describeTiles(MapFacts& facts) const;

  // Whether the container was read as a map set (even when it shows one tile only).
  bool isMapSet() const { return mapSet_; }
  // The tiles shown, in directory order. One for a single-tile map.
  std::span<const ImgTile> tiles() const { return tiles_; }
  // The tiles whose bounds meet `area`, in directory order (cheap: no subdivision is read).
  void tilesMeeting(const MapRect& area, std::vector<uint32_t>& out) const;

  // The first tile's data; for a single-tile map, valid after a successful load for the
  // object's life. A map set's tile has these only after it was first decoded.
  std::span<const ImgLevel> levels() const { return first().levels(); }
  std::span<const ImgSubdivision> subdivisions() const { return first().subdivisions(); }
  // Every section range of every subdivision lies inside rgnData().
  Bytes rgnData() const { return first().rgnData(); }
  Bytes labelData() const { return first().labelData(); }
  LabelSchema labelSchema() const { return first().labelSchema(); }
  uint8_t labelCoding() const { return first().labelCoding(); }  // 6, 9 or 10
  uint16_t codePage() const { return first().codePage(); }      // 0 = the system's default
  uint8_t labelShift() const { return first().labelShift(); }  // label reference n means byte n << shift
  Bytes poiProperties() const { return first().poiProperties(); }  // empty when the map has none
  Bytes netData() const { return first().netData(); }  // road data to the end of NET; empty without NET
  // The name of the first in-use directory entry (8 characters); for a map set, usually
  // the product's rather than a tile's.
  const std::string& tileName() const { return tileName_; }
  uint16_t blockSize() const { return blockSize_; }  // 0 when the exponents sum to 16 or more
  uint8_t xorKey() const { return xorKey_; }         // 0 when the file is not scrambled
  // The bytes read: the file itself, or the descrambled private copy.
  Bytes fileBytes() const { return file_; }
  // Where a subfile of the first tile starts in fileBytes() (0 when the tile has none).
  uint32_t subfileOffset(ImgSubfileType type) const { return first().subfile(type).offset; }
  bool hasNet() const { return first().hasNet(); }

 private:
  const ImgTile& first() const { return tiles_.empty() ? empty_ : tiles_.front(); }
  bool loadTile(const ImgDirectory& dir);
  bool loadSet();
  void decodeSet(const MapView& view, const MapRect& visible, ObjectConsumer& consumer);

  std::vector<uint8_t> copy_;  // descrambled bytes when xorKey_ != 0
  Bytes file_;
  uint8_t xorKey_ = 0;
  uint16_t blockSize_ = 0;
  bool mapSet_ = false;
  std::string tileName_;
  std::vector<ImgTile> tiles_;
  std::vector<MapRect> tileBounds_;  // tiles_[i].bounds(), packed for culling
  std::vector<uint32_t> visited_;    // tiles the last decode visited; label slots index it
  ImgTile empty_;
};

}  // namespace orvel
