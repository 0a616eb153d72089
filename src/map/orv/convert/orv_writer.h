#pragma once
// Writing .orv maps. A map to write is given as levels of blocks of objects in level
// coordinates; writeOrv builds the code tables from the map's own symbol frequencies,
// puts labels used by more than one object into the shared label area (once) and the
// others inline, and lays the file out as header, code tables, shared labels, level
// table, block headers and object data.
//
// The program's own point types 0xF001-0xF106 are ordinary point objects here: their
// 16-bit type code goes into the point type table like any other.
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "map/format/map_file.h"
#include "geo/units.h"

namespace orvel {

class ImgMapFile;

struct OrvObjectIn {
  uint16_t type = 0;               // points: type << 8 | subtype
  std::vector<MapPoint> points;    // level units (map units >> (24 - bits)); at least one
  std::u16string label;            // empty for none
};

// One block: its objects by section, each section in drawing order.
struct OrvBlockIn {
  std::vector<OrvObjectIn> areas;
  std::vector<OrvObjectIn> lines;
  std::vector<OrvObjectIn> points;
  bool empty() const { return areas.empty() && lines.empty() && points.empty(); }
};

struct OrvLevelIn {
  uint16_t bits = 24;  // 1..24
  std::vector<OrvBlockIn> blocks;
};

struct OrvMapIn {
  MapRect bounds;                 // map units
  std::vector<OrvLevelIn> levels;  // coarsest first: drawing takes the last one fine enough
};

// Progress of a long conversion, one line at a time; may be empty.
using OrvProgress = std::function<void(const std::string&)>;

// The file for `map` in `out`. False, with the reason in `error`, when the map cannot be
// written in the format (more than 65535 blocks in a level, a delta range wider than 16
// bits, more than 65536 points in an object, a file of 16 MiB or more, ...).
bool writeOrv(const OrvMapIn& map, std::vector<uint8_t>& out, std::string& error,
              const OrvProgress& progress = {});

// The text a label keeps in the format: characters below 32 dropped, at most 255.
std::u16string orvLabelText(std::u16string_view text);

// The levels of a loaded IMG map as an .orv map: each drawn (not inherited) level whose
// bits are listed in `levelBits` (all when it is empty) becomes a level, each of its
// non-empty subdivisions a block, with their objects in the IMG drawing order.
bool orvFromImg(const ImgMapFile& img, std::span<const int> levelBits, OrvMapIn& out, std::string& error);

}  // namespace orvel
