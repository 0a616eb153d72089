#include "gps/garmin_pvt.h"

#include <bit>
#include <cmath>

#include "gps/nmea_sentences.h"

namespace orvel {
namespace {

constexpr double kPiSingle = static_cast<double>(3.1415927f);
constexpr double kSecondsToDays = 1.1574074074074073e-5;

uint64_t loadLittle(std::span<const uint8_t> data, size_t at, size_t size) {
  uint64_t value = 0;
  for (size_t i = 0; i < size; ++i) value |= static_cast<uint64_t>(data[at + i]) << (8 * i);
  return value;
}
double f32(std::span<const uint8_t> data, size_t at) {
  return std::bit_cast<float>(static_cast<uint32_t>(loadLittle(data, at, 4)));
}
double f64(std::span<const uint8_t> data, size_t at) { return std::bit_cast<double>(loadLittle(data, at, 8)); }
uint32_t u16(std::span<const uint8_t> data, size_t at) { return static_cast<uint32_t>(loadLittle(data, at, 2)); }
uint32_t u32(std::span<const uint8_t> data, size_t at) { return static_cast<uint32_t>(loadLittle(data, at, 4)); }

}  // namespace

bool decodeGarminPvt(std::span<const uint8_t> data, GpsFix& fix) {
  if (data.size() < kGarminPvtSize) return false;
  const uint32_t code = u16(data, 16);
  if (code <= 1) return false;

  const double ellipsoidAltitude = f32(data, 0);
  const double mslHeight = f32(data, 54);  // height of the ellipsoid above mean sea level
  const double east = f32(data, 42);
  const double north = f32(data, 46);
  const double up = f32(data, 50);
  const double timeOfWeek = f64(data, 18);
  const double leapSeconds = u16(data, 58);
  const double weekStartDays = u32(data, 60);

  GpsFix out;
  out.time = (timeOfWeek - leapSeconds) * kSecondsToDays + (weekStartDays + kGarminDayZero);
  out.latitude = toFixFloat(f64(data, 26) * 180.0 / kPiSingle);
  out.longitude = toFixFloat(f64(data, 34) * 180.0 / kPiSingle);
  out.horizontalError = toFixFloat(f32(data, 8) * 0.5);
  out.verticalError = toFixFloat(f32(data, 12) * 0.5);
  out.altitude = toFixFloat(ellipsoidAltitude + mslHeight);
  out.geoidSeparation = toFixFloat(-mslHeight);
  out.verticalSpeed = toFixFloat(up);
  // Course from -180 to 180 degrees; the speed includes the vertical component.
  out.course = toFixFloat(std::atan2(east, north) * 180.0 / kPiSingle);
  out.speed = toFixFloat(std::sqrt(east * east + north * north + up * up) * 3.6);
  out.fixType = code >= 2 && code <= 5 ? code : kFixTypeUnknown;
  out.flags = kGarminPvtFlags;
  fix = out;
  return true;
}

}  // namespace orvel
