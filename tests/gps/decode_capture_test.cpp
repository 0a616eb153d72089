// Every recorded receiver capture decoded by orvel-tool as the port scanner would run it,
// against the output kept beside it (X.fixes, rewritten by scripts/regen-expected), and
// the simulated line the replay feeds the protocols through.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "common/test_data.h"
#include "common/tool_run.h"
#include "gps/capture_replay.h"
#include "gps/garmin_packet.h"
#include "gps/nmea_protocol.h"
#include "gps/replay_line.h"
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

// Two well-formed Garmin packets are enough to take a capture for Garmin binary; bursts
// then start after each position record.
TEST(CaptureLayout, TwoGarminPacketsMakeABinaryCapture) {
  std::vector<uint8_t> capture = frameGarminPacket(kGarminPvt, std::vector<uint8_t>(64, 1));
  EXPECT_FALSE(analyseCapture(capture).garminBinary);
  const auto second = frameGarminPacket(0x72, std::vector<uint8_t>(8, 2));
  capture.insert(capture.end(), second.begin(), second.end());
  const CaptureLayout layout = analyseCapture(capture);
  EXPECT_TRUE(layout.garminBinary);
  EXPECT_EQ(layout.burstStarts, std::vector<size_t>{capture.size() - second.size()});
}

}  // namespace
}  // namespace orvel
