// The label fonts of the style set: "Century Gothic" for font A, rotated fonts in whole-degree
// steps.
#include <QFontInfo>
#include <gtest/gtest.h>

#include "common/draw_kit.h"
#include "map/catalogue/catalogue.h"

namespace orvel {
namespace {

using test::mapStyles;

TEST(LabelFonts, FontAIsCenturyGothicAsUrwGothic) {
  // Without the foundry fontconfig adds when the family comes from more than one file.
  const QString family = QFontInfo(mapStyles().labelFontA()).family().section(QStringLiteral(" ["), 0, 0);
  EXPECT_EQ(family, QStringLiteral("URW Gothic"));
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

// Every point row that names an icon draws it; an id no row names has none.
TEST(PointIcons, EveryRowWithAnIconIdHasItsPicture) {
  for (const TypeStyle& row : pointTypes()) {
    const QImage* icon = mapStyles().pointIcon(&row);
    EXPECT_EQ(icon, row.icon ? mapStyles().icon(row.icon) : nullptr) << row.name;
    EXPECT_TRUE(!row.icon || (icon && !icon->isNull())) << row.name << " " << row.icon;
  }
  EXPECT_EQ(mapStyles().icon(999), nullptr);
}

}  // namespace
}  // namespace orvel
