#include <cstdio>
#include <string>

#include "map/format/map_facts.h"
#include "map/img/img_map_file.h"

namespace orvel {
namespace {

// "17i 18 20 22 24" and "1 1 3 10 19": bits (i = inherited) and subdivisions per level.
void describeLevels(std::span<const ImgLevel> levels, std::string& bits, std::string& perLevel) {
  for (const ImgLevel& level : levels) {
    bits += printedFact(bits.empty() ? "%u%s" : " %u%s", unsigned{level.bits}, level.inherited ? "i" : "");
    perLevel += printedFact(perLevel.empty() ? "%u" : " %u", unsigned{level.subdivisions});
  }
}

}  // namespace

void ImgMapFile::describe(MapFacts& facts) const {
  const MapRect& b = bounds_;
  facts.emplace_back("format", "img");
  facts.emplace_back("tile", tileName_);
  addBoundsFacts(b, facts);
  facts.emplace_back("block_size", std::to_string(blockSize_));
  facts.emplace_back("xor_key", printedFact("0x%02x", xorKey_));

  if (mapSet_) {
    facts.emplace_back("tiles", std::to_string(tiles_.size()));
    return;
  }

  const ImgTile& tile = first();
  std::string bits;
  std::string perLevel;
  describeLevels(tile.levels(), bits, perLevel);
  facts.emplace_back("levels", std::to_string(tile.levels().size()) + (bits.empty() ? "" : " " + bits));
  facts.emplace_back("subdivisions", printedFact("%zu (", tile.subdivisions().size()).append(perLevel).append(")"));

  facts.emplace_back("label_coding", std::to_string(tile.labelCoding()));
  facts.emplace_back("codepage", std::to_string(tile.codePage()));
  facts.emplace_back("label_shift", std::to_string(tile.labelShift()));
  std::string subfiles = printedFact("tre 0x%x rgn 0x%x lbl 0x%x", subfileOffset(kSubfileTre),
                                 subfileOffset(kSubfileRgn), subfileOffset(kSubfileLbl));
  if (tile.hasNet()) subfiles.append(printedFact(" net 0x%x", subfileOffset(kSubfileNet)));
  facts.emplace_back("subfiles", subfiles);
  facts.emplace_back("rgn_data_bytes", std::to_string(tile.rgnData().size()));
  facts.emplace_back("label_data_bytes", std::to_string(tile.labelData().size()));
  facts.emplace_back("poi_properties_bytes", std::to_string(tile.poiProperties().size()));
  facts.emplace_back("net_data_bytes", std::to_string(tile.netData().size()));
}

void ImgMapFile::describeTiles(MapFacts& facts) const {
  if (!mapSet_) return;
  for (const ImgTile& tile : tiles_) {
    std::string bits;
    std::string perLevel;
    describeLevels(tile.levels(), bits, perLevel);
    facts.emplace_back("tile " + tile.name(),
                       printedFact("bounds_units %s; ", boundsUnitsText(tile.bounds()).c_str()) +
                           printedFact("levels %zu %s; ", tile.levels().size(), bits.c_str()) +
                           printedFact("subdivisions %zu (%s)", tile.subdivisionCount(), perLevel.c_str()));
  }
}

}  // namespace orvel
