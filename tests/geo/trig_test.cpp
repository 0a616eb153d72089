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


}  // namespace
}  // namespace orvel
