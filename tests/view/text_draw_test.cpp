#include "view/text_draw.h"

#include <gtest/gtest.h>

#include <QFontMetrics>
#include <QPainter>

#include "common/recording_device.h"
#include "view/drawing_objects.h"
#include "geo/trig.h"

namespace orvel {
namespace {

using test::DrawCall;
using test::RecordingDevice;

class TextDraw : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { test::ensureGuiApplication(); }

  // Top-left corner of the single text drawn into a fresh device.
  QPoint drawnTopLeft(int x, int y, std::u16string_view text, unsigned format) {
    RecordingDevice device(240, 320);
    QPainter painter(&device);
    painter.setFont(objects_.smallFont);
    drawTextAt(painter, x, y, text, format);
    painter.end();
    const auto texts = device.callsOf(DrawCall::Kind::Text);
    EXPECT_EQ(texts.size(), 1u);
    if (texts.empty()) return {};
    const QPointF origin = texts[0].deviceOrigin();
    return {int(origin.x()), int(origin.y()) - metrics().ascent()};
  }
  QFontMetrics metrics() const { return QFontMetrics(objects_.smallFont); }

  const DrawingObjects objects_;
};

TEST_F(TextDraw, AnchorsTheTextBoxByFormat) {
  const std::u16string_view text = u"1.2 км";
  const int w = metrics().horizontalAdvance(QString::fromStdU16String(std::u16string(text)));
  const int h = metrics().height();
  ASSERT_GT(w, 10);
  ASSERT_GT(h, 10);

  // Format 0: the top-left corner at the point.
  EXPECT_EQ(drawnTopLeft(50, 60, text, kTextLeft), QPoint(50, 60));
  // Right: the box ends (exclusively) at x.
  EXPECT_EQ(drawnTopLeft(50, 60, text, kTextRight), QPoint(50 - w, 60));
  // Bottom: the box ends (exclusively) at y.
  EXPECT_EQ(drawnTopLeft(50, 60, text, kTextBottom), QPoint(50, 60 - h));
  // Bottom centre: centred on the one-pixel column at x, ending at y.
  const QPoint bottomCentre = drawnTopLeft(50, 60, text, kTextBottomCenter);
  EXPECT_EQ(bottomCentre, QPoint((50 + 51 - w) / 2, 60 - h));
  EXPECT_LE(std::abs(2 * bottomCentre.x() + w - 101), 1);
  // Vertical centre.
  EXPECT_EQ(drawnTopLeft(50, 60, text, kTextVCenter), QPoint(50, 60 - h / 2));
}

TEST_F(TextDraw, DrawsAmpersandLiterally) {
  RecordingDevice device(100, 100);
  QPainter painter(&device);
  drawTextAt(painter, 0, 0, u"A&B", 0);
  painter.end();
  ASSERT_EQ(device.texts().size(), 1u);
  EXPECT_EQ(device.texts()[0], QString("A&B"));
}

TEST_F(TextDraw, HaloIsFourWhiteDiagonalsThenTheColour) {
  RecordingDevice device(100, 100);
  QPainter painter(&device);
  painter.setFont(objects_.smallFont);
  const QPen before(QColor(10, 20, 30), 2);
  painter.setPen(before);
  drawHaloText(painter, 40, 30, u"5 м", kTextLeft, QColor(200, 0, 0));
  EXPECT_EQ(painter.pen(), before);
  painter.end();

  const auto texts = device.callsOf(DrawCall::Kind::Text);
  ASSERT_EQ(texts.size(), 5u);
  const QPoint expected[5] = {{39, 29}, {41, 29}, {39, 31}, {41, 31}, {40, 30}};
  const int ascent = metrics().ascent();
  for (int i = 0; i < 5; ++i) {
    SCOPED_TRACE(i);
    EXPECT_EQ(texts[size_t(i)].text, QString("5 м"));
    EXPECT_EQ(texts[size_t(i)].deviceOrigin(), QPointF(expected[i].x(), expected[i].y() + ascent));
    EXPECT_EQ(texts[size_t(i)].pen.color(), i < 4 ? QColor(Qt::white) : QColor(200, 0, 0));
    EXPECT_EQ(texts[size_t(i)].backgroundMode, Qt::TransparentMode);
  }
}

struct ArrowCase {
  float angle;
  QPolygonF blue;
  QPolygonF red;
};

TEST_F(TextDraw, NorthArrowCornersAndColours) {
  const float quarter = -kPi / 2;  // map turned 90 degrees: north points left
  const ArrowCase cases[] = {
      {0.0f, QPolygonF({{105, 50}, {95, 50}, {100, 35}}), QPolygonF({{95, 50}, {105, 50}, {100, 65}})},
      {quarter, QPolygonF({{100, 45}, {100, 55}, {85, 50}}), QPolygonF({{100, 55}, {100, 45}, {115, 50}})},
  };
  for (const ArrowCase& c : cases) {
    SCOPED_TRACE(c.angle);
    RecordingDevice device(200, 200);
    QPainter painter(&device);
    drawNorthArrow(painter, objects_, 100, 50, 15, 5, c.angle);
    painter.end();
    const auto polygons = device.callsOf(DrawCall::Kind::Polygon);
    ASSERT_EQ(polygons.size(), 2u);
    EXPECT_EQ(polygons[0].devicePoints(), c.blue);
    EXPECT_EQ(polygons[1].devicePoints(), c.red);
    EXPECT_EQ(polygons[0].brush.color(), QColor(0, 0, 255));
    EXPECT_EQ(polygons[1].brush.color(), QColor(255, 0, 0));
    for (const DrawCall& p : polygons) {
      EXPECT_EQ(p.pen.color(), QColor(Qt::black));
      EXPECT_EQ(p.pen.width(), 1);
    }
  }
}

TEST_F(TextDraw, SharedDrawingObjects) {
  const DrawingObjects& objects = objects_;
  // Heights are character cells (ascent + descent), not em sizes.
  EXPECT_NEAR(QFontMetrics(objects.smallFont).height(), 12, 1);
  EXPECT_NEAR(QFontMetrics(objects.largeFont).height(), 14, 1);
  EXPECT_LT(objects.smallFont.pixelSize(), 12);
  EXPECT_EQ(objects.smallFont.family(), QString("Liberation Sans"));
  EXPECT_EQ(objects.outlinePen.color(), QColor(Qt::white));
  EXPECT_EQ(objects.outlinePen.width(), 3);
  EXPECT_EQ(objects.thinPen.color(), QColor(Qt::black));
  EXPECT_EQ(objects.thinPen.width(), 1);
  const QColor expected[kSolidBrushCount] = {
      {0, 0, 0},       {128, 0, 0},   {0, 128, 0},   {128, 128, 0}, {0, 0, 128},   {128, 0, 128},
      {0, 128, 128},   {96, 96, 96},  {192, 192, 192}, {255, 0, 0}, {0, 255, 0},   {255, 255, 0},
      {0, 0, 255},     {255, 0, 255}, {0, 255, 255}, {255, 255, 255}};
  for (int i = 0; i < kSolidBrushCount; ++i) {
    SCOPED_TRACE(i);
    EXPECT_EQ(objects.brushes[size_t(i)].color(), expected[i]);
    EXPECT_EQ(objects.brushes[size_t(i)].style(), Qt::SolidPattern);
  }
  EXPECT_EQ(objects.brush(SolidBrush::DarkGrey).color(), QColor(96, 96, 96));
}

}  // namespace
}  // namespace orvel
