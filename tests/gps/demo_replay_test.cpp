// The demo: a recorded drive moved onto the demo map and replayed through the NMEA protocol
// in a thread of its own.
#include <gtest/gtest.h>

#include <string>

#include "common/test_data.h"
#include "gps/demo_capture.h"
#include "gps/demo_replay.h"
#include "gps_test_support.h"

namespace orvel {
namespace {

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
      // A tenth of a minute east at 52.85°N is kept as the same distance at 43.74°N.
      {test::nmeaLine("GPRMC,1,A,5251.0000,N,00518.1000,E,,,200818,,"),
       test::nmeaLine("GPRMC,1,A,4344.4000,N,00725.8836,E,,,200818,,")},
  };
  for (const Case& c : cases) EXPECT_EQ(shiftSentence(c.in, from, to), c.expected.empty() ? c.in : c.expected);
  // Across the equator and the prime meridian the hemispheres follow the sign.
  EXPECT_EQ(shiftSentence(test::nmeaLine("GPGGA,1,0001.0000,N,00001.0000,E,1,5,1,0,M,0,M,,"), GeoPoint{0.0, 0.0},
                          GeoPoint{-0.05, -0.05}),
            test::nmeaLine("GPGGA,1,0002.0000,S,00002.0000,W,1,5,1,0,M,0,M,,"));
}

}  // namespace
}  // namespace orvel
