// The demo: a recorded drive moved onto the demo map and replayed through the NMEA protocol
// in a thread of its own.
#include <gtest/gtest.h>

#include <string>

#include "common/test_data.h"
#include "gps/demo_capture.h"
#include "gps/demo_replay.h"
#include "gps_test_support.h"
#include "pty_support.h"

namespace orvel {
namespace {

bool checksumHolds(const std::string& line) {
  const size_t star = line.find('*');
  if (star == std::string::npos) return false;
  uint8_t sum = 0;
  for (size_t i = 1; i < star; ++i) sum ^= static_cast<uint8_t>(line[i]);
  return std::stoul(line.substr(star + 1, 2), nullptr, 16) == sum;
}

TEST(DemoCapture, SentencesMoveAndKeepTheirForm) {
  const GeoPoint from{52.85, 5.30};
  const GeoPoint to{43.74, 7.43};
  struct Case {
    std::string in;
    std::string expected;  // "" when the line must stay as it was
  };
  const Case cases[] = {
      // Exactly at the anchor: 52°51.0000'N 5°18.0000'E becomes 43°44.4000'N 7°25.8000'E.
      {test::nmeaLine("GPRMC,094737,A,5251.0000,N,00518.0000,E,5.6,230.5,200818,1.4,E,A"),
       test::nmeaLine("GPRMC,094737,A,4344.4000,N,00725.8000,E,5.6,230.5,200818,1.4,E,A")},
      {test::nmeaLine("GNGGA,094737,5251.000,N,00518.000,E,1,08,1.0,0.5,M,46.5,M,,"),
       test::nmeaLine("GNGGA,094737,4344.400,N,00725.800,E,1,08,1.0,0.5,M,46.5,M,,")},
      {"$GPGLL,5251.0000,N,00518.0000,E,094737,A\r\n", "$GPGLL,4344.4000,N,00725.8000,E,094737,A\r\n"},
      // Empty coordinates, other sentences and junk stay.
      {test::nmeaLine("GPRMC,094737,V,,,,,,,200818,,"), ""},
      {test::nmeaLine("SDHDG,229.8,,,1.3,E"), ""},
      {test::nmeaLine("GPRMB,A,0.66,L,003,004,5251.000,N,00518.000,E,,,A"), ""},
      {"garbage, 5251.0,N\r\n", ""},
  };
  for (const Case& c : cases) {
    const std::string out = shiftSentence(c.in, from, to);
    EXPECT_EQ(out, c.expected.empty() ? c.in : c.expected) << c.in;
  }
  // A tenth of a minute east at 52.85°N is kept as the same distance at 43.74°N.
  const std::string east = shiftSentence(test::nmeaLine("GPRMC,1,A,5251.0000,N,00518.1000,E,,,200818,,"), from, to);
  EXPECT_TRUE(checksumHolds(east)) << east;
  EXPECT_NE(east.find("4344.4000,N,00725.8836,E"), std::string::npos) << east;
  // Across the equator and the prime meridian the hemispheres follow the sign.
  const std::string south = shiftSentence(test::nmeaLine("GPGGA,1,0001.0000,N,00001.0000,E,1,5,1,0,M,0,M,,"),
                                          GeoPoint{0.0, 0.0}, GeoPoint{-0.05, -0.05});
  EXPECT_NE(south.find(",0002.0000,S,00002.0000,W,"), std::string::npos) << south;
}

}  // namespace
}  // namespace orvel
