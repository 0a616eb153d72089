#pragma once
// Integer angles used everywhere in the program, and the conversions between them.
//   MapUnits:    2^24 per full turn (Garmin map units). x is longitude, y latitude.
//   Semicircles: 2^32 per full turn, 256 x the same angle in MapUnits.
#include <climits>
#include <cstdint>
#include <span>

namespace orvel {

using MapUnits = int32_t;
using Semicircles = int32_t;

// A point in map units, in semicircles, or on screen (pixels, y downward).
struct MapPoint {
  int32_t x = 0;
  int32_t y = 0;
  friend bool operator==(const MapPoint&, const MapPoint&) = default;
};

// A bounding box in map units. Default-constructed it is the empty box.
struct MapRect {
  int32_t west = INT32_MAX;
  int32_t south = INT32_MAX;
  int32_t east = INT32_MIN;
  int32_t north = INT32_MIN;
  friend bool operator==(const MapRect&, const MapRect&) = default;
};

// The bounding box of the points; the empty box for none.
inline MapRect pointBounds(std::span<const MapPoint> points) {
  MapRect box;
  for (const MapPoint& p : points) {
    if (p.x < box.west) box.west = p.x;
    if (p.x > box.east) box.east = p.x;
    if (p.y < box.south) box.south = p.y;
    if (p.y > box.north) box.north = p.y;
  }
  return box;
}

// True when the point lies in the box (edges inclusive).
inline bool contains(const MapRect& r, const MapPoint& p) {
  return r.west <= p.x && p.x <= r.east && r.south <= p.y && p.y <= r.north;
}

// True when the two boxes share at least one point (edges inclusive).
inline bool intersects(const MapRect& a, const MapRect& b) {
  return a.east >= b.west && a.west <= b.east && a.north >= b.south && a.south <= b.north;
}

// Rounds toward minus infinity. Every rounding round(v) in the program is floorToInt(v + 0.5).
int32_t floorToInt(float value);

// a * b / c with a 64-bit product and a truncating 64-bit division; the low 32 bits of the
// quotient. -1 when c is 0.
int32_t mulDiv(int32_t a, int32_t b, int32_t c);

// floor(degrees * 46603.38 + 0.5), single-precision product.
int32_t degreesToMapUnits(float degrees);
// units * 2.1457672e-5 in single precision.
float mapUnitsToDegrees(int32_t units);
// floor(degrees * 11930465.0 + 0.5), single-precision product.
int32_t degreesToSemicircles(float degrees);

// Sign-extends a 24-bit value read from a map file.
inline int32_t signExtend24(uint32_t v) {
  v &= 0xFFFFFFu;
  return v >= 0x800000u ? static_cast<int32_t>(v) - 0x1000000 : static_cast<int32_t>(v);
}

}  // namespace orvel
