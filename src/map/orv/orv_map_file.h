#pragma once
// The program's own compact map format (*.orv). Labels and object fields are prefix-coded
// with code tables stored in the file; load turns the ten tables into lookup tables, the
// object records are decoded for each view, a label when it is asked for.
//
// Objects lie in blocks, the blocks in levels of detail. decode walks the level chosen for
// the zoom: the blocks whose box meets the visible area, areas of all of them first, then
// lines, then points.
#include <array>
#include <cstdint>
#include <vector>

#include "map/format/map_file.h"
#include "map/orv/orv_code_table.h"
#include "map/orv/orv_format.h"

namespace orvel {

// Areas and lines of fewer points are not drawn.
inline constexpr size_t kOrvMinDrawnPoints = 2;

// One entry of the level table.
struct OrvLevel {
  uint32_t firstBlock = 0;  // offset of the first block header
  uint16_t blockCount = 0;
  uint16_t bits = 0;        // resolution; level coordinates are shifted left by 24 - bits
};

class OrvMapFile final : public MapFile {
 public:
  OrvMapFile() = default;
  OrvMapFile(const OrvMapFile&) = delete;
  OrvMapFile& operator=(const OrvMapFile&) = delete;

  // "GORV", version 2, and a stored size equal to the file's size.
  bool probe(Bytes file) override;
  bool load(Bytes file) override;
  void decode(const MapView& view, const MapRect& visible, ObjectConsumer& consumer) override;
  // Areas of the drawn types (isDrawnPolygonType) and lines of kOrvMinDrawnPoints points or
  // more, every point. An area of 2 points is drawn here, unlike in an IMG map.
  bool isDrawn(const MapObject& object) const override;
  // labelRef is a byte offset in the file: an object with an inline label or a shared label.
  int getLabel(uint32_t labelRef, char16_t* out) override;
  void describe(MapFacts& facts) const override;

  // Valid after load.
  uint32_t levelCount() const { return levelCount_; }
  // False when the entry does not lie wholly inside the file.
  bool level(uint32_t index, OrvLevel& out) const;
  // The level drawn at a zoom of `zoomLevel` bits: the last entry whose resolution does not
  // exceed it, entry 0 when none does; -1 when the map has no level.
  int chooseLevel(int32_t zoomLevel) const;
  // Every object of the level's blocks that meet `visible`, in drawing order.
  void decodeLevel(int levelIndex, const MapRect& visible, ObjectConsumer& consumer);
  const OrvLookupTable& table(OrvTable which) const { return tables_[which]; }

 private:
  void walkPass(const OrvLevel& level, const MapRect& visible, ObjectKind pass, ObjectConsumer& consumer);
  void walkSection(size_t start, size_t end, uint32_t blockX, uint32_t blockY, unsigned xBits, unsigned yBits,
                   unsigned shift, ObjectKind pass, ObjectConsumer& consumer);
  // Reads a label's length and characters with one set; keeps at most kOrvLabelMax
  // characters of 32 and above in `out` (when given; then it reads at most kOrvLabelMax
  // characters) and returns how many. Stops early once the reader has passed byte `end`.
  int readLabelText(OrvBitReader& reader, bool setA, char16_t* out, size_t end) const;

  Bytes file_;
  std::array<OrvLookupTable, kOrvTableCount> tables_;
  uint32_t sharedLabels_ = 0;
  uint32_t sharedIndexBits_ = 0;
  uint32_t levelTable_ = 0;
  uint32_t levelCount_ = 0;
  int32_t biasX_ = 0;
  int32_t biasY_ = 0;
  // The points of one line or area in map units, as many as the largest point count the
  // map can code.
  std::vector<MapPoint> mapPoints_;
};

}  // namespace orvel
