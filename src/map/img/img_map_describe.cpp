#include <cstdio>
#include <string>

#include "map/img/img_map_file.h"

namespace orvel {
namespace {

std::string printed(const char* fmt, auto... args) {
  char buffer[128];
  std::snprintf(buffer, sizeof buffer, fmt, args...);
  return buffer;
}

// Degrees of a map-unit angle, in double precision for printing.
double degrees(int32_t units) { return units * 360.0 / 16777216.0; }

}  // namespace

void ImgMapFile::describe(MapFacts& facts) const {
  const MapRect& b = bounds_;
  facts.emplace_back("format", "img");
  facts.emplace_back("tile", tileName_);
  facts.emplace_back("bounds_units", printed("%d %d %d %d", b.west, b.south, b.east, b.north));
  facts.emplace_back("bounds_deg", printed("%.6f %.6f %.6f %.6f", degrees(b.west), degrees(b.south),
                                          degrees(b.east), degrees(b.north)));
  facts.emplace_back("block_size", std::to_string(blockSize_));
  facts.emplace_back("xor_key", printed("0x%02x", xorKey_));

  std::string levels = std::to_string(levels_.size());
  std::string perLevel;
  for (const ImgLevel& level : levels_) {
    levels += printed(" %u%s", unsigned{level.bits}, level.inherited ? "i" : "");
    perLevel += printed(perLevel.empty() ? "%u" : " %u", unsigned{level.subdivisions});
  }
  facts.emplace_back("levels", levels);
  facts.emplace_back("subdivisions", printed("%zu (", subdivisions_.size()).append(perLevel).append(")"));

  facts.emplace_back("label_coding", std::to_string(labelCoding_));
  facts.emplace_back("codepage", std::to_string(codePage_));
  facts.emplace_back("label_shift", std::to_string(labelShift_));
  std::string subfiles =
      printed("tre 0x%x rgn 0x%x lbl 0x%x", subfileOffsets_[0], subfileOffsets_[1], subfileOffsets_[2]);
  if (hasNet_) subfiles.append(printed(" net 0x%x", subfileOffsets_[3]));
  facts.emplace_back("subfiles", subfiles);
  facts.emplace_back("rgn_data_bytes", std::to_string(rgnData_.size()));
  facts.emplace_back("label_data_bytes", std::to_string(labelData_.size()));
  facts.emplace_back("poi_properties_bytes", std::to_string(poiProperties_.size()));
  facts.emplace_back("net_data_bytes", std::to_string(netData_.size()));
}

}  // namespace orvel
