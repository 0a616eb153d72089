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

// A map of one grey area in the screen's top-left corner that remembers how it was asked to
// decode and how the painter drawing into the picture was set up.
class FakeMap : public MapFile {
 public:
  FakeMap(MapRect bounds, const QImage& drawnInto) : picture(drawnInto) { bounds_ = bounds; }
  bool probe(Bytes) override { return true; }
  bool load(Bytes) override { return true; }
  void decode(const MapView& view, const MapRect& visible, ObjectConsumer& consumer) override {
    ++draws;
    const QPainter& painter = *picture.paintEngine()->painter();
    brushOrigin = painter.brushOrigin();
    antialiased = painter.testRenderHint(QPainter::Antialiasing);
    lastVisible = visible;
    const MapPoint area[] = {view.screenToMap(0, 0), view.screenToMap(20, 0), view.screenToMap(0, 20)};
    consumer.onObject(MapObject{ObjectKind::Polygon, 0x03, area, 0});  // City: solid (192, 192, 192)
  }
  bool isDrawn(const MapObject&) const override { return true; }
  int getLabel(uint32_t, char16_t* out) override {
    out[0] = 0;
    return 0;
  }
  void describe(MapFacts&) const override {}

  int draws = 0;
  QPointF brushOrigin;
  bool antialiased = true;
  MapRect lastVisible;
  const QImage& picture;
};

class Compose : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { test::ensureGuiApplication(); }
  void SetUp() override {
    static int serial = 0;
    ASSERT_EQ(settings_.openSettingsAt(test::scratchDir("compose-" + std::to_string(serial++)) / "GisOrvel.conf"), 0);
    view_.setScreenSize(240, 320);
    view_.setZoomIndex(10);
    view_.setCentre(2000000, 1000000);
    composer_.setGpxLayer([this](QPainter& p, const MapView&, const MapRect&) {
      ++gpxDraws_;
      p.fillRect(QRect(8, 8, 14, 14), Qt::blue);
    });
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
  int gpxDraws_ = 0;
  int trackDraws_ = 0;
  int waypointDraws_ = 0;
  int repaints_ = 0;
  MapRect waypointVisible_;
};

TEST_F(Compose, PictureIsRecreatedOnlyWhenTheSizeChanges) {
  composer_.composeView(nullptr, view_);
  ASSERT_EQ(composer_.picture().size(), QSize(240, 320));
  EXPECT_EQ(composer_.picture().format(), QImage::Format_RGB32);
  const uchar* first = composer_.picture().constBits();

  composer_.composeView(nullptr, view_);
  EXPECT_EQ(composer_.picture().constBits(), first);

  view_.setScreenSize(320, 240);
  composer_.composeView(nullptr, view_);
  EXPECT_EQ(composer_.picture().size(), QSize(320, 240));
  EXPECT_EQ(repaints_, 3);
}

TEST_F(Compose, WithoutMapThePictureIsWhiteUnderTheLayers) {
  composer_.setGpxLayer({});
  composer_.setTrackLayer({});
  composer_.composeView(nullptr, view_);
  const QImage& picture = composer_.picture();
  for (int y = 0; y < picture.height(); ++y) {
    for (int x = 0; x < picture.width(); ++x) {
      ASSERT_EQ(picture.pixel(x, y), qRgb(255, 255, 255)) << x << "," << y;
    }
  }
  EXPECT_EQ(waypointDraws_, 1);
  EXPECT_EQ(waypointVisible_, view_.visibleRect());
}

TEST_F(Compose, MapThenGpxThenTrackThenWaypoints) {
  const MapRect bounds{1990000, 990000, 2010000, 1030000};
  FakeMap map(bounds, composer_.picture());
  composer_.composeView(&map, view_);
  EXPECT_EQ(map.draws, 1);
  EXPECT_FALSE(map.antialiased);
  EXPECT_EQ(map.lastVisible, view_.visibleRect());
  const MapPoint middle = view_.mapToScreen({2000000, 1010000});
  EXPECT_EQ(map.brushOrigin, QPointF(middle.x, middle.y));
  EXPECT_EQ(composer_.picture().pixel(5, 5), qRgb(192, 192, 192));
  EXPECT_EQ(composer_.picture().pixel(20, 20), qRgb(255, 0, 0));  // track over the GPX file
  EXPECT_EQ(composer_.picture().pixel(9, 9), qRgb(0, 0, 255));  // the GPX file over the map
  EXPECT_EQ(composer_.picture().pixel(30, 30), qRgb(255, 255, 255));
  EXPECT_EQ(gpxDraws_, 1);
  EXPECT_EQ(trackDraws_, 1);
  EXPECT_EQ(waypointDraws_, 1);
}

TEST_F(Compose, SettingsTurnTheLayersOff) {
  settings_.writeSettingBool("ShowTrack", false);
  composer_.composeView(nullptr, view_);
  EXPECT_EQ(gpxDraws_, 1);  // a GPX file opened is always shown
  EXPECT_EQ(trackDraws_, 0);
  EXPECT_EQ(waypointDraws_, 1);
  settings_.writeSettingBool("ShowTrack", true);
  settings_.writeSettingBool("ShowWaypoints", false);
  composer_.composeView(nullptr, view_);
  EXPECT_EQ(trackDraws_, 1);
  EXPECT_EQ(waypointDraws_, 1);
}

TEST_F(Compose, PaintCopiesThePictureThenDrawsTheFastLayers) {
  composer_.composeView(nullptr, view_);
  const auto recorded = paint(std::nullopt);
  const RecordingDevice& device = *recorded;
  const auto& calls = device.calls();
  ASSERT_FALSE(calls.empty());
  ASSERT_EQ(calls.front().kind, DrawCall::Kind::Image);
  EXPECT_EQ(calls.front().rect, QRectF(0, 0, 240, 320));
  EXPECT_EQ(calls.front().sourceRect, QRectF(0, 0, 240, 320));
  // Scale bar at (10, height - 15); no marker while GPS input is shut down.
  const auto lines = device.callsOf(DrawCall::Kind::Polyline);
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[0].devicePoints().front(), QPointF(10, 301));
  EXPECT_TRUE(markers(device).empty());
}

TEST_F(Compose, PaintBeforeTheFirstCompositionDrawsOnlyTheFastLayers) {
  const auto recorded = paint(std::nullopt);
  const RecordingDevice& device = *recorded;
  EXPECT_TRUE(device.callsOf(DrawCall::Kind::Image).empty());
  EXPECT_EQ(device.callsOf(DrawCall::Kind::Polyline).size(), 2u);
  EXPECT_EQ(device.callsOf(DrawCall::Kind::Polygon).size(), 2u);  // north arrow
}

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

TEST_F(Compose, InvalidSpeedShowsACircle) {
  PositionSnapshot fix = fixAtCentre(50.0f, 0.0f);
  fix.speedValid = false;
  const auto shapes = markers(*paint(fix));
  ASSERT_EQ(shapes.size(), 1u);
  EXPECT_EQ(shapes[0].kind, DrawCall::Kind::Ellipse);
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

TEST_F(Compose, NorthArrowTurnsAgainstTheMap) {
  const int32_t rotations[] = {0, 90, 180};
  const QPointF blueTips[] = {{220, 5}, {205, 20}, {220, 35}};
  for (size_t i = 0; i < 3; ++i) {
    SCOPED_TRACE(rotations[i]);
    view_.setRotation(rotations[i]);
    const auto polygons = paint(std::nullopt)->callsOf(DrawCall::Kind::Polygon);
    ASSERT_EQ(polygons.size(), 2u);
    EXPECT_EQ(polygons[0].brush.color(), QColor(0, 0, 255));
    EXPECT_EQ(polygons[0].devicePoints()[2], blueTips[i]);
  }
}

}  // namespace
}  // namespace orvel
