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

TEST(ReplayLineTiming, BytesArriveAtTheBaudRateWithASecondAfterEachBurst) {
  const std::string text(960, 'x');
  ReplayLine line(test::bytesOf(text), {480}, false);
  line.setLineSettings(4800, 8, false, 1);
  line.advanceTo(999'999'000);  // 480 bytes take one second
  EXPECT_EQ(line.waiting(), 479u);
  line.advanceTo(1'000'000'000);
  EXPECT_EQ(line.waiting(), 480u);
  line.advanceTo(2'000'000'000);  // the gap
  EXPECT_EQ(line.waiting(), 480u);
  line.setLineSettings(9600, 8, false, 1);
  line.advanceTo(2'500'000'000);
  EXPECT_EQ(line.waiting(), 960u);
  std::vector<uint8_t> buffer(1024);
  EXPECT_EQ(line.read(buffer), 960u);
  EXPECT_TRUE(line.exhausted());
}

TEST(ReplayLineTiming, AGarminReceiverAnswersBetweenBursts) {
  const std::vector<uint8_t> capture(96, 0x55);
  ReplayLine line(capture, {48}, true);
  line.setLineSettings(9600, 8, false, 1);
  line.advanceTo(10'000'000);  // 9 bytes of the first burst are in
  line.write(kStartPvtPacket);
  line.purge();
  line.advanceTo(50'000'000);  // the burst's 48 bytes took 50 ms; the answer follows
  EXPECT_EQ(line.waiting(), 39u);
  line.advanceTo(60'000'000);
  std::vector<uint8_t> got(1024);
  got.resize(line.read(got));
  const auto ack = frameGarminPacket(kGarminAck, std::vector<uint8_t>{kGarminCommand, 0});
  ASSERT_GE(got.size(), 39u + ack.size());
  EXPECT_TRUE(std::equal(ack.begin(), ack.end(), got.begin() + 39));
}

}  // namespace
}  // namespace orvel
