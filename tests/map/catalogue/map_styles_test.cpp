// The label fonts of the style set: "Century Gothic" for font A, rotated fonts in whole-degree
// steps.
#include <QFontInfo>
#include <gtest/gtest.h>

#include "map/catalogue/catalogue.h"
#include "map/catalogue/map_styles.h"

namespace orvel {
namespace {

TEST(LabelFonts, FontAIsCenturyGothicAsUrwGothic) {
  // Without the foundry fontconfig adds when the family comes from more than one file.
  const MapStyles styles;
  const QString family = QFontInfo(styles.labelFontA()).family().section(QStringLiteral(" ["), 0, 0);
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
  const MapStyles styles;
  EXPECT_EQ(styles.rotatedLabelFont(17), styles.labelFontA());
}

// Every point row that names an icon draws it; an id no row names has none.
TEST(PointIcons, EveryRowWithAnIconIdHasItsPicture) {
  const MapStyles styles;
  for (const TypeStyle& row : pointTypes()) {
    const QImage* icon = styles.pointIcon(&row);
    EXPECT_EQ(icon, row.icon ? styles.icon(row.icon) : nullptr) << row.name;
    EXPECT_TRUE(!row.icon || (icon && !icon->isNull())) << row.name << " " << row.icon;
  }
  EXPECT_EQ(styles.icon(999), nullptr);
}

}  // namespace
}  // namespace orvel
