#include "geo/units.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace orvel {
namespace {

// Toward minus infinity, clamped to the 32-bit range; NaN gives 0.
TEST(FloorToInt, RoundsTowardMinusInfinityAndClamps) {
  const float inf = std::numeric_limits<float>::infinity();
  const struct { float value; int32_t expected; } cases[] = {
      {2.7f, 2},   {-2.3f, -3}, {-0.5f, -1}, {-2.0f, -2}, {0.0f, 0},        {-0.0f, 0},
      {0.999f, 0}, {-1e-7f, -1}, {1e-7f, 0}, {16777216.0f, 16777216}, {-8388607.5f, -8388608},
      {3e9f, INT32_MAX}, {2147483648.0f, INT32_MAX}, {-2147483648.0f, INT32_MIN}, {-3e9f, INT32_MIN},
      {2147483520.0f, 2147483520},  // the largest float below 2^31
      {inf, INT32_MAX}, {-inf, INT32_MIN}, {std::nanf(""), 0},
  };
  for (const auto& c : cases) EXPECT_EQ(floorToInt(c.value), c.expected) << c.value;
}

TEST(MulDiv, SixtyFourBitProductTruncatedTowardZero) {
  const struct { int32_t a, b, c, expected; } cases[] = {
      {7, 3, 2, 10},
      {-7, 3, 2, -10},  // floor division would give -11
      {7, -3, 2, -10}, {-7, -3, -2, -10}, {-7, 3, -2, 10}, {INT32_MAX, INT32_MAX, INT32_MAX, INT32_MAX},
      {100000, 100000, 10, 1000000000}, {33554, 255 * 40000, 33554 * 255, 40000},
      {INT32_MIN, -1, 1, INT32_MIN},  // 2^31: only the low 32 bits are kept
      {65536, 65536, 1, 0}, {INT32_MAX, 2, 1, -2}, {INT32_MIN, INT32_MIN, -1, 0}, {5, 7, 0, -1}, {0, 0, 0, -1},
      {0, 123, -5, 0},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(mulDiv(c.a, c.b, c.c), c.expected) << c.a << " * " << c.b << " / " << c.c;
  }
}

struct AngleCase {
  float degrees;
  int32_t expected;
};

TEST(Conversions, DegreesToMapUnits) {
  const AngleCase cases[] = {
      {180.0f, 8388608},  {-180.0f, -8388608}, {90.0f, 4194304}, {0.0f, 0},
      {-0.00001f, 0},     // -0.466 + 0.5 floors to 0
      {-0.00002f, -1},    // -0.932 + 0.5 floors to -1
      {0.00001f, 0},      {1.0f, 46603},     {-1.0f, -46603},
      // The product 8388609 needs 24 bits; the half added to it is rounded away when the sum
      // is narrowed to single precision, to the even 8388610.
      {std::nextafter(180.0f, 200.0f), 8388610},
  };
  for (const auto& c : cases) EXPECT_EQ(degreesToMapUnits(c.degrees), c.expected) << c.degrees;
}

TEST(Conversions, DegreesToSemicircles) {
  const AngleCase cases[] = {
      {0.0f, 0},
      // 11930465 needs 24 bits: the added half is a tie when narrowed, and goes to even.
      {1.0f, 11930466},
      {3.0f, 35791396},  // the product 35791395 is already rounded to a multiple of 4
      {0.5f, 5965233},    // 5965232.5 rounds up
      {-0.5f, -5965232},  // -5965232.5 rounds up too
      {90.0f, 1073741824}, {-90.0f, -1073741824},
      {180.0f, INT32_MAX},  // 2^31 does not fit; clamped
      {-180.0f, INT32_MIN},
  };
  for (const auto& c : cases) EXPECT_EQ(degreesToSemicircles(c.degrees), c.expected) << c.degrees;
}

}  // namespace
}  // namespace orvel
