#pragma once
// The map object type catalogue: three constant tables sorted by key (polygons, lines,
// points) and the lookup of a type code in them.
#include <cstdint>
#include <span>

#include "map/catalogue/type_style.h"

namespace orvel {

inline constexpr uint32_t kPolygonTypeCount = 58;
inline constexpr uint32_t kLineTypeCount = 35;
inline constexpr uint32_t kPointTypeCount = 239;

// The whole tables, row 0 included. Row 0 of each is a sentinel ("Unknown") that the
// lookup never returns.
std::span<const TypeStyle> polygonTypes();
std::span<const TypeStyle> lineTypes();
std::span<const TypeStyle> pointTypes();

// Binary search over rows 1..rowCount-1 with range semantics; code is taken modulo 65536.
// Returns nullptr when the code is not catalogued.
const TypeStyle* findTypeStyle(const TypeStyle* table, uint32_t rowCount, uint32_t code);

// The same over each table. Point codes are (type << 8) | subtype.
const TypeStyle* findPolygonType(uint32_t code);
const TypeStyle* findLineType(uint32_t code);
const TypeStyle* findPointType(uint32_t code);

// The row's English name, or "Unknown" for a code that was not found (row == nullptr).
const char* typeName(const TypeStyle* row);

// Polygon types 0x01, 0x02, 0x4A and 0x4B describe the map itself (its coverage and
// background) and are never drawn, whatever the map's format; 0x03 is drawn.
bool isDrawnPolygonType(uint32_t type);

}  // namespace orvel
