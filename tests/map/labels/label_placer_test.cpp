#include "map/labels/label_placer.h"
#include "view/text_measure.h"

#include <gtest/gtest.h>


#include <QFontMetrics>

#include "common/recording_device.h"


namespace orvel {
namespace {

class Labels : public ::testing::Test {
 protected:
  void SetUp() override {
    font_ = QFont("Liberation Sans");
    font_.setPixelSize(12);
  }
  QSize extent(const char16_t* text) const {
    const QFontMetrics m(font_);
    return {m.horizontalAdvance(QString::fromUtf16(text)), m.height()};
  }
  bool point(const char16_t* text, uint32_t ref, int x, int y) {
    return placer_.addPointLabel(text, ref, x, y, font_, Qt::black);
  }

  QFont font_;
  TextMeasure measure_;
  LabelPlacer placer_{measure_};
};

TEST_F(Labels, OverlappingPointLabelsKeepTheFirst) {
  placer_.resetLabels(240, 320);
  EXPECT_EQ(placer_.columns(), 30);
  EXPECT_EQ(placer_.rows(), 80);
  EXPECT_TRUE(point(u"Monaco", 1, 20, 20));
  EXPECT_FALSE(point(u"Fontvieille", 2, 30, 24));
  EXPECT_TRUE(point(u"Menton", 3, 20, 100));
  ASSERT_EQ(placer_.pending().size(), 2u);
  EXPECT_EQ(placer_.pending()[0].labelRef, 1u);
  EXPECT_EQ(placer_.pending()[1].labelRef, 3u);
  EXPECT_EQ(placer_.pending()[1].x(), 20);
  EXPECT_EQ(placer_.pending()[1].y(), 100);

  // Cells from (x, y) to (x + w, y + h) inclusive hold the label's index.
  const QSize size = extent(u"Monaco");
  EXPECT_EQ(placer_.cell(20 / 8, 20 / 4), 0);
  EXPECT_EQ(placer_.cell((20 + size.width()) / 8, (20 + size.height()) / 4), 0);
  EXPECT_EQ(placer_.cell((20 + size.width()) / 8 + 1, 20 / 4), LabelPlacer::kFreeCell);
  EXPECT_EQ(placer_.cell(20 / 8, (20 + size.height()) / 4 + 1), LabelPlacer::kFreeCell);
  EXPECT_EQ(placer_.cell(20 / 8 - 1, 20 / 4), LabelPlacer::kFreeCell);

  // A new drawing starts with a free grid.
  placer_.resetLabels(240, 320);
  EXPECT_TRUE(placer_.pending().empty());
  EXPECT_TRUE(point(u"Fontvieille", 2, 30, 24));
}

// Labels reaching past the grid take only the cells inside it; wholly outside, none.
TEST_F(Labels, GridIsClippedAtItsEdges) {
  placer_.resetLabels(80, 40);  // 10 x 10 cells
  ASSERT_GT(extent(u"Beausoleil").width(), 30);
  EXPECT_TRUE(point(u"Beausoleil", 1, 70, 34));
  EXPECT_EQ(placer_.cell(9, 9), 0);
  EXPECT_EQ(placer_.cell(7, 9), LabelPlacer::kFreeCell);
  EXPECT_FALSE(point(u"Cap", 2, 76, 38));  // overlaps it inside the grid: dropped
  EXPECT_TRUE(point(u"Roquebrune", 3, 90, 10));  // wholly beyond the edges: kept
  EXPECT_TRUE(point(u"Roquebrune", 4, 10, 50));
  const int w = extent(u"Eze").width();
  EXPECT_TRUE(point(u"Eze", 5, -3, -3));  // 3 pixels left of and above: reaches cell (0, 0)
  EXPECT_EQ(placer_.cell(0, 0), 3);  // the fourth label kept
  EXPECT_TRUE(point(u"Eze", 6, -w - 9, 20));  // ends left of the screen: covers no cell
  EXPECT_EQ(placer_.cell(0, 5), LabelPlacer::kFreeCell);
}

TEST_F(Labels, AreaMeanOfNegativeSumsIsUnsigned) {
  placer_.resetLabels(240, 320);
  // Sum -6 over 3 points: (2^32 - 6) / 3 = 0x55555553, of which 16 bits are kept.
  const MapPoint three[] = {{-1, -1}, {-2, -2}, {-3, -3}};
  placer_.addAreaLabel(1, three, font_, Qt::black);
  EXPECT_EQ(placer_.pending()[0].x(), 0x5553);
  EXPECT_EQ(placer_.pending()[0].y(), 0x5553);
  // Over 2 points the wrapped sum divides to the true mean in 16 bits.
  const MapPoint two[] = {{-10, 5}, {-20, 5}};
  placer_.addAreaLabel(2, two, font_, Qt::black);
  EXPECT_EQ(placer_.pending()[1].x(), -15);
  EXPECT_EQ(placer_.pending()[1].y(), 5);
}

struct LineCase {
  const char* name;
  std::vector<MapPoint> points;
  int16_t rotation;  // tenths of a degree
  QPoint position;   // for a 40 x 14 text box
};

TEST_F(Labels, LineLabelFollowsTheMiddleSegment) {
  const LineCase cases[] = {
      // Anchor (60, 50) less (20, 14), rounded as the offsets are: -19.5 -> -19, -13.5 -> -13.
      {"two points", {{10, 50}, {110, 50}}, 0, {41, 37}},
      {"leftwards reads left to right", {{110, 50}, {10, 50}}, 0, {41, 37}},
      // Straight up and straight down give the same angle: -90 + 0.5 truncates to -89.
      // At 89 degrees: x offset trunc(0.5 - (0.01745 * 20 + 14 * 0.99985)) = -13,
      // y offset trunc(0.99985 * 20 - 14 * 0.01745 + 0.5) = 20.
      {"up", {{50, 110}, {50, 10}}, 890, {37, 80}},
      {"down", {{50, 10}, {50, 110}}, 890, {37, 80}},
      // Down-right at 45 degrees turns the text clockwise.
      {"diagonal", {{0, 0}, {100, 100}}, -450, {47, 27}},
      // Lengths 10 and 100: the second segment passes half of 110.
      {"middle segment", {{0, 0}, {10, 0}, {10, 100}}, 890, {10 - 13, 50 + 20}},
      // No length at all: no segment passes half, so angle 0 at (0, 0).
      {"degenerate", {{5, 5}, {5, 5}}, 0, {-19, -13}},
  };
  for (const LineCase& c : cases) {
    SCOPED_TRACE(c.name);
    placer_.resetLabels(240, 320);
    placer_.addLineLabel(9, c.points, font_, Qt::black, 14, 40);
    ASSERT_EQ(placer_.pending().size(), 1u);
    const PendingLabel& label = placer_.pending()[0];
    EXPECT_EQ(label.rotation, c.rotation);
    EXPECT_EQ(QPoint(label.x(), label.y()), c.position);
    EXPECT_EQ(label.alignment, 0);
  }
}

}  // namespace
}  // namespace orvel
