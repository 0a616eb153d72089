// Damaged region and label data: drawing draws what can still be drawn.
#include <gtest/gtest.h>

#include <random>
#include <string>

#include <QPainter>

#include "map/img/draw_test_util.h"

namespace orvel {
namespace {

using test::DrawCall;

struct Area {
  size_t start = 0;
  size_t size = 0;
};

Area areaOf(const ImgMapFile& map, Bytes part) {
  return {static_cast<size_t>(part.data() - map.fileBytes().data()), part.size()};
}

class Damage : public ::testing::TestWithParam<const char*> {
 protected:
  static void SetUpTestSuite() { test::ensureGuiApplication(); }
  void SetUp() override {
    original_ = test::readFile(test::dataFile(std::string("maps/") + GetParam()));
    const auto loaded = test::loadBytes(original_);
    ASSERT_TRUE(loaded);
    rgn_ = areaOf(loaded->map, loaded->map.rgnData());
    lbl_ = areaOf(loaded->map, loaded->map.labelData());
  }

  std::vector<unsigned char> original_;
  Area rgn_;
  Area lbl_;
};

TEST_P(Damage, GarbledLabelsLeaveTheGeometry) {
  std::vector<unsigned char> bytes = original_;
  std::mt19937 random(11);
  for (size_t i = 0; i < lbl_.size; ++i) bytes[lbl_.start + i] = static_cast<unsigned char>(random());
  const auto garbled = test::loadBytes(std::move(bytes));
  const auto intact = test::loadBytes(original_);
  ASSERT_TRUE(garbled && intact);
  for (uint32_t zoom : {3u, 8u, 12u}) {
    const MapView view = test::viewAt(GetParam()[0] == 'l' ? 47.14 : 43.735, GetParam()[0] == 'l' ? 9.52 : 7.42, zoom);
    const auto a = test::record(garbled->map, view);
    const auto b = test::record(intact->map, view);
    EXPECT_EQ(a->callsOf(DrawCall::Kind::Polygon).size(), b->callsOf(DrawCall::Kind::Polygon).size()) << zoom;
    EXPECT_EQ(a->callsOf(DrawCall::Kind::Polyline).size(), b->callsOf(DrawCall::Kind::Polyline).size()) << zoom;
    EXPECT_EQ(a->callsOf(DrawCall::Kind::Image).size(), b->callsOf(DrawCall::Kind::Image).size()) << zoom;
  }
}

TEST_P(Damage, ARuinedSectionStopsOnlyItself) {
  // Fill the polyline section of one subdivision of the finest level with 0xFF (a record
  // claiming a bit stream longer than the section): that section yields nothing, every other
  // one is drawn as before.
  const auto intact = test::loadBytes(original_);
  ASSERT_TRUE(intact);
  const auto finest = static_cast<uint8_t>(intact->map.levels().size() - 1);
  std::vector<unsigned char> bytes = original_;
  const ImgSubdivision* ruinedSub = nullptr;
  for (const ImgSubdivision& sub : intact->map.subdivisions()) {
    if (sub.level != finest || sub.sectionStart[kSectionPolylines] == kNoSection) continue;
    for (uint32_t i = 0; i < sub.sectionLength[kSectionPolylines]; ++i) {
      bytes[rgn_.start + sub.sectionStart[kSectionPolylines] + i] = 0xFF;
    }
    ruinedSub = &sub;
    break;
  }
  ASSERT_NE(ruinedSub, nullptr);
  const auto ruined = test::loadBytes(std::move(bytes));
  ASSERT_TRUE(ruined);

  MapView view;
  view.setScreenSize(800, 800);
  view.setZoomIndex(6);  // 2 m a pixel, drawn from the 24-bit level
  view.setCentre(signExtend24(ruinedSub->centreX), signExtend24(ruinedSub->centreY));
  ASSERT_EQ(view.zoomLevel(), 24);
  const auto a = test::record(ruined->map, view);
  const auto b = test::record(intact->map, view);
  EXPECT_EQ(a->callsOf(DrawCall::Kind::Polygon).size(), b->callsOf(DrawCall::Kind::Polygon).size());
  EXPECT_EQ(a->callsOf(DrawCall::Kind::Image).size(), b->callsOf(DrawCall::Kind::Image).size());
  EXPECT_LT(a->callsOf(DrawCall::Kind::Polyline).size(), b->callsOf(DrawCall::Kind::Polyline).size());
}

INSTANTIATE_TEST_SUITE_P(Maps, Damage,
                         ::testing::Values("monaco_cp1252.img", "monaco_default_6bit.img",
                                           "liechtenstein_route_cp1252_bs512.img"));

}  // namespace
}  // namespace orvel
