#include "gps/fix_processing.h"

#include <gtest/gtest.h>


namespace orvel {
namespace {

TEST(FixTolerance, BothAxesBeyondTheErrorEstimate) {
  // 10 m at 60 degrees: 9e-5 degrees of latitude and 1.8e-4 of longitude.
  const struct {
    float lat, error, dLon, dLat;
    bool moved;
  } cases[] = {
      {60, 10, 2.0e-4f, 1.0e-4f, true},   {60, 10, 1.6e-4f, 1.0e-4f, false},  {60, 10, 2.0e-4f, 0.8e-4f, false},
      {60, 10, -2.0e-4f, -1.0e-4f, true}, {-60, 10, 2.0e-4f, -1.0e-4f, true}, {-60, 10, 1.6e-4f, -1.0e-4f, false},
      {0, 0, 1e-5f, 1e-5f, true},         {0, 0, 0, 1e-5f, false},            {0, 0, 1e-5f, 0, false},
      {89.9f, 10, 1.0f, 0.05f, false},  // the table's cosine of 90 is 0: no longitude counts
  };
  for (const auto& c : cases) {
    GpsFix old;
    old.flags = kFixPosition;
    old.longitude = 30.0f;
    old.latitude = c.lat;
    GpsFix next = old;
    next.longitude += c.dLon;
    next.latitude += c.dLat;
    if (c.error > 0) {
      next.flags |= kFixHorizontalError;
      next.horizontalError = c.error;
    }
    EXPECT_EQ(hasMoved(old, next), c.moved) << c.lat << " " << c.error << " " << c.dLon << " " << c.dLat;
  }
  GpsFix a;  // both fixes need a position
  a.flags = kFixPosition;
  GpsFix b;
  b.longitude = 1;
  b.latitude = 1;
  EXPECT_FALSE(hasMoved(a, b));
  EXPECT_FALSE(hasMoved(b, a));
  b.flags = kFixPosition;
  EXPECT_TRUE(hasMoved(a, b));
}

}  // namespace
}  // namespace orvel
