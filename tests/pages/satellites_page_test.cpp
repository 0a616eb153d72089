// The satellites page drawn on a host of the original screen's size, its calls recorded.
#include <gtest/gtest.h>

#include <QPainter>

#include <algorithm>
#include <string>

#include "common/draw_kit.h"
#include "common/recording_device.h"
#include "common/test_data.h"
#include "core/message.h"
#include "core/settings.h"
#include "gps/gps_state.h"
#include "pages/info_pages.h"
#include "pages/page_context.h"
#include "pages/page_host.h"
#include "pages/satellites_page.h"

namespace orvel::test {
namespace {

class TestHost : public PageHost {
 public:
  void invalidateMainWindow() override {}
  int clientWidth() const override { return 240; }
  int clientHeight() const override { return 320; }
  void setPageTimer(int, int) override {}
  void killPageTimer(int) override {}
  void capturePointer(bool) override {}
  void showPopupMenu(int, int, int) override {}
  int runDialog(QDialog&) override { return 0; }
  void openWaypointDialog(float, float, double, float) override {}
};

class SatellitesPageTest : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(settings_.openSettingsAt(scratchDir("pages") / "Orvel" / "GisOrvel.conf"), 0); }

  void showSatellites(const std::vector<SatelliteInfo>& satellites) {
    gps.resetSatellites(static_cast<uint32_t>(satellites.size()));
    for (const SatelliteInfo& satellite : satellites) gps.addSatellite(satellite);
  }

  // The satellites' circles as the page draws them: every ellipse after the sky's three, in order.
  std::vector<DrawCall> satelliteCircles() {
    RecordingDevice device(host_.clientWidth(), host_.clientHeight());
    {
      QPainter painter(&device);
      page_.paint(painter);
    }
    std::vector<DrawCall> ellipses;
    for (const DrawCall& call : device.calls()) {
      if (call.kind == DrawCall::Kind::Ellipse) ellipses.push_back(call);
    }
    EXPECT_GE(ellipses.size(), 3u);
    ellipses.erase(ellipses.begin(), ellipses.begin() + std::min<size_t>(3, ellipses.size()));
    return ellipses;
  }

  Settings settings_;
  Messages messages_;
  TestHost host_;
  GpsState gps;
  const DrawKit kit_;
  PageContext context_{host_, settings_, messages_, kit_.drawing, kit_.styles, gps};
  SatellitesPage page_{context_};
};

TEST_F(SatellitesPageTest, SatellitesArePlacedByElevationAndAzimuth) {
  const struct { uint32_t elevation, azimuth; QPointF centre; } cases[] = {
      {90, 0, {120, 80}},    // zenith: the centre
      {90, 200, {120, 80}},
      {0, 90, {180, 80}},    // horizon east: (cx + r, cy)
      {0, 0, {120, 20}},     // horizon north
      {0, 180, {120, 139}},  // horizon south: rounding adds 0.5 and truncates
      {0, 270, {61, 80}},
      {45, 90, {150, 80}},   // half way out
  };
  for (const auto& sky : cases) {
    showSatellites({{7, sky.elevation, sky.azimuth, 40}});
    const std::vector<DrawCall> circles = satelliteCircles();
    ASSERT_EQ(circles.size(), 1u);
    EXPECT_EQ(circles[0].rect.center(), sky.centre) << sky.elevation << "/" << sky.azimuth;
    EXPECT_EQ(circles[0].rect.width(), 8);
  }
}

// The sky, the signal band and the texts stay on screen; a low landscape screen puts the band
// and the texts beside the sky rather than below it.
TEST(SatellitesLayout, SkyBandAndTextsStayOnScreen) {
  const struct {
    QSize size;
    bool sideBySide;
  } cases[] = {{{800, 480}, false}, {{640, 480}, false}, {{480, 640}, false}, {{1024, 600}, false},
               {{480, 225}, true}};  // 480 x 272 less the menu and status bars
  for (const auto& c : cases) {
    const int width = c.size.width(), height = c.size.height();
    SCOPED_TRACE(std::to_string(width) + "x" + std::to_string(height));
    const SatellitesLayout layout = satellitesLayout(width, height);
    EXPECT_GE(layout.cy - layout.radius, 16);           // the "N" above the sky
    EXPECT_LE(layout.cy + layout.radius + 12, height);  // the "S" below it
    EXPECT_GE(layout.base - 50, 0);                     // the band's top row
    EXPECT_LE(layout.base + 80, height);                // the status line
    EXPECT_LE(layout.bandRight, width);
    EXPECT_GT(layout.radius, 60);
    EXPECT_EQ(layout.bandLeft > layout.cx + layout.radius, c.sideBySide);
    EXPECT_TRUE(c.sideBySide || layout.base - 50 > layout.cy + layout.radius) << "band below the sky";
    // Twelve bars fit, each number under its bar clear of the next one's.
    EXPECT_LE(layout.firstBarX + 23 * layout.barWidth, layout.bandRight);
    EXPECT_GE(2 * layout.barWidth, 18);
  }
}

}  // namespace
}  // namespace orvel::test
