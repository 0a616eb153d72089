// The rules of drawing one object, with objects made up on the screen of a known view: which
// objects are drawn, with what, where icons and labels go, and that labels come last.
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include <QFontMetrics>
#include <QPainter>

#include "common/recording_device.h"
#include "map/catalogue/catalogue.h"
#include "common/draw_kit.h"
#include "map/catalogue/map_styles.h"
#include "map/draw/map_painter.h"
#include "map/img/rgn_decoder.h"
#include "view/map_view.h"

namespace orvel {
namespace {

using test::DrawCall;
using test::RecordingDevice;

class LabelledMap final : public MapFile {
 public:
  bool probe(Bytes) override { return true; }
  bool load(Bytes) override { return true; }
  void decode(const MapView&, const MapRect&, ObjectConsumer&) override {}
  bool isDrawn(const MapObject& object) const override { return isDrawnObject(object); }
  int getLabel(uint32_t ref, char16_t* out) override {
    const auto it = texts.find(ref);
    const std::u16string text = it != texts.end() ? it->second : std::u16string();
    std::copy(text.begin(), text.end(), out);
    out[text.size()] = 0;
    return static_cast<int>(text.size());
  }
  void describe(MapFacts&) const override {}

  std::map<uint32_t, std::u16string> texts;
};

struct Shape {
  ObjectKind kind;
  uint32_t type;
  std::vector<QPoint> screen;  // where it should land on screen
  uint32_t label = 0;
};

class DrawRules : public ::testing::Test {
 protected:
  void SetUp() override {
    view_.setScreenSize(240, 320);
    view_.setZoomIndex(8);  // 5 m a pixel: every pixel has map points projecting onto it
    view_.setCentre(400000, 2000000);
    map_.texts = {{1, u"Lake"}, {2, u"A very long name of a small pond"}, {3, u"Main Street"},
                  {4, u"Cafe"}, {5, u"Bakery"}};
  }

  // Map points that project exactly onto the wanted screen points.
  std::vector<MapPoint> toMap(const std::vector<QPoint>& screen) const {
    std::vector<MapPoint> out;
    for (const QPoint& s : screen) out.push_back(toMap(s));
    return out;
  }
  MapPoint toMap(const QPoint& s) const {
    // screenToMap truncates; look around for the point that projects back onto s.
    const MapPoint guess = view_.screenToMap(s.x(), s.y());
    for (int dx = -4; dx <= 4; ++dx) {
      for (int dy = -4; dy <= 4; ++dy) {
        const MapPoint m{guess.x + dx, guess.y + dy};
        if (view_.mapToScreen(m) == MapPoint{s.x(), s.y()}) return m;
      }
    }
    ADD_FAILURE() << "no map point for " << s.x() << "," << s.y();
    return guess;
  }

  // What painting `shapes` draws, or only its texts.
  std::vector<DrawCall> record(const std::vector<Shape>& shapes, bool textsOnly = false) {
    RecordingDevice device(240, 320);
    {
      QPainter painter(&device);
      MapPainter mapPainter(painter, view_, view_.visibleRect(), map_, drawing_);
      mapPainter.begin();
      for (const Shape& s : shapes) mapPainter.onObject(MapObject{s.kind, s.type, toMap(s.screen), s.label});
      mapPainter.finish();
    }
    return textsOnly ? device.callsOf(DrawCall::Kind::Text) : device.calls();
  }

  static std::vector<QPoint> square(int x, int y, int side) {
    return {{x, y}, {x + side, y}, {x + side, y + side}, {x, y + side}};
  }

  MapView view_;
  LabelledMap map_;
  const test::DrawKit kit_;
  MapDrawContext drawing_{kit_.styles};
};

TEST_F(DrawRules, LinesUseTheMainPenThenTheSecondPen) {
  const auto rail = record({{ObjectKind::Line, 0x14, {{10, 10}, {100, 100}, {200, 100}}}});
  ASSERT_EQ(rail.size(), 2u);
  EXPECT_EQ(rail[0].kind, DrawCall::Kind::Polyline);
  EXPECT_EQ(rail[0].pen.color(), QColor(0, 0, 0));
  EXPECT_EQ(rail[0].pen.width(), 3);
  EXPECT_EQ(rail[1].pen.color(), QColor(255, 255, 255));
  EXPECT_EQ(rail[1].pen.style(), Qt::CustomDashLine);
  EXPECT_EQ(rail[1].points, rail[0].points);

  const auto unknown = record({{ObjectKind::Line, 0x30, {{10, 10}, {100, 100}}}});
  ASSERT_EQ(unknown.size(), 1u);
  EXPECT_EQ(unknown[0].pen.color(), QColor(255, 0, 0));
  EXPECT_NE(unknown[0].pen.style(), Qt::SolidLine);
}

TEST_F(DrawRules, AreaLabelsNeedRoomForTheirText) {
  const auto texts = record({
      {ObjectKind::Polygon, 0x3C, square(20, 20, 60), 1},   // "Lake": fits
      {ObjectKind::Polygon, 0x3C, square(20, 200, 9), 1},   // under 10 pixels
      {ObjectKind::Polygon, 0x3C, square(120, 200, 40), 2},  // text wider than the lake
  }, true);
  ASSERT_EQ(texts.size(), 1u);
  EXPECT_EQ(texts[0].text, "Lake");
  const LabelStyle& lake = kit_.styles.polygonLabel(findPolygonType(0x3C));
  EXPECT_EQ(texts[0].pen.color(), lake.colour);
  EXPECT_EQ(texts[0].pen.color(), QColor(0, 0, 128));
  // Centred on the vertex mean (50, 50).
  const QFontMetrics metrics(lake.font);
  EXPECT_EQ(texts[0].deviceOrigin(), QPointF((50 + 51 - metrics.horizontalAdvance("Lake")) / 2, 50 + metrics.ascent()));
}

}  // namespace
}  // namespace orvel
