#include "map/catalogue/catalogue.h"

namespace orvel {

// The search looks only at rows 1..n-1 and honours a row's range only when the search ends
// on that row as the lower bound. Three answers follow that maps have always been drawn
// with, so they stay as they are:
// - a code below row 1's key is never found;
// - the last row's range is never consulted (only its key matches), and a code above the
//   last key is tested against the range of the row before it;
// - the point row 0x4E00 "Restroom" has a range end (0x4D3F) below its key and therefore
//   matches 0x4E00 alone: restroom subtypes 0x4E01.. are drawn as uncatalogued points.
const TypeStyle* findTypeStyle(const TypeStyle* table, uint32_t rowCount, uint32_t code) {
  if (table == nullptr || rowCount < 2) return nullptr;
  const auto c = static_cast<uint16_t>(code);
  if (c == table[1].key) return &table[1];
  uint32_t lo = 1;
  uint32_t hi = rowCount - 1;
  for (;;) {
    if (c == table[hi].key) return &table[hi];
    if (hi - lo < 2) break;
    const uint32_t mid = (lo + hi) / 2;
    if (c > table[mid].key) {
      lo = mid;
    } else {
      hi = mid;
    }
    if (c == table[lo].key) return &table[lo];
  }
  const TypeStyle& row = table[lo];
  if (c <= row.key) return nullptr;
  const uint16_t end = row.rangeEnd != 0 ? row.rangeEnd : row.key;
  return c <= end ? &row : nullptr;
}

const TypeStyle* findPolygonType(uint32_t code) {
  return findTypeStyle(polygonTypes().data(), kPolygonTypeCount, code);
}

const TypeStyle* findLineType(uint32_t code) {
  return findTypeStyle(lineTypes().data(), kLineTypeCount, code);
}

const TypeStyle* findPointType(uint32_t code) {
  return findTypeStyle(pointTypes().data(), kPointTypeCount, code);
}

const char* typeName(const TypeStyle* row) { return row != nullptr ? row->name : "Unknown"; }

bool isDrawnPolygonType(uint32_t type) { return type != 0x01 && type != 0x02 && type != 0x4A && type != 0x4B; }

}  // namespace orvel
