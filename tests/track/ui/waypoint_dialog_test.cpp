// Lengths as the waypoint dialog shows them, in the altitude unit the program owns.
#include <gtest/gtest.h>

#include "track/ui/waypoint_dialog.h"

namespace orvel {
namespace {

struct LengthCase {
  int unit;
  float value;
  bool givenInMetres;
  bool whole;
  const char16_t* expected;
};

TEST(FormatLength, RoundsToTenthsOrWholeInTheAltitudeUnit) {
  const LengthCase cases[] = {
      {kUnitMetres, 152.37f, true, false, u"152.4"},
      {kUnitMetres, 12.96f, true, false, u"13.0"},  // carries into the units
      {kUnitMetres, 12.94f, true, false, u"12.9"},
      {kUnitMetres, 0.0f, true, false, u"0.0"},
      {kUnitMetres, 0.04f, true, false, u"0.0"},
      {kUnitMetres, -5.25f, true, false, u"-5.3"},
      {kUnitMetres, 9.99f, true, false, u"10.0"},
      {kUnitMetres, 2.5f, true, true, u"3"},
      {kUnitMetres, 2.49f, true, true, u"2"},
      {kUnitMetres, -0.5f, true, true, u"-1"},
      {kUnitMetres, 1234567.0f, true, true, u"1234567"},
      {kUnitFeet, 100.0f, true, false, u"328.1"},  // metres shown in feet
      {kUnitFeet, 100.0f, true, true, u"328"},
      {kUnitFeet, 328.0f, false, false, u"328.0"},  // feet stay feet
      {kUnitMetres, 328.08399f, false, false, u"100.0"},  // feet shown in metres
      {kUnitMetres, 3280.8399f, false, true, u"1000"},
  };
  for (const LengthCase& c : cases) {
    LengthFormat lengths;
    lengths.setAltitudeUnit(c.unit);
    EXPECT_EQ(lengths.formatLength(c.value, c.givenInMetres, c.whole), std::u16string(c.expected))
        << "unit " << c.unit << " value " << c.value << " whole " << c.whole;
  }
}

}  // namespace
}  // namespace orvel
