#pragma once
// Latitude and longitude texts in the four notations, and the forgiving reader used by the
// waypoint dialog.
#include <cstdint>
#include <string>

namespace orvel {

enum class CoordNotation : uint32_t {
  Decimal = 0,         // 55.75583
  LetterDecimal = 1,   // " N55.75583°"
  DegreesMinutes = 2,  // N55°45.350'
  DegreesMinutesSeconds = 3,  // N55°45'21.0"
};

// The notation the program shows coordinates in.
inline constexpr uint32_t kShownNotation = static_cast<uint32_t>(CoordNotation::DegreesMinutes);

std::u16string formatLatitude(float degrees, uint32_t notation = kShownNotation);
std::u16string formatLongitude(float degrees, uint32_t notation = kShownNotation);
std::u16string formatCoordinate(float degrees, char16_t positive, char16_t negative, uint32_t notation);

// Reads a number at [begin, end); on success *after points behind its last digit.
bool parseDecimal(const char16_t* begin, const char16_t* end, const char16_t** after, float* value);
// Reads degrees, minutes and seconds with optional hemisphere letter or sign.
bool parseCoordinate(const char16_t* begin, const char16_t* end, const char16_t** after, float* degrees);

}  // namespace orvel
