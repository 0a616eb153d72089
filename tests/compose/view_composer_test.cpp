#include "compose/view_composer.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>

#include <QPainter>

#include "core/settings.h"
#include "common/recording_device.h"
#include "common/test_data.h"
#include "map/catalogue/map_styles.h"
#include "map/format/map_file.h"
#include "view/drawing_objects.h"
#include "view/map_view.h"

namespace orvel {
namespace {

using test::DrawCall;
using test::RecordingDevice;

class Compose : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { test::ensureGuiApplication(); }
  void SetUp() override {
    static int serial = 0;
    ASSERT_EQ(settings_.openSettingsAt(test::scratchDir("compose-" + std::to_string(serial++)) / "GisOrvel.conf"), 0);
    view_.setScreenSize(240, 320);
    view_.setZoomIndex(10);
    view_.setCentre(2000000, 1000000);
    composer_.setTrackLayer([this](QPainter& p, const MapView&, const MapRect&) {
      ++trackDraws_;
      p.fillRect(QRect(20, 20, 2, 2), Qt::red);
    });
    composer_.setWaypointLayer([this](QPainter&, const MapView&, const MapRect& visible) {
      ++waypointDraws_;
      waypointVisible_ = visible;
    });
    composer_.setRepaintRequest([this] { ++repaints_; });
  }

  // Paints over a recording device with the given fix (nullopt: GPS input shut down).
  std::unique_ptr<RecordingDevice> paint(std::optional<PositionSnapshot> fix) {
    composer_.setPositionSource([fix] { return fix; });
    auto device = std::make_unique<RecordingDevice>(view_.screenWidth(), view_.screenHeight());
    QPainter painter(device.get());
    composer_.paintView(painter, view_);
    painter.end();
    return device;
  }
  // A fix at the view's centre, so the marker sits at the screen's middle.
  PositionSnapshot fixAtCentre(float speed, float course) const {
    PositionSnapshot fix;
    fix.longitude = mapUnitsToDegrees(view_.centre().x);
    fix.latitude = mapUnitsToDegrees(view_.centre().y);
    fix.speedValid = true;
    fix.speedKmh = speed;
    fix.courseValid = true;
    fix.course = course;
    return fix;
  }
  // The marker's shape: the one filled black and outlined white.
  static std::vector<DrawCall> markers(const RecordingDevice& device) {
    std::vector<DrawCall> out;
    for (const DrawCall& call : device.calls()) {
      if ((call.kind == DrawCall::Kind::Polygon || call.kind == DrawCall::Kind::Ellipse) &&
          call.brush.color() == QColor(Qt::black) && call.pen.color() == QColor(Qt::white)) {
        out.push_back(call);
      }
    }
    return out;
  }
  QPoint marker() const {
    const MapPoint p = view_.mapToScreen({degreesToMapUnits(mapUnitsToDegrees(view_.centre().x)),
                                          degreesToMapUnits(mapUnitsToDegrees(view_.centre().y))});
    return {p.x, p.y};
  }

  Settings settings_;
  const DrawingObjects drawing_;
  const MapStyles styles_;
  MapView view_;
  ViewComposer composer_{settings_, drawing_, styles_};
  int trackDraws_ = 0;
  int waypointDraws_ = 0;
  int repaints_ = 0;
  MapRect waypointVisible_;
};

TEST_F(Compose, SlowFixShowsACircleOf13Pixels) {
  const auto device = paint(fixAtCentre(1.9f, 45.0f));
  const auto shapes = markers(*device);
  ASSERT_EQ(shapes.size(), 1u);
  ASSERT_EQ(shapes[0].kind, DrawCall::Kind::Ellipse);
  const QPoint c = marker();
  EXPECT_EQ(c, QPoint(120, 160));
  // Qt outlines a w-wide box over w + 1 pixels: cx - 6 .. cx + 6.
  EXPECT_EQ(shapes[0].transform.mapRect(shapes[0].rect), QRectF(c.x() - 6, c.y() - 6, 12, 12));
}

struct ArrowCase {
  bool rotateMap;
  float course;
  bool courseValid;
  QPolygon corners;  // relative to the marker
};

TEST_F(Compose, MovingFixShowsAnArrow) {
  const ArrowCase cases[] = {
      {false, 0.0f, true, QPolygon({{6, 0}, {-6, 0}, {0, -16}})},
      {false, 90.0f, true, QPolygon({{0, 6}, {0, -6}, {16, 0}})},
      {false, 90.0f, false, QPolygon({{6, 0}, {-6, 0}, {0, -16}})},  // course unknown: up
      {true, 90.0f, true, QPolygon({{6, 0}, {-6, 0}, {0, -16}})},    // map turns instead
      {true, 217.0f, true, QPolygon({{6, 0}, {-6, 0}, {0, -16}})},
  };
  for (const ArrowCase& c : cases) {
    SCOPED_TRACE(testing::Message() << c.rotateMap << " " << c.course << " " << c.courseValid);
    settings_.writeSettingBool("RotateMap", c.rotateMap);
    PositionSnapshot fix = fixAtCentre(2.0f, c.course);
    fix.courseValid = c.courseValid;
    const auto shapes = markers(*paint(fix));
    ASSERT_EQ(shapes.size(), 1u);
    ASSERT_EQ(shapes[0].kind, DrawCall::Kind::Polygon);
    EXPECT_EQ(shapes[0].devicePoints(), QPolygonF(c.corners.translated(marker())));
  }
}

}  // namespace
}  // namespace orvel
