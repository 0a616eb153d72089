// The NMEA protocol on a fake clock (bursts, hand-over, silence, what passes for NMEA), and
// single sentences: the rules the real captures do not show, worked out by hand.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <optional>
#include <string>
#include <vector>

#include "gps/nmea_protocol.h"
#include "gps/ole_date.h"
#include "gps_test_support.h"

namespace orvel {
namespace {

using test::bytesOf;
using test::nmeaLine;
constexpr auto kNothing = ProcessResult::kNothing;
constexpr auto kRecognised = ProcessResult::kRecognised;
constexpr auto kFailed = ProcessResult::kFailed;

const std::string kGga = "$GPGGA,030719.000,3747.0873,S,17518.8938,E,1,08,1.1,59.9,M,23.7,M,,0000*7D\r\n";
const std::string kGsa = "$GPGSA,A,3,17,28,06,01,30,20,26,13,,,,,1.8,1.1,1.5*33\r\n";
const std::string kRmc = "$GPRMC,030719.000,A,3747.0873,S,17518.8938,E,0.69,181.39,311214,,,A*7D\r\n";

class NmeaProtocolTest : public ::testing::Test {
 protected:
  void SetUp() override {
    nmea.setPort(&port);
    nmea.open();
  }
  ProcessResult feedAt(uint32_t t, std::string_view text) {
    now = t;
    return nmea.process(test::bytesOf(text));
  }
  ProcessResult silentAt(uint32_t t) {
    now = t;
    return nmea.process({});
  }
  // Bytes in reads of `chunk`, 20 ms apart, starting after `t`; the last result.
  ProcessResult trickle(uint32_t& t, std::string_view text, size_t chunk) {
    ProcessResult last = kNothing;
    for (size_t i = 0; i < text.size() && last != kFailed; i += chunk) last = feedAt(t += 20, text.substr(i, chunk));
    return last;
  }

  uint32_t now = 1000;
  test::FakePort port;
  test::FixCollector collected;
  NmeaProtocol nmea{[this] { return now; }, collected};
};

TEST_F(NmeaProtocolTest, ABurstMergesAndIsHandedOnAfterAQuietGap) {
  EXPECT_EQ(feedAt(1010, kGga + kGsa + "$"), kRecognised);
  EXPECT_EQ(silentAt(1110), kNothing);  // 100 ms is not yet a gap
  EXPECT_TRUE(collected.fixes.empty());
  EXPECT_EQ(silentAt(1111), kRecognised);
  ASSERT_EQ(collected.fixes.size(), 1u);
  EXPECT_EQ(collected.fixes[0].flags, 0x782Au);  // GGA and GSA together
  EXPECT_EQ(silentAt(1500), kNothing);           // nothing pending any more
  EXPECT_EQ(nmea.assembling().flags, 0u);
}

TEST_F(NmeaProtocolTest, AContinuousStreamHandsOnEveryThreeSeconds) {
  for (uint32_t t = 1500; t <= 4000; t += 500) feedAt(t, kGsa);  // never a quiet gap
  EXPECT_TRUE(collected.fixes.empty());  // exactly 3000 ms after open: not yet
  feedAt(4001, kGsa);
  EXPECT_EQ(collected.fixes.size(), 1u);
  feedAt(7001, kGsa);
  EXPECT_EQ(collected.fixes.size(), 1u);
  feedAt(7002, kGsa);
  EXPECT_EQ(collected.fixes.size(), 2u);
}

TEST_F(NmeaProtocolTest, SilenceCountsAcrossTheTickWrap) {
  now = 0xFFFFF000u;
  nmea.open();
  EXPECT_EQ(feedAt(0xFFFFFF00u, kGsa + "$"), kRecognised);
  EXPECT_EQ(silentAt(0x00000100u), kRecognised);  // 512 ms later, past the wrap
  EXPECT_EQ(collected.fixes.size(), 1u);
  // Five seconds after the bytes came: 0xFFFFFF00 + 5000 wraps to 4744.
  EXPECT_EQ(silentAt(4744u), kNothing);
  EXPECT_EQ(silentAt(4745u), kFailed);
}

TEST_F(NmeaProtocolTest, WhatIsNoNmeaFailsAndWhatIsPasses) {
  struct Case {
    const char* name;
    std::string text;
    size_t chunk;
    ProcessResult result = kFailed;
    uint32_t flags = 0;  // of the fix assembled by then, when given
  };
  std::string binaryLines(200, '\x01');
  binaryLines[50] = '\n';
  std::string binarySentence = "$GPRMC,";
  for (int i = 0; i < 200; ++i) binarySentence += static_cast<char>(i % 32);
  std::string prose;
  while (prose.size() < 5000) prose += "Lorem ipsum dolor sit amet, consectetur adipiscing elit\r\n";
  const std::string longOne = nmeaLine("PMTKCHN," + std::string(190, '0'));
  const Case cases[] = {
      {"128 bytes without a dollar or a line", std::string(128, 'A'), 1024},
      {"127 bytes are not yet too many", std::string(127, 'A'), 1024, kNothing},
      {"binary overflowing the buffer", binaryLines, 10},
      {"an overlong sentence with binary inside", kGsa + binarySentence, 10},
      {"endless text without sentences", prose, 10},
      {"a short piece between two dollars", kGsa + "$GP$" + kRmc, 1024},
      {"a control byte among the eight after a dollar", kGsa + "$\x8e\x03\x10GPS data\r\n" + kRmc, 1024},
      {"a byte beyond ASCII among the eight after a dollar", kGsa + "$GP\xc3\x89,1,2,3,4\r\n" + kRmc, 1024},
      // Any printable address: four letters, lower case.
      {"u-blox", kGsa + "$PUBX,00,081350.00,4717.113210,N,00833.915187,E*5C\r\n" + kRmc + "$", 1024, kRecognised},
      {"lower case", kGsa + "$pgrmz,93,f,3*21\r\n" + kRmc + "$", 1024, kRecognised},
      // Printable sentences longer than the buffer are skipped.
      {"overlong sentences in small reads", kGsa + longOne + kRmc + longOne + kGga + "$", 10, kRecognised,
       0x0383u | 0x782Au},
      {"overlong sentences in large reads", kGsa + longOne + kRmc + longOne + kGga + "$", 1024, kRecognised,
       0x0383u | 0x782Au},
  };
  for (const Case& c : cases) {
    uint32_t t = now = 1000;
    nmea.open();
    EXPECT_EQ(trickle(t, c.text, c.chunk), c.result) << c.name;
    EXPECT_EQ(c.flags != 0 ? nmea.assembling().flags : 0u, c.flags) << c.name;
  }
}

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

std::vector<SentenceCase> sentenceCases() {
  using F = GpsFix;
  return {
      {"RmcWrongChecksumDropped", "$GPRMC,030719.000,A,3747.0873,S,17518.8938,E,0.69,181.39,311214,,,A*7E\r\n", 0},
      {"RmcLowerCaseChecksum", "$GPRMC,030719.000,A,3747.0873,S,17518.8938,E,0.69,181.39,311214,,,A*7d\r\n",
       kRmcAll},
      {"RmcWithoutChecksumAccepted", "$GPRMC,030719.000,A,3747.0873,S,17518.8938,E,0.69,181.39,311214,,,A\r\n",
       kRmcAll},
      // Only "*hh" CR LF at the line's end is a checksum; anything else goes unchecked.
      {"RmcChecksumWithoutCrUnchecked", "$GPRMC,030719.000,A,3747.0873,S,17518.8938,E,0.69,181.39,311214,,,A*00\n",
       kRmcAll},
      {"RmcWestVariationAndFraction", nmeaLine("GPRMC,235959.50,A,4807.038,N,01131.000,W,022.4,084.4,311299,003.1,W"),
       kRmcAll, {{&F::latitude, 48.1173}, {&F::longitude, -11.5166667}, {&F::speed, 22.4 * 1.852},
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

      // "No fix" takes back what came before in the burst.
      {"GsaNoFixAfterGga", kGga + "$GPGSA,A,1,,,,,,,,,,,,,,,*1E\r\n", kGgaNoFix, {}, kFixTypeInvalid},
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
  EXPECT_TRUE(nmea.parseSentences(bytesOf("$GPR C,1,2,3,4\r\n")));
  // Unknown type and wrong checksum still count as NMEA.
  EXPECT_TRUE(nmea.parseSentences(bytesOf("$GPRMC,030719.000,A,3747.0873,S*00\r\n")));
  EXPECT_EQ(nmea.assembling().flags, 0u);
}

}  // namespace
}  // namespace orvel
