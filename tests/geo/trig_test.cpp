#include "geo/trig.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

namespace orvel {
namespace {

float degrees(float d) { return d * kPi / 180.0f; }

TEST(TableTrig, ResolutionIsOneDegreeRoundedToNearest) {
  EXPECT_EQ(tableSin(degrees(30.4f)), 0.5f);
  EXPECT_EQ(tableSin(degrees(29.6f)), 0.5f);
  EXPECT_NE(tableSin(degrees(30.6f)), 0.5f);
  EXPECT_EQ(tableCos(degrees(59.6f)), 0.5f);
  EXPECT_EQ(tableSin(degrees(-30.4f)), -0.5f);
}

TEST(TableTrig, AnglesBeyondTwoTurnsStayInsideTheTable) {
  for (float a : {7.0f, -7.0f, 100.0f, -1e9f, 1e30f, std::nanf("")}) {
    const float s = tableSin(a);
    const float c = tableCos(a);
    EXPECT_LE(std::fabs(s), 1.0f) << a;
    EXPECT_LE(std::fabs(c), 1.0f) << a;
  }
}

struct AtanCase {
  int32_t num, den;
  float expected;
};

TEST(TableAtan, Cases) {
  const float quarter = kPi * 0.5f;
  const AtanCase cases[] = {
      {5, 0, quarter},
      {-5, 0, -quarter},
      {0, 0, 0.0f},
      {0, -5, 0.0f},
      {1, -1, -(quarter - 0.785398185f)},
      {1, 1, quarter - 0.785398185f},
      {-1, -1, quarter - 0.785398185f},
      {1, 2, 0.463647604f},
      {-1, 2, -0.463647604f},
      {1, -2, -0.463647604f},
      {2, 1, quarter - 0.463647604f},
      {-2, 1, -(quarter - 0.463647604f)},
      {3, 1000, 0.0f},             // 0.3 hundredths rounds to entry 0
      {5, 1000, 0.00999966636f},   // 0.5 hundredths rounds up to entry 1
      {INT32_MIN, -1, quarter},    // negating the numerator must not overflow
      {INT32_MIN, 1, -quarter},
      {1, INT32_MIN, -0.0f},
  };
  for (const auto& c : cases) {
    EXPECT_FLOAT_EQ(tableAtan(c.num, c.den), c.expected) << c.num << "/" << c.den;
  }
}

}  // namespace
}  // namespace orvel
