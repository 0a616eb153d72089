#include "view/scale_bar.h"

#include <gtest/gtest.h>

#include <QFontMetrics>
#include <QPainter>

#include "common/recording_device.h"
#include "view/drawing_objects.h"
#include "view/map_view.h"

namespace orvel {
namespace {

using test::DrawCall;
using test::RecordingDevice;

struct ScaleCase {
  uint32_t zoom;
  int32_t rotation;
  const char16_t* label;
};

class ScaleBar : public ::testing::TestWithParam<ScaleCase> {
 protected:
  static void SetUpTestSuite() { test::ensureGuiApplication(); }

  const DrawingObjects objects_;
};

TEST_P(ScaleBar, BracketAndLabel) {
  const ScaleCase& c = GetParam();
  MapView view;
  view.setScreenSize(240, 320);
  view.setZoomIndex(c.zoom);
  view.setRotation(c.rotation);
  ASSERT_EQ(view.zoomLabel(), std::u16string_view(c.label));

  RecordingDevice device(240, 320);
  QPainter painter(&device);
  drawScaleBar(painter, objects_, view, 10, 305);
  painter.end();

  // The same bracket at every zoom step and rotation: white 3 px under black 1 px.
  const QPolygonF bracket({{10, 301}, {10, 305}, {50, 305}, {50, 301}});
  const auto lines = device.callsOf(DrawCall::Kind::Polyline);
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[0].devicePoints(), bracket);
  EXPECT_EQ(lines[0].pen.color(), QColor(Qt::white));
  EXPECT_EQ(lines[0].pen.width(), 3);
  EXPECT_EQ(lines[1].devicePoints(), bracket);
  EXPECT_EQ(lines[1].pen.color(), QColor(Qt::black));
  EXPECT_EQ(lines[1].pen.width(), 1);

  // The label: halo then black, centred on x = 31, its box ending on the base line row.
  const auto texts = device.callsOf(DrawCall::Kind::Text);
  ASSERT_EQ(texts.size(), 5u);
  const DrawCall& label = texts.back();
  const QString expected = QString::fromUtf16(c.label);
  EXPECT_EQ(label.text, expected);
  EXPECT_EQ(label.pen.color(), QColor(Qt::black));
  EXPECT_EQ(label.font, objects_.smallFont);
  const QFontMetrics metrics(objects_.smallFont);
  const int w = metrics.horizontalAdvance(expected);
  EXPECT_EQ(label.deviceOrigin(), QPointF((31 + 32 - w) / 2, 306 - metrics.height() + metrics.ascent()));
}

INSTANTIATE_TEST_SUITE_P(ZoomSteps, ScaleBar,
                         ::testing::Values(ScaleCase{0, 0, u"5 м"}, ScaleCase{12, 0, u"1.2 км"},
                                           ScaleCase{26, 0, u"800 км"}, ScaleCase{0, 90, u"5 м"},
                                           ScaleCase{12, 217, u"1.2 км"}, ScaleCase{26, 359, u"800 км"}));

}  // namespace
}  // namespace orvel
