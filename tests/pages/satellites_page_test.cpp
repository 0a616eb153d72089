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

  // Rectangles drawn in the bar colour.
  static std::vector<QRectF> bars(const std::vector<DrawCall>& calls) {
    std::vector<QRectF> out;
    for (const DrawCall& call : calls) {
      if (call.kind == DrawCall::Kind::Rects && call.brush.color() == QColor(255, 0, 0)) out.push_back(call.rect);
    }
    return out;
  }

  static bool hasText(const std::vector<DrawCall>& calls, const QString& text, QPointF* at = nullptr) {
    for (const DrawnText& drawn : drawnTexts(calls)) {
      if (drawn.text == text) {
        if (at != nullptr) *at = drawn.origin;
        return true;
      }
    }
    return false;
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

TEST_F(SatellitesPageTest, SignalShadesTheSatelliteFromWhiteToBlack) {
  const std::pair<uint32_t, int> cases[] = {{0, 255}, {3, 255}, {4, 247}, {50, 124}, {90, 17}, {96, 0}, {99, 0}, {150, 0}};
  for (const auto& [snr, grey] : cases) {
    showSatellites({{12, 40, 100, snr}});
    const std::vector<DrawCall> circles = satelliteCircles(record(satellitesPage()));
    ASSERT_EQ(circles.size(), 1u);
    EXPECT_EQ(circles[0].brush.color(), QColor(grey, grey, grey)) << "snr " << snr;
  }
}

TEST_F(SatellitesPageTest, BarsRiseHalfTheSignalFromTheBandBottom) {
  showSatellites({{3, 10, 10, 60}, {14, 20, 20, 99}, {22, 30, 30, 1}, {31, 40, 40, 0}, {5, 5, 5, 20}});
  const std::vector<DrawCall> calls = record(satellitesPage());
  const std::vector<QRectF> drawn = bars(calls);
  // SNR 0 and 1 give no height, so no bar; the others stand on y = 200.
  ASSERT_EQ(drawn.size(), 3u);
  EXPECT_EQ(drawn[0].left(), 8);
  EXPECT_EQ(drawn[0].top(), 200 - 30);
  EXPECT_EQ(drawn[1].left(), 24);
  EXPECT_EQ(drawn[1].top(), 200 - 49);
  EXPECT_EQ(drawn[2].left(), 72);
  EXPECT_EQ(drawn[2].top(), 200 - 10);
  for (const QRectF& bar : drawn) {
    EXPECT_EQ(bar.width() + 1, 8);              // b = 240 / 28 pixels wide
    EXPECT_EQ(bar.top() + bar.height() + 1, 200);  // bottom edge left out, as GDI does
  }
  QPointF at;
  ASSERT_TRUE(hasText(calls, QStringLiteral("03"), &at));
  ASSERT_TRUE(hasText(calls, QStringLiteral("31")));
  int numbersUnderBars = 0;
  for (const DrawnText& drawn : drawnTexts(calls)) {
    if (drawn.text == QStringLiteral("14") && drawn.origin.x() == 24) ++numbersUnderBars;
  }
  EXPECT_EQ(numbersUnderBars, 1);
}


}  // namespace
}  // namespace orvel::test
