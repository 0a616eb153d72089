#include <ostream>
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

struct PenCase {
  uint32_t lineCode;
  bool second;  // the pen drawn over the main one
  int width;
  bool dashed;
  QRgb colour;
};

void PrintTo(const PenCase& c, std::ostream* os) {
  *os << "line 0x" << std::hex << c.lineCode << (c.second ? " second pen" : " main pen");
}

class LinePens : public ::testing::TestWithParam<PenCase> {};

TEST_P(LinePens, AreAsTabled) {
  const PenCase& c = GetParam();
  const TypeStyle* row = findLineType(c.lineCode);
  const QPen* pen = c.second ? mapStyles().lineSecondPen(row) : &mapStyles().lineMainPen(row);
  ASSERT_NE(pen, nullptr);
  EXPECT_EQ(pen->width(), c.width);
  EXPECT_EQ(pen->style() != Qt::SolidLine, c.dashed);
  EXPECT_EQ(pen->color().rgb(), c.colour);
  EXPECT_TRUE(pen->isCosmetic());
}

constexpr PenCase kPenCases[] = {
    {0x01, false, 4, false, qRgb(100, 50, 50)},
    {0x01, true, 2, false, qRgb(196, 100, 66)},
    {0x02, false, 3, false, qRgb(230, 0, 0)},
    {0x06, false, 1, false, qRgb(255, 0, 0)},
    {0x0C, false, 2, false, qRgb(255, 0, 0)},
    {0x14, false, 3, false, qRgb(0, 0, 0)},
    {0x14, true, 1, true, qRgb(255, 255, 255)},
    {0x15, false, 1, false, qRgb(0, 0, 128)},
    {0x16, false, 1, true, qRgb(0, 0, 0)},
    {0x1E, false, 1, true, qRgb(0, 200, 100)},
    {0x20, false, 1, true, qRgb(137, 80, 24)},
    {0x22, false, 2, false, qRgb(137, 80, 24)},
    {0x23, false, 1, true, qRgb(0, 255, 255)},
    {0x26, false, 1, true, qRgb(0, 0, 255)},
    {0x27, true, 2, false, qRgb(196, 100, 66)},
    {0x3F, false, 2, false, qRgb(0, 0, 0)},
    {0x0D, false, 1, true, qRgb(255, 0, 0)},  // not catalogued: the default pen
    {0x40, false, 1, true, qRgb(255, 0, 0)},
};

INSTANTIATE_TEST_SUITE_P(Rows, LinePens, ::testing::ValuesIn(kPenCases));

TEST(LinePens, OnlyDoubleLinesHaveASecondPen) {
  for (const TypeStyle& row : lineTypes().subspan(1)) {
    const bool doubled = row.key == 0x01 || row.key == 0x0B || row.key == 0x14 || row.key == 0x27;
    EXPECT_EQ(mapStyles().lineSecondPen(&row) != nullptr, doubled) << row.name;
  }
  EXPECT_EQ(mapStyles().lineSecondPen(nullptr), nullptr);
}

struct FillCase {
  uint32_t polygonCode;
  int pattern;  // 0: solid
  QRgb colour;
};

void PrintTo(const FillCase& c, std::ostream* os) {
  *os << "polygon 0x" << std::hex << c.polygonCode;
}

class PolygonFills : public ::testing::TestWithParam<FillCase> {};

TEST_P(PolygonFills, AreAsTabled) {
  const FillCase& c = GetParam();
  const QBrush& brush = mapStyles().polygonBrush(findPolygonType(c.polygonCode));
  if (c.pattern == 0) {
    EXPECT_EQ(brush.style(), Qt::SolidPattern);
    EXPECT_EQ(brush.color().rgb(), c.colour);
  } else {
    EXPECT_EQ(brush.style(), Qt::TexturePattern);
    EXPECT_EQ(brush.textureImage().convertToFormat(QImage::Format_RGB32),
              loadPatternTile(c.pattern));
  }
}

constexpr FillCase kFillCases[] = {
    {0x02, 0, qRgb(192, 192, 192)},
    {0x0D, 0, qRgb(183, 233, 153)},
    {0x17, 0, qRgb(144, 192, 0)},
    {0x18, 120, 0},
    {0x1A, 116, 0},
    {0x28, 0, qRgb(0, 128, 255)},
    {0x4A, 120, 0},  // no fill of its own: the default fill
    {0x4C, 121, 0},
    {0x4E, 117, 0},
    {0x4F, 118, 0},
    {0x51, 122, 0},
    {0x52, 119, 0},
    {0x6C, 0, qRgb(150, 150, 150)},
    {0x70, 0, qRgb(0, 0, 0)},
    {0x78, 0, qRgb(96, 96, 96)},
    {0x7E, 0, qRgb(0, 255, 255)},
    {0x0F, 120, 0},  // not catalogued
};

INSTANTIATE_TEST_SUITE_P(Rows, PolygonFills, ::testing::ValuesIn(kFillCases));

struct LabelCase {
  const TypeStyle* (*find)(uint32_t);
  uint32_t code;
  int cellHeight;  // 0: label font A
  bool bold;
  QRgb colour;
};

void PrintTo(const LabelCase& c, std::ostream* os) {
  *os << "code 0x" << std::hex << c.code;
}

class LabelStyles : public ::testing::TestWithParam<LabelCase> {};

TEST_P(LabelStyles, AreAsTabled) {
  const LabelCase& c = GetParam();
  const TypeStyle* row = c.find(c.code);
  const MapStyles& styles = mapStyles();
  const LabelStyle& style = c.find == findPolygonType ? styles.polygonLabel(row)
                            : c.find == findLineType  ? styles.lineLabel(row)
                                                      : styles.pointLabel(row);
  EXPECT_EQ(style.colour.rgb(), c.colour);
  if (c.cellHeight == 0) {
    EXPECT_EQ(style.font, styles.labelFontA());
  } else {
    EXPECT_NEAR(QFontMetrics(style.font).height(), c.cellHeight, 1);
  }
  EXPECT_EQ(style.font.weight() >= QFont::Bold, c.bold);
}

const LabelCase kLabelCases[] = {
    {findPolygonType, 0x01, 0, true, qRgb(0, 0, 0)},
    {findPolygonType, 0x3C, 0, true, qRgb(0, 0, 128)},
    {findPolygonType, 0x4C, 0, true, qRgb(0, 0, 128)},
    {findPolygonType, 0x0F, 0, true, qRgb(0, 0, 0)},
    {findLineType, 0x18, 0, true, qRgb(0, 0, 255)},
    {findLineType, 0x1D, 0, true, qRgb(0, 200, 100)},
    {findLineType, 0x21, 0, true, qRgb(137, 80, 24)},
    {findLineType, 0x25, 0, true, qRgb(0, 255, 255)},
    {findLineType, 0x0D, 0, true, qRgb(0, 0, 0)},
    {findPointType, 0x0100, 18, true, qRgb(0, 0, 0)},
    {findPointType, 0x0500, 16, true, qRgb(0, 0, 0)},
    {findPointType, 0x0800, 14, true, qRgb(0, 0, 0)},
    {findPointType, 0x0D00, 12, false, qRgb(0, 0, 0)},
    {findPointType, 0x1E20, 16, true, qRgb(0, 0, 0)},
    {findPointType, 0x2810, 12, false, qRgb(96, 96, 96)},
    {findPointType, 0x6210, 12, false, qRgb(0, 255, 255)},
    {findPointType, 0x6300, 12, false, qRgb(137, 80, 24)},
    {findPointType, 0xF005, 16, true, qRgb(0, 0, 0)},
    {findPointType, 0x2A00, 12, false, qRgb(96, 96, 96)},  // no style: the default
    {findPointType, 0x4E01, 12, false, qRgb(96, 96, 96)},  // not catalogued
};

INSTANTIATE_TEST_SUITE_P(Rows, LabelStyles, ::testing::ValuesIn(kLabelCases));

TEST(LabelFonts, FontAIsANarrowBoldSixteenPixelFont) {
  const QFont& font = mapStyles().labelFontA();
  const QFontMetrics metrics(font);
  EXPECT_NEAR(metrics.height(), 16, 1);
  EXPECT_NEAR(metrics.averageCharWidth(), 5, 1);
  EXPECT_GE(font.weight(), QFont::Bold);
  // Without the foundry fontconfig adds when the family comes from more than one file.
  const QString family = QFontInfo(font).family().section(QStringLiteral(" ["), 0, 0);
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

TEST(PointIcons, NoTwoIconsLookAlike) {
  std::vector<QImage> seen;
  for (uint16_t id : iconIds()) {
    const QImage* icon = mapStyles().icon(id);
    ASSERT_NE(icon, nullptr) << id;
    for (size_t i = 0; i < seen.size(); ++i) {
      EXPECT_NE(*icon, seen[i]) << id << " looks like " << iconIds()[i];
    }
    seen.push_back(*icon);
  }
}

TEST(PointIcons, UncataloguedPointsAndUnknownIdsHaveNone) {
  EXPECT_EQ(mapStyles().pointIcon(nullptr), nullptr);
  EXPECT_EQ(mapStyles().pointIcon(findPointType(0x1400)), nullptr);
  EXPECT_EQ(mapStyles().icon(1005), nullptr);
  EXPECT_TRUE(loadIcon(999).isNull());
}

TEST(Patterns, AreOpaqueTilesWithADrawing) {
  for (int id = kFirstPatternId; id <= kLastPatternId; ++id) {
    const QImage tile = loadPatternTile(id);
    ASSERT_EQ(tile.size(), QSize(kPatternTileSize, kPatternTileSize)) << id;
    EXPECT_FALSE(tile.hasAlphaChannel());
    std::set<QRgb> colours;
    for (int y = 0; y < tile.height(); ++y) {
      for (int x = 0; x < tile.width(); ++x) colours.insert(tile.pixel(x, y));
    }
    EXPECT_GE(colours.size(), 2u) << id;
  }
  EXPECT_TRUE(loadPatternTile(115).isNull());
  EXPECT_TRUE(loadPatternTile(123).isNull());
}

}  // namespace
}  // namespace orvel
