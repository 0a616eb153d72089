#include "track/mps_writer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <functional>
#include <map>
#include <string_view>
#include <random>
#include <sstream>
#include <sys/wait.h>
#include <unistd.h>

#include "core/message.h"
#include "common/torture.h"
#include "common/test_data.h"
#include "data_dir_fixture.h"
#include "gps/ole_date.h"
#include "gpx/gpx_reader.h"
#include "track/buffered_writer.h"
#include "track/le_bytes.h"
#include "track/mps_reader.h"

namespace orvel::test {
namespace {

struct CsvPoint {
  Semicircles lat = 0;
  Semicircles lon = 0;
  double altitude = 0;
  uint32_t time = 0;
};

std::vector<CsvPoint> readPointsCsv(const std::filesystem::path& path) {
  std::vector<CsvPoint> points;
  std::ifstream in(path);
  std::string line;
  std::getline(in, line);  // track,index,lat_semi,lon_semi,lat_deg,lon_deg,alt_m,time_unix,...
  while (std::getline(in, line)) {
    std::vector<std::string> cells;
    std::stringstream row(line);
    for (std::string cell; std::getline(row, cell, ',');) cells.push_back(cell);
    if (cells.size() < 8) continue;
    points.push_back({static_cast<Semicircles>(std::stol(cells[2])), static_cast<Semicircles>(std::stol(cells[3])),
                      std::stod(cells[6]), static_cast<uint32_t>(std::stoul(cells[7]))});
  }
  return points;
}

std::vector<uint8_t> bytesOf(const std::filesystem::path& path) {
  const auto raw = readFile(path);
  return {raw.begin(), raw.end()};
}

std::tm localTime(int year, int month, int day, int hour, int minute, int second) {
  std::tm t{};
  t.tm_year = year - 1900;
  t.tm_mon = month - 1;
  t.tm_mday = day;
  t.tm_hour = hour;
  t.tm_min = minute;
  t.tm_sec = second;
  return t;
}

class MpsWriterTest : public DataDirTest {
 protected:
  TrackExport trackExport{dir, messages};
};

TEST(MpsFormat, PointsOfTheRealFileEncodeToItsBytes) {
  const auto mpsPath = dataFile("gps/mps/mps-track.mps");
  const auto csvPath = dataFile("gps/mps/mps-track.points.csv");
  if (mpsPath.empty() || csvPath.empty()) GTEST_SKIP() << "no MapSource sample";
  const auto bytes = bytesOf(mpsPath);
  const auto file = readMpsFile(bytes);
  ASSERT_TRUE(file);
  ASSERT_EQ(file->tracks.size(), 1u);
  const auto csv = readPointsCsv(csvPath);
  const MpsTrack& track = file->tracks[0];
  ASSERT_EQ(csv.size(), 64u);
  ASSERT_EQ(track.pointBytes.size(), csv.size() * kMpsPointSize);
  for (size_t i = 0; i < csv.size(); ++i) {
    // The point as a fix carries it: altitude in single precision, time as an automation date.
    GpsFix fix;
    fix.flags = kFixAltitude | kFixTime;
    fix.altitude = static_cast<float>(csv[i].altitude);
    fix.time = unixSecondsToAutomationDate(csv[i].time);
    MpsPoint point = mpsPointFromFix(fix);
    point.latitude = csv[i].lat;
    point.longitude = csv[i].lon;
    const auto encoded = encodeMpsPoint(point);
    EXPECT_TRUE(std::equal(encoded.begin(), encoded.end(), track.pointBytes.begin() + i * kMpsPointSize))
        << "point " << i;
  }
}

TEST(MpsFormat, RealFileRecordStructure) {
  const auto mpsPath = dataFile("gps/mps/mps-track.mps");
  if (mpsPath.empty()) GTEST_SKIP() << "no MapSource sample";
  const auto bytes = bytesOf(mpsPath);
  const auto file = readMpsFile(bytes);
  ASSERT_TRUE(file);
  EXPECT_EQ(file->version, 'd');
  ASSERT_EQ(file->records.size(), 4u);
  EXPECT_EQ(file->records[2].type, 'T');
  // Name with its zero, display byte, colour, count, then the points: what we write too.
  EXPECT_EQ(file->records[2].length, file->tracks[0].name.size() + 1 + 9 + 64 * kMpsPointSize);
  EXPECT_TRUE(file->ended);
  const std::string_view end = mpsEndRecord();
  EXPECT_EQ(std::string(bytes.end() - 7, bytes.end()), end);
}

TEST(MpsFormat, Conversions) {
  EXPECT_EQ(mpsSemicircles(-12.5f), static_cast<int32_t>(std::floor(-12.5 * 2147483648.0 / 180.0 + 0.5)));
  EXPECT_EQ(mpsSemicircles(-12.5f), -149130809);
  EXPECT_EQ(mpsSemicircles(0.0f), 0);
  EXPECT_EQ(mpsSemicircles(90.0f), 1 << 30);
  EXPECT_EQ(mpsSemicircles(-180.0f), INT32_MIN);
  EXPECT_EQ(mpsSemicircles(180.0f), INT32_MAX);  // one past the range: saturated
  EXPECT_EQ(mpsSemicircles(NAN), 0);
  EXPECT_EQ(mpsUnixTime(38173.5), 1089028800u);
  EXPECT_EQ(mpsUnixTime(25569.0), 0u);
  EXPECT_EQ(mpsUnixTime(1000.0), 0u);  // before 1970
  EXPECT_EQ(mpsUnixTime(1e9), UINT32_MAX);
}

TEST(MpsFormat, AbsentFieldsAreZero) {
  GpsFix fix;
  fix.flags = kFixPosition;
  fix.latitude = 1;
  fix.longitude = 2;
  fix.altitude = 55;
  fix.time = 38173.5;
  fix.reserved = 3;
  const auto bytes = encodeMpsPoint(mpsPointFromFix(fix));
  for (size_t i = 8; i < kMpsPointSize; ++i) EXPECT_EQ(bytes[i], 0) << i;
  fix.flags |= kFixReserved;
  const auto withDepth = encodeMpsPoint(mpsPointFromFix(fix));
  EXPECT_EQ(withDepth[22], 1);
  EXPECT_EQ(le::loadDouble(withDepth.data() + 23), 3.0);
}

TEST(MpsFormat, HeaderBlock) {
  const std::string_view header = mpsHeader();
  ASSERT_EQ(header.size(), 44u);
  const std::vector<uint8_t> bytes(header.begin(), header.end());
  const auto file = readMpsFile(bytes);
  ASSERT_TRUE(file);
  EXPECT_EQ(file->version, 'h');
  ASSERT_EQ(file->records.size(), 2u);
  EXPECT_EQ(file->records[1].type, 'A');
  EXPECT_EQ(file->records[1].length, 26u);
  EXPECT_EQ(header.substr(35), std::string_view("07:32:30\0", 9));
  EXPECT_EQ(header.substr(20, 3), std::string_view("XW\0", 3));
  EXPECT_EQ(header.substr(23, 12), std::string_view("Jul  5 2004\0", 12));
}

TEST_F(MpsWriterTest, WritesTheRealTrackBackByteForByte) {
  const auto mpsPath = dataFile("gps/mps/mps-track.mps");
  const auto csvPath = dataFile("gps/mps/mps-track.points.csv");
  if (mpsPath.empty() || csvPath.empty()) GTEST_SKIP() << "no MapSource sample";
  const auto realBytes = bytesOf(mpsPath);
  const auto real = readMpsFile(realBytes);
  ASSERT_TRUE(real);

  trackExport.openTrackFileAt(localTime(2002, 5, 25, 19, 6, 21));
  ASSERT_TRUE(trackExport.isTrackFileOpen());
  const auto path = trackExport.trackFilePath();
  EXPECT_EQ(path, dir / "2002-05-25_19-06-21.mps");
  for (const CsvPoint& p : readPointsCsv(csvPath)) {
    trackExport.appendMpsPoint({p.lat, p.lon, true, p.altitude, true, p.time, false, 0.0});
  }
  trackExport.closeTrackFile();
  EXPECT_FALSE(trackExport.isTrackFileOpen());

  const auto bytes = bytesOf(path);
  const auto ours = readMpsFile(bytes);
  ASSERT_TRUE(ours);
  EXPECT_EQ(std::string(bytes.begin(), bytes.begin() + 44), mpsHeader());
  ASSERT_EQ(ours->records.size(), 4u);
  EXPECT_EQ(ours->records[2].type, 'T');
  EXPECT_EQ(ours->records[3].type, 'V');
  ASSERT_EQ(ours->tracks.size(), 1u);
  EXPECT_EQ(ours->tracks[0].name, "Track 000");
  EXPECT_EQ(ours->records[2].length, 10 + 9 + 64 * kMpsPointSize);
  EXPECT_TRUE(std::ranges::equal(ours->tracks[0].pointBytes, real->tracks[0].pointBytes));
  EXPECT_EQ(std::string(bytes.end() - 7, bytes.end()), mpsEndRecord());
}

TEST_F(MpsWriterTest, RunWithoutFixesHasOneEmptyTrack) {
  trackExport.openTrackFileAt(localTime(2024, 3, 7, 8, 5, 9));
  const auto path = trackExport.trackFilePath();
  EXPECT_EQ(path.filename(), "2024-03-07_08-05-09.mps");
  trackExport.beginRecordedTrack();
  trackExport.beginRecordedTrack();  // losing the fix twice does not repeat the empty track
  trackExport.closeTrackFile();
  const auto bytes = bytesOf(path);
  EXPECT_EQ(bytes.size(), 44u + 5 + 19 + 7);
  const auto file = readMpsFile(bytes);
  ASSERT_TRUE(file);
  ASSERT_EQ(file->tracks.size(), 1u);
  EXPECT_EQ(file->tracks[0].name, "Track 000");
  EXPECT_EQ(file->records[2].length, 19u);
  EXPECT_TRUE(file->tracks[0].points.empty());
  EXPECT_TRUE(file->ended);
}

TEST_F(MpsWriterTest, FixesRoundTripThroughTheFile) {
  struct Input {
    bool breakBefore;
    GpsFix fix;
  };
  std::vector<Input> inputs;
  const auto fix = [](float lon, float lat, uint32_t flags, float altitude, double time) {
    GpsFix f;
    f.flags = flags;
    f.longitude = lon;
    f.latitude = lat;
    f.altitude = altitude;
    f.time = time;
    return f;
  };
  const uint32_t all = kFixPosition | kFixAltitude | kFixTime;
  inputs.push_back({false, fix(37.617633f, 55.755833f, all, 152.37f, 45000.123456)});
  inputs.push_back({false, fix(-0.0000123f, -33.9f, all, -12.5f, 45000.5)});
  inputs.push_back({false, fix(179.99998f, 89.99999f, kFixPosition, 7, 45000.6)});       // no altitude or time
  inputs.push_back({true, fix(-179.99998f, -89.99999f, kFixPosition | kFixTime, 7, 45001.0)});
  inputs.push_back({false, fix(12.0f, 13.0f, kFixTime, 7, 45001.0)});  // no position: not written
  inputs.push_back({true, fix(-71.676f, 44.4352f, all, 1e6f, 43814.86594)});

  trackExport.openTrackFileAt(localTime(2023, 1, 2, 3, 4, 5));
  const auto path = trackExport.trackFilePath();
  std::vector<std::vector<GpsFix>> expected(1);
  for (const Input& input : inputs) {
    if (input.breakBefore) {
      trackExport.beginRecordedTrack();
      expected.emplace_back();
    }
    trackExport.appendRecordedPoint(input.fix);
    if (input.fix.has(kFixPosition)) expected.back().push_back(input.fix);
  }
  trackExport.closeTrackFile();

  const auto file = readMpsFile(bytesOf(path));
  ASSERT_TRUE(file);
  EXPECT_TRUE(file->ended);
  ASSERT_EQ(file->tracks.size(), expected.size());
  const double semicircle = 180.0 / 2147483648.0;
  for (size_t t = 0; t < expected.size(); ++t) {
    char name[32];
    std::snprintf(name, sizeof name, "Track %03zu", t);
    EXPECT_EQ(file->tracks[t].name, name);
    ASSERT_EQ(file->tracks[t].points.size(), expected[t].size()) << t;
    for (size_t i = 0; i < expected[t].size(); ++i) {
      const GpsFix& in = expected[t][i];
      const MpsPoint& out = file->tracks[t].points[i];
      SCOPED_TRACE(::testing::Message() << "track " << t << " point " << i);
      EXPECT_NEAR(out.latitude * semicircle, in.latitude, 0.5 * semicircle);
      // 180 east is one past the range and saturates, one semicircle short.
      EXPECT_NEAR(out.longitude * semicircle, in.longitude, 1.0 * semicircle);
      EXPECT_EQ(out.hasAltitude, in.has(kFixAltitude));
      EXPECT_EQ(out.altitude, in.has(kFixAltitude) ? static_cast<double>(in.altitude) : 0.0);
      EXPECT_EQ(out.hasTime, in.has(kFixTime));
      if (in.has(kFixTime)) {
        EXPECT_NEAR(out.time, automationDateToUnixSeconds(in.time), 0.5);
      } else {
        EXPECT_EQ(out.time, 0u);
      }
      EXPECT_FALSE(out.hasDepth);
    }
  }
}

TEST_F(MpsWriterTest, ManyPointsGoThroughTheBufferAndPatchesLandRight) {
  trackExport.openTrackFileAt(localTime(2023, 1, 2, 3, 4, 6));
  const auto path = trackExport.trackFilePath();
  for (int track = 0; track < 3; ++track) {
    for (int i = 0; i < 500 * (track + 1); ++i) {
      trackExport.appendMpsPoint({track, i, false, 0.0, true, static_cast<uint32_t>(i), false, 0.0});
    }
    trackExport.beginRecordedTrack();
  }
  trackExport.closeTrackFile();
  const auto file = readMpsFile(bytesOf(path));
  ASSERT_TRUE(file);
  ASSERT_EQ(file->tracks.size(), 4u);  // the last, empty one stays with count 0
  for (int track = 0; track < 3; ++track) {
    ASSERT_EQ(file->tracks[size_t(track)].points.size(), size_t(500 * (track + 1)));
    EXPECT_EQ(file->tracks[size_t(track)].points.back().longitude, 500 * (track + 1) - 1);
    EXPECT_EQ(file->tracks[size_t(track)].points.back().latitude, track);
  }
  EXPECT_EQ(file->tracks[3].name, "Track 003");
  EXPECT_TRUE(file->tracks[3].points.empty());
}

TEST_F(MpsWriterTest, NewRunEndsTheOpenOne) {
  trackExport.openTrackFileAt(localTime(2023, 1, 2, 3, 4, 7));
  const auto first = trackExport.trackFilePath();
  trackExport.appendMpsPoint({1, 2, false, 0, false, 0, false, 0});
  trackExport.openTrackFileAt(localTime(2023, 1, 2, 3, 4, 8));
  const auto second = trackExport.trackFilePath();
  EXPECT_NE(first, second);
  const auto file = readMpsFile(bytesOf(first));
  ASSERT_TRUE(file);
  EXPECT_TRUE(file->ended);
  ASSERT_EQ(file->tracks.size(), 1u);
  EXPECT_EQ(file->tracks[0].points.size(), 1u);
  trackExport.closeTrackFile();
  trackExport.closeTrackFile();  // nothing open: no effect
  trackExport.appendMpsPoint({1, 2, false, 0, false, 0, false, 0});
  trackExport.beginRecordedTrack();
  EXPECT_TRUE(readMpsFile(bytesOf(second)));
}

// Run in a child by the next test: a run that is never ended.
TEST_F(MpsWriterTest, DISABLED_Crash) {
  if (!inChildTest()) GTEST_SKIP();
  trackExport.openTrackFileAt(localTime(2023, 1, 2, 3, 4, 9));
  for (int i = 0; i < 200; ++i) trackExport.appendMpsPoint({i, i, false, 0, false, 0, false, 0});
  ::raise(SIGKILL);
}

TEST_F(MpsWriterTest, CrashLeavesThePlaceholders) {
  const int status = runChildTest("MpsWriterTest.DISABLED_Crash", dir);
  ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL);
  const auto bytes = bytesOf(dir / "2023-01-02_03-04-09.mps");
  ASSERT_GE(bytes.size(), 44u + 5 + 14u);  // the first buffers reached the file
  EXPECT_EQ(le::load32(bytes.data() + 44), kMpsLengthPlaceholder);
  EXPECT_EQ(bytes[48], 'T');
  EXPECT_EQ(le::load32(bytes.data() + 49 + 10 + 5), kMpsCountPlaceholder);
  EXPECT_FALSE(readMpsFile(bytes));
}

// Run in a child by the next test: a recording run in a file of its own (the next start
// carries on in the next file), numbered points at full speed and a new track every 500,
// until it is killed; counts every point appended.
TEST_F(MpsWriterTest, DISABLED_RecordUntilKilled) {
  ASSERT_TRUE(inChildTest()) << "started by the test after it";
  ProgressCounter progress(dir / "progress");
  int files = 0;
  for (const auto& entry : std::filesystem::directory_iterator(dir)) files += entry.path().extension() == ".mps";
  trackExport.openTrackFileAt(localTime(2023, 1, 3, 0, files / 60, files % 60));
  for (uint32_t k = 0;; ++k) {
    if (k > 0 && k % 500 == 0) trackExport.beginRecordedTrack();
    const auto n = static_cast<Semicircles>(k);
    trackExport.appendMpsPoint({n, -n, true, 0.5 * k, true, k, false, 0});
    progress.set(k + 1);
  }
}

// Recording runs killed at random moments: every file reads up to its last whole point, and
// holds the points in order, none twice, all but at most the one buffer that had not reached
// the file; the tracks are the ones begun; earlier runs' files are never touched again.
TEST_F(MpsWriterTest, RunsKilledAtRandomAreReadableUpToTheirLastBatch) {
  constexpr uint64_t kBufferPoints = kWriterBufferSize / kMpsPointSize + 1;
  std::mt19937 random(std::random_device{}());
  ProgressCounter progress(dir / "progress");
  // Earlier runs' files by their contents' hash.
  std::map<std::filesystem::path, size_t> earlier;
  const auto hashOf = [](const std::vector<uint8_t>& bytes) {
    return std::hash<std::string_view>()({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
  };
  uint64_t appended = 0, read = 0, gpxRead = 0;
  const int trials = tortureCount(10, 100);
  for (int trial = 0; trial < trials; ++trial) {
    SCOPED_TRACE("trial " + std::to_string(trial));
    progress.set(0);
    std::function<bool()> recording;
    if (trial % 4 != 0) recording = [&] { return progress.get() > 0; };
    const int status = killChildTestAtRandom("MpsWriterTest.DISABLED_RecordUntilKilled", dir, random, 10, recording);
    ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) << status;
    const uint64_t counted = progress.get();
    for (const auto& entry : std::filesystem::directory_iterator(dir)) {
      if (entry.path().extension() != ".mps" || earlier.count(entry.path())) continue;
      const auto bytes = bytesOf(entry.path());
      const auto file = readMpsFile(bytes, true);
      ASSERT_TRUE(file) << entry.path();
      uint32_t k = 0;
      for (size_t t = 0; t < file->tracks.size(); ++t) {
        const MpsTrack& track = file->tracks[t];
        EXPECT_EQ(track.name, "Track " + std::string(t < 10 ? "00" : t < 100 ? "0" : "") + std::to_string(t));
        if (t + 1 < file->tracks.size()) {
          EXPECT_EQ(track.points.size(), 500u);
        }
        for (const MpsPoint& point : track.points) {
          ASSERT_EQ(point, (MpsPoint{static_cast<Semicircles>(k), -static_cast<Semicircles>(k), true, 0.5 * k, true, k,
                                     false, 0}));
          ++k;
        }
      }
      ASSERT_LE(k, counted + 1);
      ASSERT_GE(k + kBufferPoints, counted) << k << " of " << counted << " points reached the file";
      // The GPX file beside it is written point by point: a whole document with the same
      // points in order, at most the point in hand missing (a run killed before its first
      // point may have left it empty, or not made it yet).
      std::filesystem::path gpxPath = entry.path();
      gpxPath.replace_extension(".gpx");
      ASSERT_TRUE(counted == 0 || std::filesystem::exists(gpxPath)) << gpxPath;
      const auto gpxBytes = std::filesystem::exists(gpxPath) ? bytesOf(gpxPath) : std::vector<uint8_t>{};
      if (counted > 0 || !gpxBytes.empty()) {
        GpxData gpx;
        QString error;
        ASSERT_TRUE(readGpx(QByteArray(reinterpret_cast<const char*>(gpxBytes.data()),
                                       static_cast<qsizetype>(gpxBytes.size())), gpx, error))
            << gpxPath << ": " << error.toStdString();
        uint32_t g = 0;
        for (const GpxTrack& track : gpx.tracks) {
          for (const GpxSegment& segment : track.segments) {
            for (const GpxPoint& point : segment.points) ASSERT_EQ(point.time, std::optional<double>(g++));
          }
        }
        ASSERT_LE(g, counted + 1);
        ASSERT_GE(g + 1, counted) << g << " of " << counted << " points reached the GPX file";
        gpxRead += g;
      }
      appended += counted;
      read += k;
      earlier[entry.path()] = hashOf(bytes);
    }
  }
  for (const auto& [path, hash] : earlier) EXPECT_EQ(hashOf(bytesOf(path)), hash) << path;
  reportTorture("mps: " + std::to_string(trials) + " kills while recording, " + std::to_string(appended) +
                " points appended, " + std::to_string(read) + " read back in order (" + std::to_string(gpxRead) +
                " from the GPX files)");
}

TEST_F(MpsWriterTest, FileThatCannotBeCreatedIsReported) {
  std::ofstream(dir / "blocker") << "x";
  TrackExport blocked(dir / "blocker" / "inside", messages);
  blocked.openTrackFileAt(localTime(2023, 1, 2, 3, 4, 10));
  EXPECT_FALSE(blocked.isTrackFileOpen());
  ASSERT_EQ(recorded.messages().size(), 1u);
  EXPECT_EQ(recorded.last(), "Не удается создать файл для записи треков:\n " +
                                 (dir / "blocker" / "inside" / "2023-01-02_03-04-10.mps").string());
}

TEST(BufferedWriter, BuffersWritesLargeBlocksAndSeeks) {
  const auto path = scratchDir("buffered-writer") / "out.bin";
  const int fd = ::open(path.c_str(), O_RDWR | O_CREAT | O_TRUNC, 0644);
  ASSERT_GE(fd, 0);
  BufferedWriter w;
  writerOpen(w, fd);
  const std::string small(3000, 'a');
  const std::string large(5000, 'b');
  writerWrite(w, small.data(), small.size());
  EXPECT_EQ(w.waiting, 3000u);
  writerWrite(w, small.data(), small.size());  // does not fit: the first 3000 go out
  EXPECT_EQ(w.waiting, 3000u);
  writerWrite(w, large.data(), large.size());  // larger than the buffer: straight through
  EXPECT_EQ(w.waiting, 0u);
  EXPECT_EQ(w.total, 11000u);
  writerSeek(w, 10);
  writerWrite32(w, 0x44434241);
  writerSeek(w, 11000);
  writerWrite(w, "z", 1);
  writerFlush(w);
  EXPECT_FALSE(w.error);
  ::close(fd);
  const auto bytes = bytesOf(path);
  ASSERT_EQ(bytes.size(), 11001u);
  EXPECT_EQ(std::string(bytes.begin() + 8, bytes.begin() + 16), "aaABCDaa");
  EXPECT_EQ(bytes[5999], 'a');
  EXPECT_EQ(bytes[6000], 'b');
  EXPECT_EQ(bytes[11000], 'z');

  BufferedWriter broken;
  writerOpen(broken, -1);
  writerWrite(broken, "x", 1);
  writerFlush(broken);
  EXPECT_TRUE(broken.error);
}

}  // namespace
}  // namespace orvel::test
