#include <string>

#include "pages/gauge.h"
#include "pages/gauge_types.h"
#include "pages_fixture.h"

namespace orvel::test {
namespace {

// The gauge types in a registry of the test's own.
class GaugeTypes : public ::testing::Test {
 protected:
  void SetUp() override {
    static int serial = 0;
    root_ = scratchDir("power-" + std::to_string(serial++));
    registerGaugeTypes(registry_, root_);
  }
  GaugeRegistration* findGauge(std::u16string_view key) const { return registry_.findGauge(key); }
  QString shown(std::u16string_view key) const {
    const GaugeRegistration* entry = findGauge(key);
    if (entry == nullptr || !entry->gauge) return QStringLiteral("<none>");
    return QString::fromStdU16String(entry->gauge->format());
  }

  GaugeRegistry registry_;
  std::filesystem::path root_;
};

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

TEST_F(GaugeTypes, FieldGaugesShowTheirFieldWhileItsBitIsSet) {
  for (const FieldCase& field : kFieldCases) {
    GaugeRegistration* entry = findGauge(field.key);
    ASSERT_NE(entry, nullptr);
    GpsFix fix;
    field.set(fix);
    fix.flags = field.bit;
    entry->gauge->update(fix);
    EXPECT_EQ(shown(field.key), QString::fromUtf8(field.expected)) << QString::fromStdU16String(field.key).toStdString();
    // Every other bit set but this one: the old number in the field is not shown.
    fix.flags = 0x7FFF & ~field.bit;
    entry->gauge->update(fix);
    EXPECT_EQ(shown(field.key), QStringLiteral("-")) << QString::fromStdU16String(field.key).toStdString();
  }
}


}  // namespace
}  // namespace orvel::test
