#include "track/mps_writer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <sstream>
#include <string_view>
#include <tuple>
#include <vector>

#include "common/gpx_check.h"
#include "common/test_data.h"
#include "common/torture.h"
#include "core/message.h"
#include "data_dir_fixture.h"
#include "gpx/gpx_reader.h"
#include "track/mps_reader.h"
#include "track/buffered_writer.h"
#include "track/gpx_export.h"
#include "track/le_bytes.h"

namespace orvel::test {
namespace {

// Local broken-down time, as a run's start is given.
std::tm localTime(int year, int month, int day, int hour, int minute, int second) {
  std::tm t{};
  t.tm_year = year - 1900, t.tm_mon = month - 1, t.tm_mday = day, t.tm_hour = hour, t.tm_min = minute;
  t.tm_sec = second;
  return t;
}

class MpsWriterTest : public DataDirTest {
 protected:
  TrackExport trackExport{dir, messages};
};

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
  // Fields a fix does not have are written as zero; depth comes from the reserved field.
  GpsFix fix;
  fix.flags = kFixPosition;
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

// The points of a real MapSource file written again come out byte for byte as in the file.
TEST_F(MpsWriterTest, WritesTheRealTrackBackByteForByte) {
  const auto realBytes = readFile(dataFile("gps/mps/mps-track.mps"));  // the points' bytes stay in it
  const auto real = readMpsFile(realBytes);
  ASSERT_TRUE(real);
  ASSERT_EQ(real->tracks[0].points.size(), 64u);
  // The reader agrees with the points decoded independently of it.
  std::istringstream csv(readText(dataFile("gps/mps/mps-track.points.csv")));
  std::string line;
  std::getline(csv, line);  // the names of the columns
  for (const MpsPoint& p : real->tracks[0].points) {
    std::vector<std::string> field;
    for (std::istringstream row(std::getline(csv, line) ? line : ""); std::getline(row, field.emplace_back(), ',');) {}
    ASSERT_GE(field.size(), 8u);
    EXPECT_EQ(std::tuple(p.latitude, p.longitude, p.altitude, p.time),
              std::tuple(std::stoi(field[2]), std::stoi(field[3]), std::stod(field[6]), std::stoul(field[7])));
  }
  trackExport.openTrackFileAt(localTime(2002, 5, 25, 19, 6, 21));
  ASSERT_TRUE(trackExport.isTrackFileOpen());
  const auto path = trackExport.trackFilePath();
  EXPECT_EQ(path, dir / "2002-05-25_19-06-21.mps");
  EXPECT_GT(readFile(path).size(), mpsHeader().size());  // the first track record is on disk already
  EXPECT_FALSE(readFile(std::filesystem::path(path).replace_extension(".gpx")).empty());  // and the GPX's start
  for (const MpsPoint& p : real->tracks[0].points) trackExport.appendMpsPoint(p);
  trackExport.closeTrackFile();
  EXPECT_FALSE(trackExport.isTrackFileOpen());

  const auto bytes = readFile(path);
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

// The point a killed recording run appends as its k-th.
MpsPoint numbered(uint32_t k) {
  return {static_cast<Semicircles>(k * 1000), -static_cast<Semicircles>(k * 1000), true, 0.5 * k, true,
          1600000000u + k, false, 0.0};
}

// Recording runs killed at random moments. Every .mps reads up to its last whole point, with
// the points in order, none twice, all but at most the one buffer that had not reached the
// file, in the tracks begun (one every 500 points). The .gpx beside it validates and holds
// every point appended, perhaps the one in hand too, a segment for each track. Earlier runs'
// files are never touched again.
TEST_F(MpsWriterTest, RunsKilledAtRandomAreReadableUpToTheirLastBatch) {
  constexpr uint64_t kBufferPoints = kWriterBufferSize / kMpsPointSize + 1;
  const auto hashOf = [](const std::filesystem::path& path) {
    const auto bytes = readFile(path);
    return std::hash<std::string_view>()({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
  };
  std::map<std::filesystem::path, size_t> earlier;  // earlier runs' files by their contents' hash
  uint64_t appended = 0, read = 0;
  const int trials = killAtRandom("recordRunUntilKilled", dir, 10, [&](uint64_t counted) {
    for (const auto& entry : std::filesystem::directory_iterator(dir)) {
      const auto mps = entry.path(), gpx = std::filesystem::path(mps).replace_extension(".gpx");
      if (mps.extension() != ".mps" || earlier.count(mps)) continue;
      const auto bytes = readFile(mps);
      const auto file = readMpsFile(bytes, true);
      ASSERT_TRUE(file && !file->records.empty()) << mps;
      uint32_t k = 0;
      for (size_t t = 0; t < file->tracks.size(); ++t) {
        char name[32];
        std::snprintf(name, sizeof name, "Track %03zu", t);
        EXPECT_EQ(file->tracks[t].name, name);
        for (const MpsPoint& point : file->tracks[t].points) {
          ASSERT_EQ(t, k / 500);
          ASSERT_EQ(point, numbered(k++));
        }
      }
      ASSERT_LE(k, counted + 1);
      ASSERT_GE(k + kBufferPoints, counted) << k << " of " << counted << " points reached the file";
      appended += counted;
      read += k;
      earlier[mps] = hashOf(mps);
      std::string lint;
      EXPECT_TRUE(validGpx11(gpx, lint)) << lint;
      GpxData data;
      QString error;
      ASSERT_TRUE(readGpxFile(gpx, data, error)) << error.toStdString();
      ASSERT_EQ(data.tracks.size(), 1u);
      uint32_t g = 0;
      for (size_t s = 0; s < data.tracks[0].segments.size(); ++s) {
        for (const GpxPoint& point : data.tracks[0].segments[s].points) {
          ASSERT_EQ(s, g / 500);
          ASSERT_EQ(point, gpxPointOf(numbered(g++)));
        }
      }
      ASSERT_TRUE(g == counted || g == counted + 1) << g << " of " << counted << " points in the GPX file";
      earlier[gpx] = hashOf(gpx);
    }
  });
  for (const auto& [path, hash] : earlier) EXPECT_EQ(hashOf(path), hash) << path;
  reportTorture("mps: " + std::to_string(trials) + " kills while recording, " + std::to_string(appended) +
                " points appended, " + std::to_string(read) + " read back in order from the .mps, all from the .gpx");
}

}  // namespace

// A recording run in a file of its own (the next start carries on in the next file),
// numbered points at full speed and a new track every 500, until it is killed; counts every
// point appended.
int recordRunUntilKilled(const std::filesystem::path& folder) {
  Messages messages;
  TrackExport trackExport(folder, messages);
  ProgressCounter progress(folder / "progress");
  int files = 0;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) files += entry.path().extension() == ".mps";
  trackExport.openTrackFileAt(localTime(2023, 1, 3, 0, files / 60, files % 60));
  for (uint32_t k = 0;; ++k) {
    if (k > 0 && k % 500 == 0) trackExport.beginRecordedTrack();
    trackExport.appendMpsPoint(numbered(k));
    progress.set(k + 1);
  }
}

}  // namespace orvel::test
