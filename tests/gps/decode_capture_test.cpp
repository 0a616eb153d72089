// Every recorded receiver capture replayed as the scanner would run it on a port. The facts
// checked were read off the captures' text by hand (the first valid RMC's time and position,
// or what the capture notes say), not produced by the parser.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "common/test_data.h"
#include "gps/capture_replay.h"
#include "gps/fix_text.h"
#include "gps/garmin_packet.h"
#include "gps/nmea_protocol.h"
#include "gps/ole_date.h"
#include "gps/replay_line.h"
#include "gps_test_support.h"

namespace orvel {
namespace {

enum class Kind { kNmea, kGarmin, kOther };

struct Facts {
  std::optional<CalendarTime> firstTime;  // of the first fix that has a time
  std::optional<std::pair<double, double>> position;  // lat, lon near that fix (or of any fix)
  bool anyTime = true;      // some fix carries a time
  bool anyPosition = true;  // some fix carries a position
  size_t minTimedFixes = 1;
};

// First RMC with status "A" and a readable date, worked out from its text.
const std::map<std::string, Facts>& knownFacts() {
  static const std::map<std::string, Facts> facts{
      {"ac12_binary.log", {CalendarTime{2007, 12, 23, 18, 35, 30, 0}, {{20.6293350, -87.0678950}}, true, true, 3}},
      // The only RMC with a usable date is the capture's last sentence, which no "$" ever ends.
      {"april6_2019.log", {{}, {{48.4833417, 0.3666917}}, false, true, 0}},
      {"bu353s4.log", {CalendarTime{2014, 12, 31, 3, 7, 19, 0}, {{-37.7847883, 175.3148967}}, true, true, 12}},
      {"bundg_zeus_9.log", {CalendarTime{2018, 8, 20, 9, 47, 37, 0}, {{52.8501550, 5.3136167}}, true, true, 73}},
      {"cat-ms352.log", {CalendarTime{2022, 11, 23, 11, 39, 38, 500}, {{38.7143345, -117.0906076}}, true, true, 20}},
      {"et-332.log", {CalendarTime{2010, 4, 23, 15, 33, 47, 0}, {{39.6783100, -75.7489267}}, true, true, 9}},
      {"firefly-II.log", {CalendarTime{2010, 7, 8, 0, 59, 47, 0}, {{37.2610267, -121.9611817}}, true, true, 11}},
      {"foretrex-201.log", {CalendarTime{2010, 8, 26, 20, 0, 4, 0}, {{55.0739050, 10.4256433}}, true, true, 3}},
      // Simulator mode: every RMC is void, GGA (quality 8) still gives the position.
      {"garmin-geko201.log", {{}, {{40.3976667, -3.6527167}}, false, true, 0}},
      {"garmin48.log", {CalendarTime{2001, 6, 6, 22, 53, 8, 0}, {{-45.4576333, 167.1527500}}, true, true, 3}},
      {"gp-320fw-2019-04-07-coldboot.log",
       {CalendarTime{2019, 4, 7, 0, 3, 45, 30}, {{48.1499883, 11.5846633}}, true, true, 1}},
      // No RMC at all; GGA without checksums.
      {"hp58534a.log", {{}, {{-33.8172283, 18.7321367}}, false, true, 0}},
      {"humminbird-M37.log", {CalendarTime{2006, 9, 16, 19, 41, 1, 0}, {{44.4352167, -71.6759933}}, true, true, 8}},
      {"iTrek.log", {CalendarTime{2005, 7, 27, 4, 58, 49, 0}, {{35.3317467, 136.6710517}}, true, true, 17}},
      {"mtk-3301.log", {CalendarTime{2008, 8, 23, 8, 14, 36, 0}, {{52.2163689, 6.8850232}}, true, true, 2}},
      {"neo-m8n.log", {CalendarTime{2015, 3, 18, 17, 19, 26, 0}, {{44.0690105, -121.3142463}}, true, true, 11}},
      {"telit-pls83-w.log", {CalendarTime{2025, 9, 4, 4, 35, 39, 0}, {{43.5531701, 1.4603063}}, true, true, 5}},
      // Never fixes: void RMC, GGA quality 0.
      {"tn200.log", {{}, {}, false, false, 0}},
      {"triton400.log", {CalendarTime{2013, 4, 1, 3, 1, 29, 0}, {{26.6362100, -80.1898200}}, true, true, 2}},
      {"ublox-zed-f9p-nmea.log", {CalendarTime{2019, 4, 12, 0, 39, 56, 0}, {{-45.8775672, 170.5001113}}, true, true, 14}},
      // Day 3773 counted from 1988-12-31 (the day the program adds the receiver's count to),
      // time of week 74835 s less 18 leap seconds; first position from the capture's notes.
      {"garmin18x-bin.raw", {CalendarTime{1999, 5, 1, 20, 46, 57, 0}, {{29.4455707, -98.6066431}}, true, true, 14}},
      {"garmin18x-bin.log", {{}, {{29.4455707, -98.6066431}}, true, true, 14}},
  };
  return facts;
}

struct Capture {
  std::filesystem::path path;
  Kind kind;
};

// Names the capture in test output instead of dumping the object's bytes.
void PrintTo(const Capture& capture, std::ostream* out) { *out << capture.path.filename().string(); }

std::vector<Capture> captures() {
  std::vector<Capture> found;
  const auto root = test::dataDir() / "gps";
  const std::pair<const char*, Kind> folders[] = {
      {"nmea", Kind::kNmea}, {"garmin_binary", Kind::kGarmin}, {"other_binary", Kind::kOther}};
  for (const auto& [folder, kind] : folders) {
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(root / folder, error)) {
      const auto name = entry.path().filename().string();
      if (!entry.is_regular_file() || name.ends_with(".chk")) continue;
      found.push_back({entry.path(), kind});
    }
  }
  std::sort(found.begin(), found.end(), [](const Capture& a, const Capture& b) { return a.path < b.path; });
  if (found.empty()) found.push_back({{}, Kind::kOther});  // reported as skipped
  return found;
}

struct Replayed {
  std::vector<GpsFix> fixes;
  int lost = 0;
  ReplaySummary summary;
};

Replayed replay(const std::vector<unsigned char>& bytes, ReplayProtocol protocol) {
  test::FixCollector collected;
  ReplayOptions options;
  options.protocol = protocol;
  Replayed out;
  out.summary = replayCapture(std::span<const uint8_t>(bytes.data(), bytes.size()), collected, options);
  out.fixes = std::move(collected.fixes);
  out.lost = collected.lost;
  return out;
}

class CaptureReplay : public ::testing::TestWithParam<Capture> {
 protected:
  void SetUp() override {
    if (GetParam().path.empty()) GTEST_SKIP() << "no captures in " << test::dataDir();
    bytes = test::readFile(GetParam().path);
    ASSERT_FALSE(bytes.empty());
  }
  std::vector<unsigned char> bytes;
};

TEST_P(CaptureReplay, IsRecognisedByItsOwnProtocolOnly) {
  const Replayed automatic = replay(bytes, ReplayProtocol::kAuto);
  const Replayed nmeaOnly = replay(bytes, ReplayProtocol::kNmea);
  switch (GetParam().kind) {
    case Kind::kNmea:
      EXPECT_EQ(automatic.summary.recognisedBy, u"NMEA-0183");
      EXPECT_EQ(nmeaOnly.summary.recognisedBy, u"NMEA-0183");
      break;
    case Kind::kGarmin:
      EXPECT_EQ(automatic.summary.recognisedBy, u"Протокол Garmin");
      EXPECT_TRUE(nmeaOnly.summary.recognisedBy.empty());
      EXPECT_TRUE(nmeaOnly.fixes.empty());
      break;
    case Kind::kOther:
      EXPECT_NE(automatic.summary.recognisedBy, u"NMEA-0183");
      EXPECT_TRUE(nmeaOnly.summary.recognisedBy.empty());
      EXPECT_TRUE(automatic.fixes.empty());
      break;
  }
}

TEST_P(CaptureReplay, BinaryIsNeverTakenForNmeaWhateverTheReads) {
  if (GetParam().kind == Kind::kNmea) GTEST_SKIP() << "text capture";
  test::FixCollector sink;
  NmeaProtocol nmea([] { return 0u; }, sink);
  for (size_t chunk : {size_t{1}, size_t{13}, size_t{64}, size_t{1024}}) {
    nmea.open();
    for (size_t at = 0; at < bytes.size(); at += chunk) {
      const size_t n = std::min(chunk, bytes.size() - at);
      const ProcessResult result = nmea.process(std::span<const uint8_t>(bytes.data() + at, n));
      ASSERT_NE(result, ProcessResult::kRecognised) << "reads of " << chunk << " at " << at;
      if (result == ProcessResult::kFailed) nmea.open();
    }
  }
}

TEST_P(CaptureReplay, FixesMatchWhatTheCaptureSays) {
  const auto name = GetParam().path.filename().string();
  const auto known = knownFacts().find(name);
  if (known == knownFacts().end()) GTEST_SKIP() << "no facts written down for " << name;
  const Facts& facts = known->second;
  const ReplayProtocol protocol = GetParam().kind == Kind::kGarmin ? ReplayProtocol::kGarmin : ReplayProtocol::kNmea;
  const Replayed run = replay(bytes, protocol);

  const auto timed = std::find_if(run.fixes.begin(), run.fixes.end(), [](const GpsFix& f) { return f.has(kFixTime); });
  const size_t timedCount = static_cast<size_t>(
      std::count_if(run.fixes.begin(), run.fixes.end(), [](const GpsFix& f) { return f.has(kFixTime); }));
  EXPECT_EQ(timed != run.fixes.end(), facts.anyTime);
  EXPECT_GE(timedCount, facts.minTimedFixes);
  const bool anyPosition =
      std::any_of(run.fixes.begin(), run.fixes.end(), [](const GpsFix& f) { return f.has(kFixPosition); });
  EXPECT_EQ(anyPosition, facts.anyPosition);

  if (facts.firstTime) {
    ASSERT_NE(timed, run.fixes.end());
    double expected = 0.0;
    ASSERT_TRUE(calendarToAutomationDate(*facts.firstTime, expected));
    EXPECT_NEAR(timed->time, expected, 1.0 / 86400000.0) << formatIso8601Utc(timed->time);
  }
  if (facts.position) {
    // The fix with the first time, or else the first with a position. Sentences of the next
    // epoch may be merged into it, so allow for a second's movement.
    auto fix = facts.firstTime ? timed
                               : std::find_if(run.fixes.begin(), run.fixes.end(),
                                              [](const GpsFix& f) { return f.has(kFixPosition); });
    ASSERT_NE(fix, run.fixes.end());
    ASSERT_TRUE(fix->has(kFixPosition));
    EXPECT_NEAR(fix->latitude, facts.position->first, 2e-4);
    EXPECT_NEAR(fix->longitude, facts.position->second, 2e-4);
  }
}

TEST_P(CaptureReplay, GivesTheSameFixesEveryTime) {
  const Replayed first = replay(bytes, ReplayProtocol::kAuto);
  const Replayed second = replay(bytes, ReplayProtocol::kAuto);
  ASSERT_EQ(first.fixes.size(), second.fixes.size());
  for (size_t i = 0; i < first.fixes.size(); ++i) {
    EXPECT_EQ(formatFixLine(first.fixes[i]), formatFixLine(second.fixes[i])) << i;
  }
  EXPECT_EQ(first.summary.simulatedMs, second.summary.simulatedMs);
}

INSTANTIATE_TEST_SUITE_P(Captures, CaptureReplay, ::testing::ValuesIn(captures()),
                         [](const ::testing::TestParamInfo<Capture>& info) {
                           std::string name = info.param.path.filename().string();
                           if (name.empty()) name = "none";
                           for (char& c : name) {
                             if (!std::isalnum(static_cast<unsigned char>(c))) c = '_';
                           }
                           return name;
                         });

TEST(GarminCapture, EveryRecordLiesWhereAndWhenTheReceiverWas) {
  const auto path = test::dataFile("gps/garmin_binary/garmin18x-bin.raw");
  if (path.empty()) GTEST_SKIP() << "no test data";
  const Replayed run = replay(test::readFile(path), ReplayProtocol::kGarmin);
  ASSERT_FALSE(run.fixes.empty());
  double from = 0.0;
  double to = 0.0;
  ASSERT_TRUE(calendarToAutomationDate(CalendarTime{1999, 5, 1, 20, 46, 57, 0}, from));
  ASSERT_TRUE(calendarToAutomationDate(CalendarTime{1999, 5, 1, 20, 47, 25, 0}, to));
  for (const GpsFix& fix : run.fixes) {
    EXPECT_EQ(fix.flags, 0x16BFu);
    EXPECT_EQ(fix.fixType, kFixType3D);
    // The extremes of the receiver's own reports (gpsd's decoding of the same capture):
    // latitude 29.4455703 to 29.4456247, longitude -98.6066450 to -98.6065609, height
    // above sea level 245.45 to 248.85 m.
    EXPECT_GE(fix.latitude, 29.4455703 - 1e-5);
    EXPECT_LE(fix.latitude, 29.4456247 + 1e-5);
    EXPECT_GE(fix.longitude, -98.6066450 - 1e-5);
    EXPECT_LE(fix.longitude, -98.6065609 + 1e-5);
    EXPECT_GE(fix.altitude, 245.45 - 0.1);
    EXPECT_LE(fix.altitude, 248.85 + 0.1);
    EXPECT_GE(fix.time, from - 1e-9);
    EXPECT_LE(fix.time, to + 1e-9);
  }
  EXPECT_EQ(run.lost, 1);  // the one attempt, when the capture ends
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

TEST(FixText, OneLineOfKeyValueFields) {
  GpsFix fix;
  ASSERT_TRUE(calendarToAutomationDate(CalendarTime{2014, 12, 31, 3, 7, 19, 0}, fix.time));
  fix.latitude = -37.78479f;
  fix.longitude = 175.31490f;
  fix.altitude = 59.9f;
  fix.speed = 1.27788f;
  fix.course = 181.39f;
  fix.hdop = 1.1f;
  fix.vdop = 1.5f;
  fix.satellitesUsed = 8;
  fix.fixType = kFixType3DDiff;
  fix.flags = 0x7BAB;
  EXPECT_EQ(formatFixLine(fix),
            "time=2014-12-31T03:07:19Z lat=-37.7847900 lon=175.3148956 alt=59.9 speed=1.28 course=181.39 "
            "hdop=1.10 vdop=1.50 sats=8 fix=\"3d diff\" flags=0x7bab");
  fix.flags = kFixHdop;
  EXPECT_EQ(formatFixLine(fix), "hdop=1.10 flags=0x2000");
  const SatelliteInfo sats[] = {{17, 72, 207, 32}, {}, {8, 38, 8, 0}};
  EXPECT_EQ(formatSatellitesLine(sats), "sats: 17/72/207/32 8/38/8/0");
}

}  // namespace
}  // namespace orvel
