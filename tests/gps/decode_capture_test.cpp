// Every recorded receiver capture decoded by orvel-tool as the port scanner would run it,
// against the output kept beside it (X.fixes, rewritten by scripts/regen-expected); binary
// captures never taken for NMEA; a recorded drive's sentences moved onto the demo map.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "common/test_data.h"
#include "common/tool_run.h"
#include "gps/demo_capture.h"
#include "gps/nmea_protocol.h"
#include "gps_test_support.h"

namespace orvel {
namespace {

namespace fs = std::filesystem;

std::vector<fs::path> captures(const std::string& folder) {
  return test::filesIn(test::dataDir() / "gps" / folder, [](const std::string& name) {
    return !name.ends_with(".fixes") && !name.ends_with(".chk") && !name.ends_with(".md");
  });
}

std::vector<fs::path> allCaptures() {
  std::vector<fs::path> all;
  for (const char* folder : {"nmea", "garmin_binary", "other_binary"}) {
    const auto some = captures(folder);
    all.insert(all.end(), some.begin(), some.end());
  }
  return all;
}

class Capture : public ::testing::TestWithParam<fs::path> {};

TEST_P(Capture, DecodesToItsFixesFile) {
  const fs::path& capture = GetParam();
  ASSERT_FALSE(fs::is_directory(capture)) << "no captures in " << capture;
  const auto run = test::runProgram(ORVEL_TOOL_PATH, "decode --verbose '" + capture.filename().string() + "'",
                                    capture.parent_path());
  test::expectSameAsFile(test::expectedForm(run), capture.string() + ".fixes");
}

INSTANTIATE_TEST_SUITE_P(Captures, Capture, ::testing::ValuesIn(allCaptures()),
                         [](const auto& info) { return test::testNameFor(info.param); });

// However the reads cut it, binary data never passes for NMEA.
TEST(BinaryCaptures, AreNeverTakenForNmeaWhateverTheReads) {
  for (const char* folder : {"garmin_binary", "other_binary"}) {
    for (const fs::path& capture : captures(folder)) {
      const auto bytes = test::readFile(capture);
      test::FixCollector sink;
      NmeaProtocol nmea([] { return 0u; }, sink);
      for (size_t chunk : {size_t{1}, size_t{13}, size_t{1024}}) {
        nmea.open();
        for (size_t at = 0; at < bytes.size(); at += chunk) {
          const size_t n = std::min(chunk, bytes.size() - at);
          const ProcessResult result = nmea.process(std::span<const uint8_t>(bytes.data() + at, n));
          ASSERT_NE(result, ProcessResult::kRecognised) << capture << ": reads of " << chunk << " at " << at;
          if (result == ProcessResult::kFailed) nmea.open();
        }
      }
    }
  }
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
