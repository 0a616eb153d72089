#include <ostream>

#include <QFontInfo>
#include <QFontMetrics>
#include <gtest/gtest.h>

#include "common/recording_device.h"
#include "view/fonts.h"

namespace orvel {
namespace {

struct FontCase {
  const char* face;
  int height;
  int width;
  int weight;
  const char* family;  // what Debian's setup gives
};

// The family a font resolved to, without the foundry that fontconfig adds when a family
// comes from more than one ("URW Gothic [UKWN]": the OpenType and the Type 1 files).
QString resolvedFamily(const QFont& font) { return QFontInfo(font).family().section(QStringLiteral(" ["), 0, 0); }

void PrintTo(const FontCase& c, std::ostream* os) { *os << c.face << " " << c.height; }

class GdiFonts : public ::testing::TestWithParam<FontCase> {
 protected:
  static void SetUpTestSuite() { test::ensureGuiApplication(); }
};

TEST_P(GdiFonts, HaveTheCellHeightAndWidthAsked) {
  const FontCase& c = GetParam();
  const QFont font = makeGdiFont(c.face, c.height, c.width, c.weight);
  const QFontMetrics metrics(font);
  if (c.height > 0) {
    EXPECT_NEAR(metrics.height(), c.height, 1);
  } else {
    EXPECT_EQ(font.pixelSize(), -c.height);
  }
  if (c.width > 0) {
    EXPECT_NEAR(metrics.averageCharWidth(), c.width, 1);
  }
  EXPECT_EQ(font.weight() >= QFont::Bold, c.weight >= 700);
  EXPECT_TRUE(fontFamiliesFor(c.face).contains(resolvedFamily(font))) << QFontInfo(font).family().toStdString();
  EXPECT_EQ(resolvedFamily(font).toStdString(), c.family);
}

constexpr FontCase kFonts[] = {
    {"Arial", 12, 0, 0, "Liberation Sans"},
    {"Arial", 14, 0, 700, "Liberation Sans"},
    {"Tahoma", 12, 0, 0, "DejaVu Sans"},
    {"Tahoma", 18, 0, 700, "DejaVu Sans"},
    {"Century Gothic", 16, 5, 700, "URW Gothic"},
    {"Century Gothic", 24, 12, 400, "URW Gothic"},
    {"Tahoma", -11, 0, 0, "DejaVu Sans"},
};

INSTANTIATE_TEST_SUITE_P(Faces, GdiFonts, ::testing::ValuesIn(kFonts));

TEST(FontFaces, UnknownFacesAreAskedForWithAFallback) {
  const QStringList families = fontFamiliesFor("Verdana");
  ASSERT_EQ(families.size(), 2);
  EXPECT_EQ(families[0], "Verdana");
  EXPECT_EQ(families[1], "DejaVu Sans");
  EXPECT_EQ(qtFamilyFor("Verdana"), "Verdana");
  EXPECT_EQ(qtFamilyFor("Arial"), "Liberation Sans");
}

}  // namespace
}  // namespace orvel
