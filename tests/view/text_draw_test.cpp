#include "view/text_draw.h"

#include <gtest/gtest.h>

#include <QFontMetrics>
#include <QPainter>

#include "common/recording_device.h"
#include "view/drawing_objects.h"

namespace orvel {
namespace {

using test::DrawCall;
using test::RecordingDevice;

class TextDraw : public ::testing::Test {
 protected:
  QFontMetrics metrics() const { return QFontMetrics(objects_.smallFont); }

  const DrawingObjects objects_;
};

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

}  // namespace
}  // namespace orvel
