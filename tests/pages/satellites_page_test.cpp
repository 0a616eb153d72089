#include <algorithm>

#include "pages/satellites_page.h"
#include "pages_fixture.h"
#include "geo/coords.h"

namespace orvel::test {
namespace {

class SatellitesPageTest : public PagesTest {
 protected:
  void showSatellites(const std::vector<SatelliteInfo>& satellites) {
    gps.resetSatellites(static_cast<uint32_t>(satellites.size()));
    for (const SatelliteInfo& satellite : satellites) gps.addSatellite(satellite);
  }

  // The satellites' circles: every ellipse after the sky's three, in order.
  std::vector<DrawCall> satelliteCircles(const std::vector<DrawCall>& calls) {
    std::vector<DrawCall> ellipses;
    for (const DrawCall& call : calls) {
      if (call.kind == DrawCall::Kind::Ellipse) ellipses.push_back(call);
    }
    EXPECT_GE(ellipses.size(), 3u);
    ellipses.erase(ellipses.begin(), ellipses.begin() + std::min<size_t>(3, ellipses.size()));
    return ellipses;
  }

  // Rectangles drawn in the bar colour.
  static std::vector<QRectF> bars(const std::vector<DrawCall>& calls) {
    std::vector<QRectF> out;
    for (const DrawCall& call : calls) {
      if (call.kind == DrawCall::Kind::Rects && call.brush.color() == QColor(255, 0, 0)) out.push_back(call.rect);
    }
    return out;
  }

  static bool hasText(const std::vector<DrawCall>& calls, const QString& text, QPointF* at = nullptr) {
    for (const DrawnText& drawn : drawnTexts(calls)) {
      if (drawn.text == text) {
        if (at != nullptr) *at = drawn.origin;
        return true;
      }
    }
    return false;
  }
};

TEST_F(SatellitesPageTest, LayoutOfTheSmallScreenIsTheQuarterGeometry) {
  const SatellitesLayout layout = satellitesLayout(240, 320);
  EXPECT_EQ(layout.radius, 60);
  EXPECT_EQ(layout.cx, 120);
  EXPECT_EQ(layout.cy, 80);
  EXPECT_EQ(layout.base, 200);
  EXPECT_EQ(layout.barWidth, 8);
}

TEST_F(SatellitesPageTest, WideScreenKeepsSkyAndTextsOnScreen) {
  struct Case {
    QSize size;
    bool sideBySide;  // the band and texts beside the sky rather than below it
  };
  // 480 x 225 is what a 480 x 272 screen leaves between the menu and status bars.
  const Case cases[] = {{{800, 480}, false}, {{640, 480}, false}, {{480, 640}, false},
                        {{1024, 600}, false}, {{480, 225}, true}};
  for (const Case& c : cases) {
    const int width = c.size.width(), height = c.size.height();
    SCOPED_TRACE(std::to_string(width) + "x" + std::to_string(height));
    const SatellitesLayout layout = satellitesLayout(width, height);
    EXPECT_GE(layout.cy - layout.radius, 16);                  // the "N" above the sky
    EXPECT_LE(layout.cy + layout.radius + 12, height);         // the "S" below it
    EXPECT_GE(layout.base - 50, 0);                            // the band's top row
    EXPECT_LE(layout.base + 80, height);                       // the status line
    EXPECT_LE(layout.bandRight, width);
    EXPECT_GT(layout.radius, 60);
    EXPECT_EQ(layout.bandLeft > layout.cx + layout.radius, c.sideBySide);
    EXPECT_TRUE(c.sideBySide || layout.base - 50 > layout.cy + layout.radius) << "band below the sky";
    // Twelve bars fit, each number under its bar clear of the next one's.
    EXPECT_LE(layout.firstBarX + 23 * layout.barWidth, layout.bandRight);
    EXPECT_GE(2 * layout.barWidth, 18);
  }
}

TEST_F(SatellitesPageTest, EmptySkyStillShowsDialBandAndLabels) {
  const std::vector<DrawCall> calls = record(satellitesPage());
  EXPECT_TRUE(satelliteCircles(calls).empty());
  EXPECT_TRUE(bars(calls).empty());
  for (const char* text : {"N", "S", "E", "W", "Широта:", "Долгота:", "Fix:", "None"}) {
    EXPECT_TRUE(hasText(calls, QString::fromUtf8(text))) << text;
  }
  const std::vector<QString> texts = textsOf(calls);
  EXPECT_EQ(std::count(texts.begin(), texts.end(), QStringLiteral("-")), 2);
  // Fifty one-pixel rows from white at the bottom (y = 200) to black at the top.
  std::vector<QRectF> rows;
  std::vector<QColor> colours;
  for (const DrawCall& call : calls) {
    if (call.kind == DrawCall::Kind::Rects && call.rect.height() == 1 && call.rect.width() == 234) {
      rows.push_back(call.rect);
      colours.push_back(call.brush.color());
    }
  }
  ASSERT_EQ(rows.size(), 50u);
  EXPECT_EQ(rows.front(), QRectF(3, 200, 234, 1));
  EXPECT_EQ(colours.front(), QColor(255, 255, 255));
  EXPECT_EQ(rows.back(), QRectF(3, 151, 234, 1));
  EXPECT_EQ(colours.back(), QColor(0, 0, 0));
}

TEST_F(SatellitesPageTest, CompassLettersHaveAWhiteHalo) {
  const std::vector<DrawCall> calls = record(satellitesPage());
  int white = 0;
  QColor last;
  for (const DrawnText& drawn : drawnTexts(calls)) {
    if (drawn.text != QStringLiteral("N")) continue;
    if (drawn.colour == Qt::white) ++white;
    last = drawn.colour;
  }
  EXPECT_EQ(white, 4);
  EXPECT_EQ(last, QColor(0, 0, 255));
}

struct SkyCase {
  uint32_t elevation, azimuth;
  QPointF centre;
};

TEST_F(SatellitesPageTest, SatellitesArePlacedByElevationAndAzimuth) {
  const SkyCase cases[] = {
      {90, 0, {120, 80}},    // zenith: the centre
      {90, 200, {120, 80}},
      {0, 90, {180, 80}},    // horizon east: (cx + r, cy)
      {0, 0, {120, 20}},     // horizon north
      {0, 180, {120, 139}},  // horizon south: rounding adds 0.5 and truncates
      {0, 270, {61, 80}},
      {45, 90, {150, 80}},   // half way out
  };
  for (const SkyCase& sky : cases) {
    showSatellites({{7, sky.elevation, sky.azimuth, 40}});
    const std::vector<DrawCall> circles = satelliteCircles(record(satellitesPage()));
    ASSERT_EQ(circles.size(), 1u);
    EXPECT_EQ(circles[0].rect.center(), sky.centre) << sky.elevation << "/" << sky.azimuth;
    EXPECT_EQ(circles[0].rect.width(), 8);
  }
}

TEST_F(SatellitesPageTest, SignalShadesTheSatelliteFromWhiteToBlack) {
  const std::pair<uint32_t, int> cases[] = {{0, 255}, {3, 255}, {4, 247}, {50, 124}, {90, 17}, {96, 0}, {99, 0}, {150, 0}};
  for (const auto& [snr, grey] : cases) {
    showSatellites({{12, 40, 100, snr}});
    const std::vector<DrawCall> circles = satelliteCircles(record(satellitesPage()));
    ASSERT_EQ(circles.size(), 1u);
    EXPECT_EQ(circles[0].brush.color(), QColor(grey, grey, grey)) << "snr " << snr;
  }
}

TEST_F(SatellitesPageTest, BarsRiseHalfTheSignalFromTheBandBottom) {
  showSatellites({{3, 10, 10, 60}, {14, 20, 20, 99}, {22, 30, 30, 1}, {31, 40, 40, 0}, {5, 5, 5, 20}});
  const std::vector<DrawCall> calls = record(satellitesPage());
  const std::vector<QRectF> drawn = bars(calls);
  // SNR 0 and 1 give no height, so no bar; the others stand on y = 200.
  ASSERT_EQ(drawn.size(), 3u);
  EXPECT_EQ(drawn[0].left(), 8);
  EXPECT_EQ(drawn[0].top(), 200 - 30);
  EXPECT_EQ(drawn[1].left(), 24);
  EXPECT_EQ(drawn[1].top(), 200 - 49);
  EXPECT_EQ(drawn[2].left(), 72);
  EXPECT_EQ(drawn[2].top(), 200 - 10);
  for (const QRectF& bar : drawn) {
    EXPECT_EQ(bar.width() + 1, 8);              // b = 240 / 28 pixels wide
    EXPECT_EQ(bar.top() + bar.height() + 1, 200);  // bottom edge left out, as GDI does
  }
  QPointF at;
  ASSERT_TRUE(hasText(calls, QStringLiteral("03"), &at));
  ASSERT_TRUE(hasText(calls, QStringLiteral("31")));
  int numbersUnderBars = 0;
  for (const DrawnText& drawn : drawnTexts(calls)) {
    if (drawn.text == QStringLiteral("14") && drawn.origin.x() == 24) ++numbersUnderBars;
  }
  EXPECT_EQ(numbersUnderBars, 1);
}

TEST_F(SatellitesPageTest, SixteenthBarStartsPastTheRightEdge) {
  std::vector<SatelliteInfo> many;
  for (uint32_t i = 1; i <= 16; ++i) many.push_back({i, 10 + i, 20 * i, 40});
  showSatellites(many);
  const std::vector<QRectF> drawn = bars(record(satellitesPage()));
  ASSERT_EQ(drawn.size(), 16u);
  EXPECT_EQ(drawn[15].left(), 248);
}

struct QualityCase {
  uint32_t flags;
  uint32_t fixType;
  float horizontalError;
  float hdop;
  const char* expected;
};

TEST_F(SatellitesPageTest, FixQualityLine) {
  const QualityCase cases[] = {
      {0, 3, 0, 0, "None"},
      {kFixType, 3, 0, 0, "3D"},
      {kFixType, 5, 0, 0, "3d diff"},
      {kFixType, 12, 0, 0, "Unknown type"},
      {kFixSatellitesUsed, 2, 0, 0, "2D"},  // the type is shown even without its bit
      {kFixType | kFixHorizontalError, 3, 4.6f, 0, "3D, ±5 м"},
      {kFixType | kFixHorizontalError | kFixHdop, 3, 4.4f, 1.3f, "3D, ±4 м"},
      {kFixType | kFixHdop, 4, 0, 1.3f, "2D diff, HDOP 1.3"},
  };
  for (const QualityCase& quality : cases) {
    GpsFix fix;
    fix.flags = quality.flags;
    fix.fixType = quality.fixType;
    fix.horizontalError = quality.horizontalError;
    fix.hdop = quality.hdop;
    gps.exchangeFix(fix);
    QPointF at;
    const std::vector<DrawCall> calls = record(satellitesPage());
    EXPECT_TRUE(hasText(calls, QString::fromUtf8(quality.expected), &at)) << quality.expected;
    EXPECT_EQ(at.x(), 80);
  }
}

TEST_F(SatellitesPageTest, PositionSatellitesUsedAndStatus) {
  GpsFix fix;
  fix.flags = kFixPosition | kFixSatellitesUsed;
  fix.latitude = -37.7848f;
  fix.longitude = 175.3149f;
  fix.satellitesUsed = 7;
  gps.exchangeFix(fix);
  gps.setStatusText(u"NMEA: COM3");
  const std::vector<DrawCall> calls = record(satellitesPage());
  EXPECT_TRUE(hasText(calls, QString::fromStdU16String(formatLatitude(-37.7848f))));
  QPointF at;
  EXPECT_TRUE(hasText(calls, QString::fromStdU16String(formatLongitude(175.3149f)), &at));
  EXPECT_EQ(at.x(), 80);
  EXPECT_FALSE(hasText(calls, QStringLiteral("-")));
  QColor usedColour;
  QColor statusColour;
  for (const DrawnText& drawn : drawnTexts(calls)) {
    if (drawn.text == QStringLiteral("Исп.: 7")) usedColour = drawn.colour;
    if (drawn.text == QStringLiteral("NMEA: COM3")) statusColour = drawn.colour;
  }
  EXPECT_EQ(usedColour, QColor(255, 0, 0));
  EXPECT_EQ(statusColour, QColor(0, 0, 128));
}

TEST_F(SatellitesPageTest, EachGpsMessageRepaints) {
  SatellitesPage& page = satellitesPage();
  page.onStatusChanged();
  page.onFixChanged();
  page.onSatellitesChanged();
  EXPECT_EQ(repaints_, 3);
}

TEST_F(SatellitesPageTest, PaintsTheStatedColours) {
  showSatellites({{9, 90, 0, 99}});
  const QImage image = render(satellitesPage());
  EXPECT_EQ(image.pixelColor(2, 300), QColor(181, 248, 227));  // background
  EXPECT_EQ(image.pixelColor(100, 50), QColor(155, 231, 247));  // sky
  EXPECT_EQ(image.pixelColor(120, 80), QColor(0, 0, 0));        // black satellite at the zenith
  EXPECT_EQ(image.pixelColor(12, 195), QColor(255, 0, 0));       // its bar
}

}  // namespace
}  // namespace orvel::test
