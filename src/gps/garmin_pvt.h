#pragma once
// The Garmin position, velocity and time record (packet 51, at least 64 data bytes,
// little-endian) turned into a fix.
#include <cstdint>
#include <span>

#include "gps/gps_fix.h"

namespace orvel {

inline constexpr size_t kGarminPvtSize = 64;
// The validity bits a decoded record sets: time, position, both errors, altitude, geoid
// separation, course, speed, vertical speed and fix type.
inline constexpr uint32_t kGarminPvtFlags = 0x16BF;
// The automation date the receiver's day count is added to, used as it has always been
// (it is 1988-12-31).
inline constexpr double kGarminDayZero = 32508.0;

// False, with `fix` untouched, when the record is too short or its fix code (0 or 1) says
// the receiver has no usable fix.
bool decodeGarminPvt(std::span<const uint8_t> data, GpsFix& fix);

}  // namespace orvel
