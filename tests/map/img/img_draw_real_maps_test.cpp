// Drawing the real maps as the map page composes them: every zoom step at the map's centre,
// town views with roads, water and labels, a turned view, and the same picture every time.
#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>

#include <QPainter>

#include "map/img/draw_test_util.h"
#include "map/img/rgn_decoder.h"

namespace orvel {
namespace {

using test::DrawCall;
using test::ExpectedDrawing;
using test::LoadedMap;

class DrawRealMap : public ::testing::TestWithParam<const char*> {
 protected:
  static void SetUpTestSuite() { test::ensureGuiApplication(); }
  void SetUp() override {
    loaded_ = test::loadMap(GetParam());
    if (!loaded_) GTEST_SKIP() << GetParam() << " not found";
  }
  ImgMapFile& map() { return loaded_->map; }

  std::unique_ptr<LoadedMap> loaded_;
};

// Each kind of call comes in its own run: polygons, then lines, then icons, then labels.
void expectDrawingOrder(const std::vector<DrawCall>& calls, const std::string& where) {
  auto rank = [](DrawCall::Kind kind) {
    switch (kind) {
      case DrawCall::Kind::Polygon: return 0;
      case DrawCall::Kind::Polyline: return 1;
      case DrawCall::Kind::Image: return 2;
      case DrawCall::Kind::Text: return 3;
      default: return 4;
    }
  };
  int last = 0;
  for (const DrawCall& call : calls) {
    const int r = rank(call.kind);
    ASSERT_LT(r, 4) << where << ": unexpected kind of drawing call";
    ASSERT_GE(r, last) << where << ": drawing order broken";
    last = r;
  }
}

TEST_P(DrawRealMap, EveryZoomStepAtTheMapCentreDrawsWhatTheDataHolds) {
  int drawnSteps = 0;
  for (uint32_t zoom = 0; zoom < kZoomSteps; ++zoom) {
    MapView view = test::openingView(map());
    view.setZoomIndex(zoom);
    const std::string where = std::string(GetParam()) + " zoom " + std::to_string(zoom);

    ExpectedDrawing expected(view, view.visibleRect());
    map().decode(view, view.visibleRect(), expected);
    const auto device = test::record(map(), view);
    EXPECT_EQ(device->callsOf(DrawCall::Kind::Polygon).size(), size_t(expected.polygons)) << where;
    EXPECT_EQ(device->callsOf(DrawCall::Kind::Polyline).size(), size_t(expected.polylines)) << where;
    EXPECT_EQ(device->callsOf(DrawCall::Kind::Image).size(), size_t(expected.icons)) << where;
    expectDrawingOrder(device->calls(), where);
    for (const DrawCall& polygon : device->callsOf(DrawCall::Kind::Polygon)) {
      EXPECT_EQ(polygon.pen.style(), Qt::NoPen) << where;
      EXPECT_GE(polygon.points.size(), 3) << where;
    }

    const QImage first = test::compose(map(), view);
    EXPECT_EQ(first, test::compose(map(), view)) << where << ": not the same picture twice";
    // Something drawn with a corner on the screen leaves ink there.
    const QRectF screen(0, 0, view.screenWidth(), view.screenHeight());
    bool onScreen = false;
    for (const DrawCall& call : device->calls()) {
      if (call.kind == DrawCall::Kind::Image) onScreen |= screen.intersects(call.rect);
      if (call.kind == DrawCall::Kind::Polygon || call.kind == DrawCall::Kind::Polyline) {
        for (const QPointF& p : call.points) onScreen |= screen.contains(p);
      }
    }
    if (onScreen) {
      EXPECT_GT(test::inkPixels(first), 0) << where;
      ++drawnSteps;
    }
  }
  // Opening views lie over the land (Liechtenstein) or the sea off Monaco.
  EXPECT_GE(drawnSteps, std::string(GetParam()).starts_with("liechtenstein") ? 20 : 10);
}

INSTANTIATE_TEST_SUITE_P(Maps, DrawRealMap, ::testing::ValuesIn(test::kSingleTileMaps));

class TownView : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { test::ensureGuiApplication(); }
};

TEST_F(TownView, ScrambledAndPlainMapsDrawTheSamePicture) {
  const auto scrambled = test::loadMap("monaco_default_6bit_xor5a.img");
  const auto plain = test::loadMap("monaco_default_6bit.img");
  if (!scrambled || !plain) GTEST_SKIP();
  for (uint32_t zoom : {5u, 8u, 11u}) {
    const MapView view = test::viewAt(43.735, 7.42, zoom);
    EXPECT_EQ(test::compose(scrambled->map, view), test::compose(plain->map, view)) << zoom;
  }
}

bool isRoadPen(const QPen& pen) {
  const QColor c = pen.color();
  return pen.style() == Qt::SolidLine && c.green() == 0 && c.blue() == 0 && c.red() >= 230;
}

bool isWaterBrush(const QBrush& brush) { return brush.color() == QColor(0, 128, 255); }

struct TownCase {
  const char* map;
  double lat;
  double lon;
  uint32_t zoom;
  const char* street;  // a street label drawn in this view
};

TEST_F(TownView, RoadsWaterAndLabelsAreDrawn) {
  const TownCase cases[] = {
      {"liechtenstein_route_cp1252_bs512.img", 47.14, 9.52, 7, "Landstrasse"},
      {"monaco_cp1252.img", 43.735, 7.42, 8, "Avenue Princesse Grace"},
  };
  for (const TownCase& c : cases) {
    const auto loaded = test::loadMap(c.map);
    if (!loaded) continue;
    for (int rotation : {0, 30}) {
      const MapView view = test::viewAt(c.lat, c.lon, c.zoom, 480, 480, rotation);
      const std::string where = std::string(c.map) + " rotation " + std::to_string(rotation);
      const auto device = test::record(loaded->map, view);

      int roads = 0;
      for (const DrawCall& line : device->callsOf(DrawCall::Kind::Polyline)) roads += isRoadPen(line.pen);
      EXPECT_GT(roads, 20) << where;

      // Water where the data has water areas on screen.
      struct WaterCount : ObjectConsumer {
        const MapRect* visible;
        int water = 0;
        void onObject(const MapObject& o) override {
          if (o.kind == ObjectKind::Polygon && o.type >= 0x3C && o.type <= 0x49 && o.points.size() >= 3) {
            for (const MapPoint& p : o.points) {
              if (p.x >= visible->west && p.x <= visible->east && p.y >= visible->south && p.y <= visible->north) {
                ++water;
                return;
              }
            }
          }
        }
      } waterData;
      const MapRect visible = view.visibleRect();
      waterData.visible = &visible;
      loaded->map.decode(view, visible, waterData);
      int water = 0;
      for (const DrawCall& area : device->callsOf(DrawCall::Kind::Polygon)) water += isWaterBrush(area.brush);
      EXPECT_GE(water, waterData.water) << where;
      if (std::string(c.map).starts_with("liechtenstein")) {
        EXPECT_GT(water, 0) << where << ": the Rhine";
      }

      const std::vector<QString> texts = device->texts();
      EXPECT_GT(texts.size(), 5u) << where;
      EXPECT_NE(std::find(texts.begin(), texts.end(), QString::fromUtf8(c.street)), texts.end())
          << where << ": " << c.street;

      const QImage picture = test::compose(loaded->map, view);
      EXPECT_GT(test::inkPixels(picture), picture.width() * picture.height() / 10) << where;
    }
  }
}

TEST_F(TownView, TurningTheViewTurnsThePicture) {
  const auto loaded = test::loadMap("liechtenstein_route_cp1252_bs512.img");
  if (!loaded) GTEST_SKIP();
  const MapView upright = test::viewAt(47.14, 9.52, 8);
  const MapView turned = test::viewAt(47.14, 9.52, 8, 240, 320, 90);
  const QImage a = test::compose(loaded->map, upright);
  const QImage b = test::compose(loaded->map, turned);
  EXPECT_NE(a, b);
  EXPECT_GT(test::inkPixels(b), 240 * 320 / 10);
  EXPECT_EQ(b, test::compose(loaded->map, turned));

  // The centre stays put and a point east of it moves to the top when turned by 90 degrees.
  const MapPoint east{upright.centre().x + 200, upright.centre().y};
  const MapPoint onUpright = upright.mapToScreen(east);
  const MapPoint onTurned = turned.mapToScreen(east);
  EXPECT_GT(onUpright.x, 120);
  EXPECT_LT(onTurned.y, 160);
}

}  // namespace
}  // namespace orvel
