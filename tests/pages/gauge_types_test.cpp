#include <cstdlib>
#include <fstream>
#include <string>

#include "gps/ole_date.h"
#include "pages/gauge.h"
#include "pages/gauge_types.h"
#include "pages_fixture.h"

namespace orvel::test {
namespace {

// The fifteen types in a registry of the test's own, the battery reading its own folder.
class GaugeTypes : public ::testing::Test {
 protected:
  void SetUp() override {
    static int serial = 0;
    root_ = scratchDir("power-" + std::to_string(serial++));
    registerGaugeTypes(registry_, root_);
  }
  GaugeRegistration* findGauge(std::u16string_view key) const { return registry_.findGauge(key); }
  GaugeRegistration* gaugeList() const { return registry_.gaugeList(); }
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

class BatteryGaugeTest : public GaugeTypes {
 protected:
  void supply(const std::string& name, const std::string& type, const std::string& attribute,
              const std::string& value) {
    std::filesystem::create_directories(root_ / name);
    std::ofstream(root_ / name / "type") << type << "\n";
    std::ofstream(root_ / name / attribute) << value << "\n";
  }
};

TEST_F(BatteryGaugeTest, ExternalPowerShowsChargingElseTheBatteryCharge) {
  struct Supply {
    std::string name, type, attribute, value;
  };
  const struct {
    std::vector<Supply> supplies;
    const char* shown;
  } cases[] = {
      {{{"AC", "Mains", "online", "1"}, {"BAT0", "Battery", "capacity", "57"}}, "Зарядка"},
      {{{"AC", "Mains", "online", "0"}, {"BAT0", "Battery", "capacity", "57"}}, "57 %"},
      {{{"BAT1", "Battery", "capacity", "100"}, {"usb", "USB", "online", "1"}}, "Зарядка"},
      {{{"BAT0", "Battery", "capacity", "255"}}, "-"},  // an unknown charge
  };
  for (const auto& c : cases) {
    std::filesystem::remove_all(root_);
    for (const Supply& s : c.supplies) supply(s.name, s.type, s.attribute, s.value);
    GpsFix fix;
    findGauge(u"power")->gauge->update(fix);  // the fix does not matter
    EXPECT_EQ(shown(u"power"), QString::fromUtf8(c.shown)) << c.supplies.size();
  }
}

}  // namespace
}  // namespace orvel::test
