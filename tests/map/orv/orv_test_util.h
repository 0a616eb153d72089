#pragma once
// Helpers of the .orv tests: objects decoded into plain values, converted real maps, and a
// builder of small hand-made files whose every code and bit the test chooses.
#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "map/img/img_map_file.h"
#include "map/format/map_file.h"
#include "map/orv/convert/orv_prefix_code.h"
#include "map/orv/orv_format.h"

namespace orvel::test {

// One decoded object with its label text.
struct Decoded {
  ObjectKind kind = ObjectKind::Point;
  uint32_t type = 0;
  std::vector<MapPoint> points;
  std::u16string label;
  uint32_t labelRef = 0;
  friend bool operator==(const Decoded& a, const Decoded& b) {
    return a.kind == b.kind && a.type == b.type && a.points == b.points && a.label == b.label;
  }
};

// Collects objects; the label texts are fetched through `map` with drop(), which keeps
// only characters of 32 and above, at most 255 (what the .orv format can hold).
class Collect final : public ObjectConsumer {
 public:
  Collect(MapFile& map, unsigned shift = 0, bool imgLabels = false, const ImgMapFile* img = nullptr)
      : map_(map), shift_(shift), imgLabels_(imgLabels), img_(img) {}
  void onObject(const MapObject& object) override;
  std::vector<Decoded> objects;

 private:
  MapFile& map_;
  unsigned shift_;
  bool imgLabels_;
  const ImgMapFile* img_;
};

inline constexpr MapRect kEverywhere{INT32_MIN, INT32_MIN, INT32_MAX, INT32_MAX};

// The single-tile real maps.
const std::vector<std::string>& singleTileMaps();

// A file put together from explicit code tables and raw object bytes.
struct RawBlock {
  uint32_t x = 0, y = 0;
  uint16_t w = 0, h = 0;
  std::array<std::vector<uint8_t>, 3> sections;  // areas, lines, points
};
struct RawLevel {
  uint16_t bits = 24;
  std::vector<RawBlock> blocks;
};
struct RawFile {
  std::array<std::vector<OrvCode>, kOrvTableCount> tables;
  std::vector<uint8_t> sharedArea;
  uint32_t sharedIndexBits = 0;
  int32_t biasX = 0, biasY = 0;
  MapRect bounds{0, 0, 1000, 1000};
  std::vector<RawLevel> levels;
  // Filled by build(): where things went.
  uint32_t sharedStart = 0;
  std::vector<uint8_t> build();
};

void putU32(std::vector<uint8_t>& bytes, size_t at, uint32_t value);

}  // namespace orvel::test
