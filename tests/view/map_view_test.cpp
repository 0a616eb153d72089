#include "view/map_view.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace orvel {
namespace {

// A 240 x 320 view at the given zoom step, rotation and centre.
MapView makeView(uint32_t zoom, int32_t rotation = 0, MapPoint centre = {}) {
  MapView v;
  v.setScreenSize(240, 320);
  v.setZoomIndex(zoom);
  v.setRotation(rotation);
  v.setCentre(centre.x, centre.y);
  return v;
}

TEST(MapView, SetZoomIndexClampsThroughUnsignedTest) {
  MapView v;
  for (uint32_t index : {27u, static_cast<uint32_t>(-1), 1000u, 0x80000000u}) {
    v.setZoomIndex(index);
    EXPECT_EQ(v.zoomIndex(), 26u) << index;
    EXPECT_TRUE(v.zoomLabel() == u"800 км");
    EXPECT_EQ(v.zoomLevel(), 11);
    EXPECT_EQ(v.unitsNum(), 335544);
    EXPECT_EQ(v.unitsDen(), 40);
  }
  v.setZoomIndex(12);
  EXPECT_TRUE(v.zoomLabel() == u"1.2 км");
  EXPECT_EQ(v.zoomLevel(), 21);
  EXPECT_EQ(v.unitsNum(), 5033);
  EXPECT_EQ(v.unitsDen(), 400);
}


TEST(MapView, SetCentreClampsLatitudeAndScalesLongitude) {
  const struct { int32_t y, storedY, latScale; } cases[] = {
      {0, 0, 255}, {4000000, 3728270, 44}, {-4000000, -3728270, 44}, {3728271, 3728270, 44},
      {INT32_MIN, -3728270, 44}, {3728270, 3728270, 44},
      {2796203, 2796203, 128},  // 60 degrees: 127.5 rounds up
      {-2796203, -2796203, 128},
  };
  for (const auto& c : cases) {
    MapView v;
    EXPECT_EQ(v.setCentre(-77, c.y), c.latScale) << c.y;
    EXPECT_EQ(v.centre(), (MapPoint{-77, c.storedY}));
    EXPECT_EQ(v.latScale(), c.latScale);
  }
}


// Every truncation toward zero may lose up to a pixel, and a turned error vector spreads over
// both axes; with a quarter turn only the two scalings remain.
TEST(MapView, RoundTripWithinTruncationError) {
  for (uint32_t zoom : {0u, 6u, 15u, 26u}) {
    for (int32_t rotation : {0, 17, 45, 90, 135, 180, 251, 300, -60}) {
      MapView v = makeView(zoom, rotation, {-1500000, 2000000});
      const int32_t slack = rotation % 90 == 0 ? 2 : 4;
      // Map units per pixel, the wider longitude one for both axes since rotation mixes them.
      const int64_t perPixel =
          int64_t{v.unitsNum()} * 255 / (int64_t{v.unitsDen()} * v.latScale()) + 1;
      for (int32_t sx = -10; sx <= 250; sx += 37) {
        for (int32_t sy = -10; sy <= 330; sy += 41) {
          const MapPoint map = v.screenToMap(sx, sy);
          const MapPoint screen = v.mapToScreen(map);
          const MapPoint again = v.screenToMap(screen.x, screen.y);
          SCOPED_TRACE(testing::Message() << "zoom " << zoom << " rot " << rotation << " at "
                                          << sx << "," << sy);
          EXPECT_LE(std::llabs(int64_t{again.x} - map.x), slack * perPixel);
          EXPECT_LE(std::llabs(int64_t{again.y} - map.y), slack * perPixel);
          if (zoom > 0) {  // at zoom 0 one map unit covers many pixels
            EXPECT_LE(std::abs(screen.x - sx), slack);
            EXPECT_LE(std::abs(screen.y - sy), slack);
          }
        }
      }
    }
  }
}

TEST(MapView, VisibleRectCoversTheTurnedScreen) {
  for (int32_t rotation : {0, 10, 45, 90, 123, 180, 260, 315}) {
    MapView v = makeView(12, rotation, {300000, -1000000});
    const MapRect r = v.visibleRect();
    for (MapPoint corner : {MapPoint{0, 0}, MapPoint{240, 0}, MapPoint{0, 320}, MapPoint{240, 320}}) {
      const MapPoint m = v.screenToMap(corner.x, corner.y);
      const int32_t slack = 2 * v.unitsNum() / v.unitsDen() + 2;
      EXPECT_GE(m.x, r.west - slack) << rotation;
      EXPECT_LE(m.x, r.east + slack) << rotation;
      EXPECT_GE(m.y, r.south - slack) << rotation;
      EXPECT_LE(m.y, r.north + slack) << rotation;
    }
  }
}



TEST(MapView, FitNewMapMiddleTruncatesTowardZeroWithoutOverflow) {
  MapView v;
  v.setCentre(1000, 1000);
  v.fitNewMap({-5, -7, 2, -2});
  EXPECT_EQ(v.centre(), (MapPoint{-1, -4}));

  v.fitNewMap({2147483000, 100, 2147483600, 300});
  EXPECT_EQ(v.centre(), (MapPoint{2147483300, 200}));

  v.setCentre(0, 0);
  v.fitNewMap({-100, 3000000, 100, 4000000});  // the middle is beyond 80 degrees
  EXPECT_EQ(v.centre(), (MapPoint{0, 3500000}));
  v.setCentre(0, 0);
  v.fitNewMap({-100, 3800000, 100, 4000000});
  EXPECT_EQ(v.centre(), (MapPoint{0, 3728270}));
  EXPECT_EQ(v.latScale(), 44);
}

}  // namespace
}  // namespace orvel
