#pragma once
// A large synthetic map set for the benchmarks: copies of one real single-tile map, renamed
// and moved onto a grid so that no two overlap, in one container.
#include <cstdint>
#include <filesystem>
#include <string>

#include "geo/units.h"

namespace orvel::bench {

struct MapSetLayout {
  int tiles = 0;
  int columns = 0;
  int rows = 0;
  int32_t cellWidth = 0;  // copy k lies (k % columns) cells east, (k / columns) north of the source
  int32_t cellHeight = 0;
  uint32_t blockSize = 0;
  uint64_t bytes = 0;  // the file's length (mostly holes when padded)
  MapRect bounds;      // the union of the copies' bounds
};

// Writes `tileCount` copies of the TRE, RGN and LBL of the single-tile map `source` into
// `out`. Copy k is named 70000000 + k and moved by whole grid cells: its TRE bounds and the
// centres of its subdivisions are shifted (object coordinates are relative to those
// centres). Each copy is followed by a hole so that the file grows to about `targetBytes`
// (0: no holes). The block size is the smallest from 512 up that lets 16-bit block
// numbers reach the end. False with `error` set on failure.
bool writeMapSet(const std::filesystem::path& source, const std::filesystem::path& out, int tileCount,
                 uint64_t targetBytes, MapSetLayout& layout, std::string& error);

}  // namespace orvel::bench
