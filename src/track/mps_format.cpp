#include "track/mps_format.h"

#include <cmath>

#include "track/le_bytes.h"

namespace orvel {
namespace {

using namespace std::string_view_literals;

constexpr std::string_view kHeader =
    "MsRcd\0"sv
    "\x02\0\0\0" "D" "h\0"sv
    "\x1a\0\0\0" "A" "\x9d\x01" "XW\0" "Jul  5 2004\0" "07:32:30\0"sv;
static_assert(kHeader.size() == 44);

constexpr std::string_view kEndRecord = "\x02\0\0\0" "V" "\0\x01"sv;
static_assert(kEndRecord.size() == 7);

// floor(value + 0.5) into [lo, hi]; a value that is not a number gives 0.
double roundClamped(double value, double lo, double hi) {
  if (std::isnan(value)) return 0.0;
  const double rounded = std::floor(value + 0.5);
  return rounded < lo ? lo : (rounded > hi ? hi : rounded);
}

}  // namespace

std::string_view mpsHeader() { return kHeader; }
std::string_view mpsEndRecord() { return kEndRecord; }

Semicircles mpsSemicircles(float degrees) {
  const float scaled = degrees * 2147483648.0f;
  const double value = static_cast<double>(scaled) * (1.0 / 180.0);
  return static_cast<Semicircles>(roundClamped(value, INT32_MIN, INT32_MAX));
}

uint32_t mpsUnixTime(double automationDate) {
  const double seconds = (automationDate - 25569.0) * 86400.0;
  return static_cast<uint32_t>(roundClamped(seconds, 0.0, UINT32_MAX));
}

MpsPoint mpsPointFromFix(const GpsFix& fix) {
  MpsPoint point;
  point.latitude = mpsSemicircles(fix.latitude);
  point.longitude = mpsSemicircles(fix.longitude);
  if (fix.has(kFixAltitude)) {
    point.hasAltitude = true;
    point.altitude = static_cast<double>(fix.altitude);
  }
  if (fix.has(kFixTime)) {
    point.hasTime = true;
    point.time = mpsUnixTime(fix.time);
  }
  if (fix.has(kFixReserved)) {
    point.hasDepth = true;
    point.depth = static_cast<double>(fix.reserved);
  }
  return point;
}

std::array<uint8_t, kMpsPointSize> encodeMpsPoint(const MpsPoint& point) {
  std::array<uint8_t, kMpsPointSize> bytes{};
  uint8_t* p = bytes.data();
  le::store32(p + 0, static_cast<uint32_t>(point.latitude));
  le::store32(p + 4, static_cast<uint32_t>(point.longitude));
  if (point.hasAltitude) {
    p[8] = 1;
    le::storeDouble(p + 9, point.altitude);
  }
  if (point.hasTime) {
    p[17] = 1;
    le::store32(p + 18, point.time);
  }
  if (point.hasDepth) {
    p[22] = 1;
    le::storeDouble(p + 23, point.depth);
  }
  return bytes;
}

}  // namespace orvel
