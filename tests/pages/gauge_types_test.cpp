#include <gtest/gtest.h>

#include <QString>

#include <string>

#include "common/test_data.h"
#include "gps/gps_state.h"
#include "pages/gauge.h"
#include "pages/gauge_types.h"
#include "pages/gauges_page.h"

namespace orvel::test {
namespace {

struct FieldCase {
  const char16_t* key;
  uint32_t bit;
  void (*set)(GpsFix& fix);
  const char* expected;
};

const FieldCase kFieldCases[] = {
    {u"azimuth", kFixCourse, [](GpsFix& f) { f.course = 12.3f; }, "12.3°"},
    {u"elev", kFixAltitude, [](GpsFix& f) { f.altitude = 150.5f; }, "150.5 м"},
    {u"elevprec", kFixVerticalError, [](GpsFix& f) { f.verticalError = 4.2f; }, "4.2 м"},
    {u"geoid", kFixGeoidSeparation, [](GpsFix& f) { f.geoidSeparation = -14.6f; }, "-14.6 м"},
    {u"hdop", kFixHdop, [](GpsFix& f) { f.hdop = 0.9f; }, "0.9"},
    {u"y", kFixPosition, [](GpsFix& f) { f.latitude = 55.755833f; }, "N55°45.350'"},
    {u"x", kFixPosition, [](GpsFix& f) { f.longitude = -3.6527f; }, "W3°39.162'"},
    {u"xyprec", kFixHorizontalError, [](GpsFix& f) { f.horizontalError = 3.4f; }, "3.4 м"},
    {u"satellites", kFixSatellitesUsed, [](GpsFix& f) { f.satellitesUsed = 7; }, "7"},
    {u"speed", kFixSpeed, [](GpsFix& f) { f.speed = 54.3f; }, "54.3 км/ч"},
    {u"magvar", kFixMagneticVariation, [](GpsFix& f) { f.magneticVariation = -11.2f; }, "-11.2°"},
    {u"vdop", kFixVdop, [](GpsFix& f) { f.vdop = 1.7f; }, "1.7"},
    {u"vspeed", kFixVerticalSpeed, [](GpsFix& f) { f.verticalSpeed = -0.4f; }, "-0.4 м/с"},
};

// Each field gauge of a registry of the test's own shows its field only while the fix's
// bit for it is set.
TEST(GaugeTypes, FieldGaugesShowTheirFieldWhileItsBitIsSet) {
  GaugeRegistry registry;
  registerGaugeTypes(registry, scratchDir("power"));
  for (const FieldCase& field : kFieldCases) {
    const std::string key = QString::fromStdU16String(field.key).toStdString();
    GaugeRegistration* entry = registry.findGauge(field.key);
    ASSERT_TRUE(entry != nullptr && entry->gauge) << key;
    GpsFix fix;
    field.set(fix);
    fix.flags = field.bit;
    entry->gauge->update(fix);
    EXPECT_EQ(QString::fromStdU16String(entry->gauge->format()), QString::fromUtf8(field.expected)) << key;
    fix.flags = 0x7FFF & ~field.bit;  // every other bit set: the old number is not shown
    entry->gauge->update(fix);
    EXPECT_EQ(entry->gauge->format(), u"-") << key;
  }
}

// All five rows of gauges fit the client area, shrinking on low screens, and the fonts follow
// the cell.
TEST(GaugesGrid, FiveRowsFitTheClientAreaAndFontsFollowTheCell) {
  const struct {
    int width, height;  // client area
    int cellWidth, cellHeight;
    double minScale, maxScale;
  } cases[] = {
      {240, 320, 120, 55, 1.0, 1.0},    // the original screen
      {240, 268, 120, 53, 0.96, 0.97},  // 240 x 320 less the menu and status bars
      {480, 225, 240, 45, 0.81, 0.82},  // 480 x 272 less the bars
      {800, 450, 400, 90, 1.6, 1.7},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::to_string(c.width) + "x" + std::to_string(c.height));
    const GaugeGrid grid = gaugeGrid(c.width, c.height);
    EXPECT_EQ(grid.cellWidth, c.cellWidth);
    EXPECT_EQ(grid.cellHeight, c.cellHeight);
    EXPECT_GE(grid.scale, c.minScale);
    EXPECT_LE(grid.scale, c.maxScale);
    EXPECT_LE(gaugeCellRect(grid, 9).bottom(), c.height - 1);
    EXPECT_EQ(gaugeCellAt(grid, c.width - 1, gaugeCellRect(grid, 9).bottom()), 9);
  }
  EXPECT_EQ(gaugeCellRect(gaugeGrid(800, 450), 9), QRect(400, 360, 400, 90));
  EXPECT_EQ(gaugeCellAt(gaugeGrid(240, 268), 130, 60), 3);
}

}  // namespace
}  // namespace orvel::test
