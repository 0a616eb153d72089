// The layers composed over the map: an opened GPX file under the recorded track and the
// waypoints, and always shown, whatever "ShowTrack" and "ShowWaypoints" say of the others.
#include <QPainter>
#include <gtest/gtest.h>

#include "common/draw_kit.h"
#include "common/test_data.h"
#include "compose/view_composer.h"
#include "view/map_view.h"

namespace orvel::test {
namespace {

TEST(Compose, GpxFileUnderTrackUnderWaypointsAndAlwaysShown) {
  const DrawKit kit;
  Settings settings;
  ASSERT_EQ(settings.openSettingsAt(scratchDir("compose") / "GisOrvel.conf"), 0);
  ViewComposer composer(settings, kit.drawing, kit.styles);
  MapView view;
  view.setScreenSize(240, 320);
  // Three overlapping squares: (5, 5) is the GPX file's alone, (15, 15) the track's over it,
  // (25, 25) the waypoints' over both.
  auto square = [](int at, Qt::GlobalColor colour) {
    return [at, colour](QPainter& p, const MapView&, const MapRect&) { p.fillRect(QRect(at, at, 30, 30), colour); };
  };
  composer.setGpxLayer(square(0, Qt::blue));
  composer.setTrackLayer(square(10, Qt::red));
  composer.setWaypointLayer(square(20, Qt::green));
  const QRgb blue = qRgb(0, 0, 255), red = qRgb(255, 0, 0), green = qRgb(0, 255, 0);
  const struct {
    bool showTrack, showWaypoints;
    QRgb at5, at15, at25;
  } cases[] = {
      {true, true, blue, red, green},
      {false, true, blue, blue, green},
      {true, false, blue, red, red},
      {false, false, blue, blue, blue},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::to_string(c.showTrack) + std::to_string(c.showWaypoints));
    settings.writeSettingBool("ShowTrack", c.showTrack);
    settings.writeSettingBool("ShowWaypoints", c.showWaypoints);
    composer.composeView(nullptr, view);
    EXPECT_EQ(composer.picture().pixel(5, 5), c.at5);
    EXPECT_EQ(composer.picture().pixel(15, 15), c.at15);
    EXPECT_EQ(composer.picture().pixel(25, 25), c.at25);
    EXPECT_EQ(composer.picture().pixel(100, 100), qRgb(255, 255, 255));  // no map: white
  }
}

}  // namespace
}  // namespace orvel::test
