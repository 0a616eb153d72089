#include "geo/units.h"

#include <cmath>

namespace orvel {

int32_t floorToInt(float value) {
  if (std::isnan(value)) return 0;
  // Compare in double: INT32_MAX is not representable as a float.
  const double f = std::floor(static_cast<double>(value));
  if (f <= static_cast<double>(INT32_MIN)) return INT32_MIN;
  if (f >= static_cast<double>(INT32_MAX)) return INT32_MAX;
  return static_cast<int32_t>(f);
}

int32_t mulDiv(int32_t a, int32_t b, int32_t c) {
  if (c == 0) return -1;
  // |a * b| <= 2^62, so neither the product nor the quotient can overflow 64 bits.
  const int64_t q = static_cast<int64_t>(a) * b / c;
  return static_cast<int32_t>(static_cast<uint32_t>(static_cast<uint64_t>(q)));
}

// The product is single precision, the half is added in double precision and the sum is
// narrowed again before flooring: the values must match the ones stored in existing files.
int32_t degreesToMapUnits(float degrees) {
  const float product = degrees * 46603.38f;
  return floorToInt(static_cast<float>(static_cast<double>(product) + 0.5));
}

float mapUnitsToDegrees(int32_t units) {
  return static_cast<float>(units) * 2.1457672e-5f;
}

int32_t degreesToSemicircles(float degrees) {
  const float product = degrees * 11930465.0f;
  return floorToInt(static_cast<float>(static_cast<double>(product) + 0.5));
}

}  // namespace orvel
