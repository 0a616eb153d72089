// Drawing the real maps as the map page composes them: at every zoom step at the map's
// centre, what is drawn is what the decoded objects say should be, and the same picture
// comes out every time; the scrambled map draws as its original.
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
    ASSERT_TRUE(loaded_) << GetParam();
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
  ASSERT_TRUE(scrambled && plain);
  for (uint32_t zoom : {5u, 8u, 11u}) {
    const MapView view = test::viewAt(43.735, 7.42, zoom);
    EXPECT_EQ(test::compose(scrambled->map, view), test::compose(plain->map, view)) << zoom;
  }
}

}  // namespace
}  // namespace orvel
