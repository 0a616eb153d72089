// Single sentences through the framing, the checksum and the decoders: the rules the real
// captures (decode_capture_test) do not all show. Expected values are worked out by hand.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <optional>
#include <string>
#include <vector>

#include "gps/nmea_protocol.h"
#include "gps/nmea_sentences.h"
#include "gps/ole_date.h"
#include "gps_test_support.h"

namespace orvel {
namespace {

using test::bytesOf;
using test::nmeaLine;

struct FieldValue {
  float GpsFix::*field;
  double value;
};

struct SentenceCase {
  std::string name;
  std::string text;
  uint32_t flags;  // the assembled fix's flags afterwards, exactly
  std::vector<FieldValue> values = {};
  std::optional<uint32_t> fixType = {};
  std::optional<CalendarTime> time = {};
};

double automationDate(CalendarTime t) {
  double date = 0.0;
  EXPECT_TRUE(calendarToAutomationDate(t, date));
  return date;
}

constexpr uint32_t kRmcAll = kFixTime | kFixPosition | kFixSpeed | kFixCourse | kFixMagneticVariation;
constexpr uint32_t kGgaAll =
    kFixPosition | kFixSatellitesUsed | kFixHdop | kFixType | kFixAltitude | kFixGeoidSeparation;
constexpr uint32_t kGgaNoFix = kFixSatellitesUsed | kFixType | kFixAltitude | kFixGeoidSeparation;

const std::string kBu353Rmc = "$GPRMC,030719.000,A,3747.0873,S,17518.8938,E,0.69,181.39,311214,,,A*7D\r\n";

std::vector<SentenceCase> sentenceCases() {
  using F = GpsFix;
  return {
      {"RmcSouthEast", kBu353Rmc, kRmcAll,
       {{&F::latitude, -37.7847883}, {&F::longitude, 175.3148967}, {&F::speed, 0.69 * 1.852},
        {&F::course, 181.39}, {&F::magneticVariation, 0.0}},
       {}, CalendarTime{2014, 12, 31, 3, 7, 19, 0}},
      {"RmcWrongChecksumDropped", "$GPRMC,030719.000,A,3747.0873,S,17518.8938,E,0.69,181.39,311214,,,A*7E\r\n", 0},
      {"RmcLowerCaseChecksum", "$GPRMC,030719.000,A,3747.0873,S,17518.8938,E,0.69,181.39,311214,,,A*7d\r\n",
       kRmcAll},
      {"RmcWithoutChecksumAccepted", "$GPRMC,030719.000,A,3747.0873,S,17518.8938,E,0.69,181.39,311214,,,A\r\n",
       kRmcAll},
      // Only "*hh" CR LF at the line's end is a checksum; anything else goes unchecked.
      {"RmcChecksumWithoutCrUnchecked", "$GPRMC,030719.000,A,3747.0873,S,17518.8938,E,0.69,181.39,311214,,,A*00\n",
       kRmcAll},
      {"RmcWestVariationAndFraction", nmeaLine("GPRMC,235959.50,A,4807.038,N,01131.000,W,022.4,084.4,311299,003.1,W"),
       kRmcAll,
       {{&F::latitude, 48.1173}, {&F::longitude, -11.5166667}, {&F::speed, 22.4 * 1.852},
        {&F::magneticVariation, -3.1}},
       {}, CalendarTime{2099, 12, 31, 23, 59, 59, 500}},
      {"RmcEmptyLongitudeKeepsTheRest", nmeaLine("GPRMC,120000,A,4807.038,N,,E,022.4,084.4,230394,003.1,W"),
       kRmcAll & ~kFixPosition, {{&F::course, 84.4}}, {}, CalendarTime{2094, 3, 23, 12, 0, 0, 0}},
      {"RmcTooFewFieldsDropped", "$GPRMC,000344.03,A,4808.9992,N,4,02.3\r\n", 0},
      {"ProprietaryPgrmcIsNotRmc", nmeaLine("PGRMC,A,218.8,100,6378137.000,298.257223563,0.0,0.0,0.0,A,3,1,1,4,30"), 0},

      {"GgaQualityZeroClearsPosition",
       "$GPGGA,235946.005,8960.000000,N,00000.000000,E,0,0,,137.000,M,13.000,M,,*49\r\n", kGgaNoFix,
       {{&F::altitude, 137.0}}, kFixTypeInvalid},
      {"GgaFeet", nmeaLine("GPGGA,120000,4807.038,N,01131.000,E,1,08,0.9,1000,F,100,F,,"), kGgaAll,
       {{&F::altitude, 304.8}, {&F::geoidSeparation, 30.48}}, kFixType3D},


      {"PgrmeFeet", nmeaLine("PGRME,30,f,60,f,90,f"), kFixHorizontalError | kFixVerticalError,
       {{&F::horizontalError, 9.144}, {&F::verticalError, 18.288}}},

      {"GsaNoFixClearsDops", "$GPGSA,A,1,,,,,,,,,,,,,,,*1E\r\n", kFixType, {}, kFixTypeInvalid},

      // "No fix" takes back what came before in the burst.
      {"GsaNoFixAfterGga",
       "$GPGGA,030719.000,3747.0873,S,17518.8938,E,1,08,1.1,59.9,M,23.7,M,,0000*7D\r\n"
       "$GPGSA,A,1,,,,,,,,,,,,,,,*1E\r\n",
       kGgaNoFix, {}, kFixTypeInvalid},
  };
}

TEST(NmeaSentence, FillsTheAssembledFix) {
  for (const SentenceCase& c : sentenceCases()) {
    SCOPED_TRACE(c.name);
    test::FixCollector sink;
    NmeaProtocol nmea([] { return 0u; }, sink);
    nmea.open();
    EXPECT_TRUE(nmea.parseSentences(bytesOf(c.text)));
    const GpsFix& fix = nmea.assembling();
    EXPECT_EQ(fix.flags, c.flags) << std::hex << fix.flags;
    for (const FieldValue& v : c.values) {
      EXPECT_NEAR(fix.*v.field, v.value, std::max(2e-5, std::abs(v.value) * 2e-7));
    }
    EXPECT_EQ(fix.fixType, c.fixType.value_or(fix.fixType));
    if (c.time) {
      EXPECT_NEAR(fix.time, automationDate(*c.time), 1e-8);
    }
  }
}

TEST(NmeaFraming, ALineCountsFromNineBytesOnAndOnlyAfterADollar) {
  test::FixCollector sink;
  NmeaProtocol nmea([] { return 0u; }, sink);
  EXPECT_FALSE(nmea.parseSentences(bytesOf("")));
  EXPECT_FALSE(nmea.parseSentences(bytesOf("GPRMC,1,2,3,4,5,6\r\n")));
  EXPECT_FALSE(nmea.parseSentences(bytesOf("$1234567")));
  EXPECT_TRUE(nmea.parseSentences(bytesOf("$12345678")));
  // Whatever printable follows the "$": lower case, blanks.
  EXPECT_TRUE(nmea.parseSentences(bytesOf(nmeaLine("gpRMC,030719.000,A,3747.0873,S,17518.8938,E,0.69,,311214,,"))));
  EXPECT_TRUE(nmea.parseSentences(bytesOf("$GPR C,1,2,3,4\r\n")));
  EXPECT_TRUE(nmea.parseSentences(bytesOf("# a comment\r\n$GPXXX,1,2*00\r\n")));
  // Unknown type and wrong checksum still count as NMEA.
  EXPECT_TRUE(nmea.parseSentences(bytesOf("$GPRMC,030719.000,A,3747.0873,S*00\r\n")));
  EXPECT_EQ(nmea.assembling().flags, 0u);
}

}  // namespace
}  // namespace orvel
