#include <set>
#include <vector>

#include <QFontInfo>
#include <QFontMetrics>
#include <gtest/gtest.h>

#include "map/catalogue/catalogue.h"
#include "map/catalogue/icons.h"
#include "map/catalogue/map_styles.h"
#include "map/catalogue/patterns.h"

namespace orvel {

// The suite's one style set (qt_environment.cpp).
const MapStyles& mapStyles();

namespace {

TEST(LabelFonts, FontAIsANarrowBoldSixteenPixelFont) {
  const QFont& font = mapStyles().labelFontA();
  const QFontMetrics metrics(font);
  EXPECT_NEAR(metrics.height(), 16, 1);
  EXPECT_NEAR(metrics.averageCharWidth(), 5, 1);
  EXPECT_GE(font.weight(), QFont::Bold);
  // Qt names a family that several foundries offer with the foundry: "URW Gothic [UKWN]".
  const QString family = QFontInfo(font).family().section(QStringLiteral(" ["), 0, 0);
  EXPECT_TRUE(family == "URW Gothic" || family == "DejaVu Sans") << family.toStdString();
}

TEST(LabelFonts, RotatedStepsSpanMinusToPlusNinetyDegrees) {
  EXPECT_EQ(labelAngleFor(0), -900);
  EXPECT_EQ(labelAngleFor(90), 0);
  EXPECT_EQ(labelAngleFor(180), 900);
  EXPECT_EQ(labelAngleFor(181), 900);
  EXPECT_EQ(rotatedFontIndex(-90), 0);
  EXPECT_EQ(rotatedFontIndex(37), 127);
  EXPECT_EQ(rotatedFontIndex(120), 180);
  EXPECT_DOUBLE_EQ(painterRotationFor(rotatedFontIndex(30)), -30.0);
  for (int degrees = -90; degrees <= 90; ++degrees) {
    // The font for angle a tenths of a degree is element (a + 900) / 10.
    EXPECT_EQ(rotatedFontIndex(degrees), (degrees * 10 + 900) / 10);
    EXPECT_EQ(labelAngleFor(rotatedFontIndex(degrees)), degrees * 10);
  }
  EXPECT_EQ(mapStyles().rotatedLabelFont(17), mapStyles().labelFontA());
}

int opaquePixels(const QImage& image) {
  int count = 0;
  for (int y = 0; y < image.height(); ++y) {
    for (int x = 0; x < image.width(); ++x) count += qAlpha(image.pixel(x, y)) > 128 ? 1 : 0;
  }
  return count;
}

TEST(PointIcons, EveryIconThePointTableNamesIsDrawn) {
  const MapStyles& styles = mapStyles();
  std::set<uint16_t> drawn(iconIds().begin(), iconIds().end());
  for (const TypeStyle& row : pointTypes().subspan(1)) {
    const QImage* icon = styles.pointIcon(&row);
    if (row.icon == 0) {
      EXPECT_EQ(icon, nullptr) << row.name;
      continue;
    }
    EXPECT_TRUE(drawn.count(row.icon)) << row.icon;
    ASSERT_NE(icon, nullptr) << row.name;
    EXPECT_EQ(icon->size(), QSize(kIconSize, kIconSize));
    EXPECT_GE(opaquePixels(*icon), 12) << row.icon;
  }
  EXPECT_EQ(drawn.size(), 116u);
  EXPECT_TRUE(drawn.count(kWaypointIconId));
}

}  // namespace
}  // namespace orvel
