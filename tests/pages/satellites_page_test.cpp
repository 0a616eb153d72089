#include <algorithm>

#include "pages/satellites_page.h"
#include "pages_fixture.h"
#include "geo/coords.h"

namespace orvel::test {
namespace {

class SatellitesPageTest : public PagesTest {
 protected:
  void showSatellites(const std::vector<SatelliteInfo>& satellites) {
    gps.resetSatellites(static_cast<uint32_t>(satellites.size()));
    for (const SatelliteInfo& satellite : satellites) gps.addSatellite(satellite);
  }

  // The satellites' circles: every ellipse after the sky's three, in order.
  std::vector<DrawCall> satelliteCircles(const std::vector<DrawCall>& calls) {
    std::vector<DrawCall> ellipses;
    for (const DrawCall& call : calls) {
      if (call.kind == DrawCall::Kind::Ellipse) ellipses.push_back(call);
    }
    EXPECT_GE(ellipses.size(), 3u);
    ellipses.erase(ellipses.begin(), ellipses.begin() + std::min<size_t>(3, ellipses.size()));
    return ellipses;
  }
};

struct SkyCase {
  uint32_t elevation, azimuth;
  QPointF centre;
};

TEST_F(SatellitesPageTest, SatellitesArePlacedByElevationAndAzimuth) {
  const SkyCase cases[] = {
      {90, 0, {120, 80}},    // zenith: the centre
      {90, 200, {120, 80}},
      {0, 90, {180, 80}},    // horizon east: (cx + r, cy)
      {0, 0, {120, 20}},     // horizon north
      {0, 180, {120, 139}},  // horizon south: rounding adds 0.5 and truncates
      {0, 270, {61, 80}},
      {45, 90, {150, 80}},   // half way out
  };
  for (const SkyCase& sky : cases) {
    showSatellites({{7, sky.elevation, sky.azimuth, 40}});
    const std::vector<DrawCall> circles = satelliteCircles(record(satellitesPage()));
    ASSERT_EQ(circles.size(), 1u);
    EXPECT_EQ(circles[0].rect.center(), sky.centre) << sky.elevation << "/" << sky.azimuth;
    EXPECT_EQ(circles[0].rect.width(), 8);
  }
}


}  // namespace
}  // namespace orvel::test
