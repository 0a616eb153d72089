// Single sentences through the framing, the checksum and the decoders, mostly real ones
// taken from receiver captures. Expected values are worked out by hand from the text.
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
      {"RmcEastVariation", "$GPRMC,225308,A,4527.458,S,16709.165,E,000.0,094.5,060601,024.1,E*6D\r\n", kRmcAll,
       {{&F::latitude, -45.4576333}, {&F::longitude, 167.1527500}, {&F::speed, 0.0}, {&F::course, 94.5},
        {&F::magneticVariation, 24.1}},
       {}, CalendarTime{2001, 6, 6, 22, 53, 8, 0}},
      {"RmcWestVariationAndFraction", nmeaLine("GPRMC,235959.50,A,4807.038,N,01131.000,W,022.4,084.4,311299,003.1,W"),
       kRmcAll,
       {{&F::latitude, 48.1173}, {&F::longitude, -11.5166667}, {&F::speed, 22.4 * 1.852},
        {&F::magneticVariation, -3.1}},
       {}, CalendarTime{2099, 12, 31, 23, 59, 59, 500}},
      {"RmcStatusVoidDropped", "$GPRMC,214350,V,4023.8600,N,00339.1630,W,10.8,0.0,140605,2.5,W,S*21\r\n", 0},
      {"RmcBadDateNoTime",
       "$GPRMC,000231.099,A,4829.0005,N,00022.0015,E,0.15,212.28,2208-1,,,A*73\r\n",
       kRmcAll & ~kFixTime, {{&F::latitude, 48.4833417}, {&F::longitude, 0.3666917}}},
      {"RmcEmptyLongitudeKeepsTheRest", nmeaLine("GPRMC,120000,A,4807.038,N,,E,022.4,084.4,230394,003.1,W"),
       kRmcAll & ~kFixPosition, {{&F::course, 84.4}}, {}, CalendarTime{2094, 3, 23, 12, 0, 0, 0}},
      {"RmcTooFewFieldsDropped", "$GPRMC,000344.03,A,4808.9992,N,4,02.3\r\n", 0},
      {"RmcFromGnTalker", "$GNRMC,003956.00,A,4552.65403,S,17030.00668,E,0.025,,120419,,,A,V*07\r\n", kRmcAll,
       {{&F::latitude, -45.8775672}, {&F::longitude, 170.5001113}, {&F::course, 0.0}},
       {}, CalendarTime{2019, 4, 12, 0, 39, 56, 0}},
      {"ProprietaryPgrmcIsNotRmc", nmeaLine("PGRMC,A,218.8,100,6378137.000,298.257223563,0.0,0.0,0.0,A,3,1,1,4,30"), 0},
      {"UnknownTypeIgnored", nmeaLine("GPZDA,201530.00,04,07,2002,00,00"), 0},

      {"GgaGpsFix", "$GPGGA,030719.000,3747.0873,S,17518.8938,E,1,08,1.1,59.9,M,23.7,M,,0000*7D\r\n", kGgaAll,
       {{&F::latitude, -37.7847883}, {&F::longitude, 175.3148967}, {&F::hdop, 1.1}, {&F::altitude, 59.9},
        {&F::geoidSeparation, 23.7}},
       kFixType3D},
      {"GgaQualityZeroClearsPosition",
       "$GPGGA,235946.005,8960.000000,N,00000.000000,E,0,0,,137.000,M,13.000,M,,*49\r\n", kGgaNoFix,
       {{&F::altitude, 137.0}}, kFixTypeInvalid},
      {"GgaSimulatorWest", "$GPGGA,214350,4023.8600,N,00339.1630,W,8,09,2.0,695.7,M,51.6,M,,*5A\r\n", kGgaAll,
       {{&F::latitude, 40.3976667}, {&F::longitude, -3.6527167}, {&F::altitude, 695.7}}, kFixTypeSimulation},
      {"GgaDifferential", "$GPGGA,200004,5504.4343,N,01025.5386,E,2,03,2.5,-9.1,M,43.9,M,,*62\r\n", kGgaAll,
       {{&F::altitude, -9.1}, {&F::hdop, 2.5}}, kFixType3DDiff},
      {"GgaFeet", nmeaLine("GPGGA,120000,4807.038,N,01131.000,E,1,08,0.9,1000,F,100,F,,"), kGgaAll,
       {{&F::altitude, 304.8}, {&F::geoidSeparation, 30.48}}, kFixType3D},
      {"GgaEmptyQualityIsUnknown",
       nmeaLine("GPGGA,005947.00,3715.6616,N,12157.6709,W,,11,0.8,86.0,M,-30.1,M,,"), kGgaAll,
       {{&F::longitude, -121.9611817}, {&F::geoidSeparation, -30.1}}, kFixTypeUnknown},
      {"GgaCutShortDropped", "$GPGGA,030130\r\n", 0},
      {"GgaFromInTalker", "$INGGA,194104,4426.1138,N,07140.5536,W,2,10,0.9,267.9,M,,,,*13\r\n", kGgaAll,
       {{&F::latitude, 44.4352300}, {&F::longitude, -71.6758933}}, kFixType3DDiff},

      {"GllValid", "$GPGLL,4527.458,S,16709.165,E,225309,A*3E\r\n", kFixPosition,
       {{&F::latitude, -45.4576333}, {&F::longitude, 167.1527500}}},
      {"GllFromInTalker", "$INGLL,4426.1130,N,07140.5579,W,194102,A*2C\r\n", kFixPosition,
       {{&F::latitude, 44.4352167}, {&F::longitude, -71.6759650}}},
      {"GllVoidIgnored", "$GPGLL,4023.8600,N,00339.1630,W,214350,V,S*57\r\n", 0},
      {"VtgRecognisedAndIgnored", "$GPVTG,87.21,T,,M,0.12,N,0.2,K*5D\r\n", 0},

      {"HdgFromSounder", "$SDHDG,229.8,,,1.3,E*36\r\n", kFixCourse, {{&F::course, 229.8}}},
      {"HdgFromCompass", nmeaLine("HCHDG,101.1,,,7.1,W"), kFixCourse, {{&F::course, 101.1}}},
      {"PgrmzFeet", "$PGRMZ,48,f,3*27\r\n", kFixAltitude, {{&F::altitude, 48 / 3.28084}}},
      {"PgrmzMetres", nmeaLine("PGRMZ,100,m,3"), kFixAltitude, {{&F::altitude, 100.0}}},
      {"PgrmeMetres", "$PGRME,9.1,M,15.0,M,12.0,M*21\r\n", kFixHorizontalError | kFixVerticalError,
       {{&F::horizontalError, 9.1}, {&F::verticalError, 15.0}}},
      {"PgrmeFeet", nmeaLine("PGRME,30,f,60,f,90,f"), kFixHorizontalError | kFixVerticalError,
       {{&F::horizontalError, 9.144}, {&F::verticalError, 18.288}}},

      {"Gsa3D", "$GPGSA,A,3,17,28,06,01,30,20,26,13,,,,,1.8,1.1,1.5*33\r\n", kFixType | kFixHdop | kFixVdop,
       {{&F::hdop, 1.1}, {&F::vdop, 1.5}}, kFixType3D},
      {"Gsa2D", "$GPGSA,A,2,06,,,,,,19,22,,,,,2.7,2.5,1.0*3E\r\n", kFixType | kFixHdop | kFixVdop,
       {{&F::hdop, 2.5}, {&F::vdop, 1.0}}, kFixType2D},
      {"GsaNoFixClearsDops", "$GPGSA,A,1,,,,,,,,,,,,,,,*1E\r\n", kFixType, {}, kFixTypeInvalid},
      {"GsaFromGnTalker", "$GNGSA,A,2,02,08,10,23,27,,,,,,,,1.6,1.3,0.9,1*33\r\n", kFixType | kFixHdop | kFixVdop,
       {{&F::hdop, 1.3}, {&F::vdop, 0.9}}, kFixType2D},

      // Sentences of one burst merge; "no fix" takes back what came before.
      {"GsaNoFixAfterGga",
       "$GPGGA,030719.000,3747.0873,S,17518.8938,E,1,08,1.1,59.9,M,23.7,M,,0000*7D\r\n"
       "$GPGSA,A,1,,,,,,,,,,,,,,,*1E\r\n",
       kGgaNoFix, {}, kFixTypeInvalid},
      {"RmcThenGgaMerge",
       kBu353Rmc + "$GPGGA,030719.000,3747.0873,S,17518.8938,E,1,08,1.1,59.9,M,23.7,M,,0000*7D\r\n",
       kRmcAll | kGgaAll, {{&F::speed, 0.69 * 1.852}, {&F::altitude, 59.9}}, kFixType3D},
  };
}

class NmeaSentence : public ::testing::TestWithParam<SentenceCase> {};

TEST_P(NmeaSentence, FillsTheAssembledFix) {
  const SentenceCase& c = GetParam();
  test::FixCollector sink;
  NmeaProtocol nmea([] { return 0u; }, sink);
  nmea.open();
  EXPECT_TRUE(nmea.parseSentences(bytesOf(c.text)));
  const GpsFix& fix = nmea.assembling();
  EXPECT_EQ(fix.flags, c.flags) << std::hex << fix.flags;
  for (const FieldValue& v : c.values) {
    EXPECT_NEAR(fix.*v.field, v.value, std::max(2e-5, std::abs(v.value) * 2e-7));
  }
  if (c.fixType) {
    EXPECT_EQ(fix.fixType, *c.fixType);
  }
  if (c.time) {
    EXPECT_NEAR(fix.time, automationDate(*c.time), 1e-8);
  }
}

INSTANTIATE_TEST_SUITE_P(Table, NmeaSentence, ::testing::ValuesIn(sentenceCases()),
                         [](const ::testing::TestParamInfo<SentenceCase>& info) { return info.param.name; });

TEST(NmeaFraming, ALineCountsFromNineBytesOnAndOnlyAfterADollar) {
  test::FixCollector sink;
  NmeaProtocol nmea([] { return 0u; }, sink);
  EXPECT_FALSE(nmea.parseSentences(bytesOf("")));
  EXPECT_FALSE(nmea.parseSentences(bytesOf("GPRMC,1,2,3,4,5,6\r\n")));
  EXPECT_FALSE(nmea.parseSentences(bytesOf("$1234567")));
  EXPECT_TRUE(nmea.parseSentences(bytesOf("$12345678")));
  // Whatever follows the "$": four-letter proprietary addresses, lower case, blanks.
  EXPECT_TRUE(nmea.parseSentences(bytesOf("$PUBX,00,081350.00,4717.113210,N*00\r\n")));
  EXPECT_TRUE(nmea.parseSentences(bytesOf("$PFEC,GPtps,101025222449,3,1,1\r\n")));
  EXPECT_TRUE(nmea.parseSentences(bytesOf(nmeaLine("gpRMC,030719.000,A,3747.0873,S,17518.8938,E,0.69,,311214,,"))));
  EXPECT_TRUE(nmea.parseSentences(bytesOf("$GPR C,1,2,3,4\r\n")));
  EXPECT_TRUE(nmea.parseSentences(bytesOf("# a comment\r\n$GPXXX,1,2*00\r\n")));
  // Unknown type and wrong checksum still count as NMEA.
  EXPECT_TRUE(nmea.parseSentences(bytesOf("$GPRMC,030719.000,A,3747.0873,S*00\r\n")));
  EXPECT_EQ(nmea.assembling().flags, 0u);
}

TEST(NmeaFields, MissingFieldsReadAsEmpty) {
  const NmeaFields fields("a,,c");
  EXPECT_EQ(fields.count(), 3u);
  EXPECT_EQ(fields[1], "a");
  EXPECT_EQ(fields[2], "");
  EXPECT_EQ(fields[3], "c");
  EXPECT_EQ(fields[4], "");
  EXPECT_EQ(fields[0], "");
  EXPECT_EQ(NmeaFields("").count(), 1u);
}

TEST(NmeaNumbers, ParseAsTheReceiversWriteThem) {
  EXPECT_EQ(parseNmeaUnsigned(""), 0u);
  EXPECT_EQ(parseNmeaUnsigned("  12x"), 12u);
  EXPECT_EQ(parseNmeaUnsigned("007"), 7u);
  EXPECT_EQ(parseNmeaUnsigned("-3"), 0u);
  EXPECT_DOUBLE_EQ(parseNmeaReal(""), 0.0);
  EXPECT_DOUBLE_EQ(parseNmeaReal(" -12.25"), -12.25);
  EXPECT_DOUBLE_EQ(parseNmeaReal("+.5"), 0.5);
  EXPECT_DOUBLE_EQ(parseNmeaReal("1e5"), 1.0);  // no exponents
  EXPECT_DOUBLE_EQ(parseNmeaReal("000115.4"), 115.4);
  EXPECT_NEAR(parseNmeaReal("3842.86006889"), 3842.86006889, 1e-9);
  EXPECT_NEAR(parseNmeaCoordinate("3842.86006889", "N", 2), 38.7143345, 1e-7);
  EXPECT_NEAR(parseNmeaCoordinate("11705.43645510", "W", 3), -117.0906076, 1e-7);
  EXPECT_NEAR(parseNmeaCoordinate("0000.0000", "S", 2), 0.0, 1e-12);
}

}  // namespace
}  // namespace orvel
