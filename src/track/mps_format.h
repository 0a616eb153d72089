#pragma once
// The parts of a MapSource (.mps) file that the track export writes. Every record is a
// 4-byte little-endian length n, a type byte and n bytes of data.
#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "gps/gps_fix.h"
#include "geo/units.h"

namespace orvel {

inline constexpr size_t kMpsPointSize = 31;
inline constexpr uint32_t kMpsLengthPlaceholder = 31000;  // a track record's length, until patched
inline constexpr uint32_t kMpsCountPlaceholder = 1000;    // a track's point count, until patched

// "MsRcd", a zero byte, the format record "D" (version "h") and the application record "A".
std::string_view mpsHeader();
// The record that ends the file: length 2, type "V", data 0 1.
std::string_view mpsEndRecord();

// One track point as it stands in the file.
struct MpsPoint {
  Semicircles latitude = 0;
  Semicircles longitude = 0;
  bool hasAltitude = false;
  double altitude = 0.0;  // metres
  bool hasTime = false;
  uint32_t time = 0;      // seconds since 1970-01-01 00:00 UTC
  bool hasDepth = false;
  double depth = 0.0;
  friend bool operator==(const MpsPoint&, const MpsPoint&) = default;
};

// floor(d * 2^31 / 180 + 0.5), the product by 2^31 in single precision; saturated at the
// ends of the 32-bit range (180 degrees east).
Semicircles mpsSemicircles(float degrees);
// floor((t - 25569) * 86400 + 0.5) seconds; saturated to 0 before 1970 and at 2^32 - 1.
uint32_t mpsUnixTime(double automationDate);

// The point a fix gives: position, altitude and time where the fix has them, the reserved
// field as depth.
MpsPoint mpsPointFromFix(const GpsFix& fix);

std::array<uint8_t, kMpsPointSize> encodeMpsPoint(const MpsPoint& point);

}  // namespace orvel
