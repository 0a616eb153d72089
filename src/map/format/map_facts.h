#pragma once
// Helpers for the "key: value" facts that maps tell about themselves (orvel-tool info).
#include <cstdio>
#include <string>

#include "map/format/map_file.h"

namespace orvel {

// snprintf into a string; facts are short.
template <typename... Args>
std::string printedFact(const char* format, Args... args) {
  char buffer[160];
  std::snprintf(buffer, sizeof buffer, format, args...);
  return buffer;
}

// "west south east north" in map units.
inline std::string boundsUnitsText(const MapRect& b) {
  return printedFact("%d %d %d %d", b.west, b.south, b.east, b.north);
}

// bounds_units and bounds_deg (degrees in double precision, 6 decimals).
inline void addBoundsFacts(const MapRect& b, MapFacts& facts) {
  const auto degrees = [](int32_t units) { return units * 360.0 / 16777216.0; };
  facts.emplace_back("bounds_units", boundsUnitsText(b));
  facts.emplace_back("bounds_deg", printedFact("%.6f %.6f %.6f %.6f", degrees(b.west), degrees(b.south),
                                               degrees(b.east), degrees(b.north)));
}

}  // namespace orvel
