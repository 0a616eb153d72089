#include "track/mps_writer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <csignal>
#include <fcntl.h>
#include <fstream>
#include <sstream>
#include <sys/wait.h>
#include <unistd.h>

#include "core/message.h"
#include "child_process.h"
#include "common/test_data.h"
#include "data_dir_fixture.h"
#include "gps/ole_date.h"
#include "track/mps_reader.h"
#include "track/buffered_writer.h"
#include "track/le_bytes.h"

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

// The points of a real MapSource file, decoded independently into a CSV, written again:
// the points come out byte for byte as in the real file, through a fix and directly.
TEST_F(MpsWriterTest, WritesTheRealTrackBackByteForByte) {
  const auto real = readMpsFile(bytesOf(dataFile("gps/mps/mps-track.mps")));
  ASSERT_TRUE(real);
  const auto csv = readPointsCsv(dataFile("gps/mps/mps-track.points.csv"));
  ASSERT_EQ(csv.size(), 64u);
  ASSERT_EQ(real->tracks[0].points.size(), csv.size());
  const auto rawPoint = [](const MpsTrack& track, size_t i) {
    const auto at = track.pointBytes.subspan(i * kMpsPointSize, kMpsPointSize);
    return std::vector<uint8_t>(at.begin(), at.end());
  };
  for (size_t i = 0; i < csv.size(); ++i) {
    GpsFix fix;  // altitude in single precision, time as an automation date
    fix.flags = kFixAltitude | kFixTime;
    fix.altitude = static_cast<float>(csv[i].altitude);
    fix.time = unixSecondsToAutomationDate(csv[i].time);
    MpsPoint point = mpsPointFromFix(fix);
    point.latitude = csv[i].lat;
    point.longitude = csv[i].lon;
    const auto encoded = encodeMpsPoint(point);
    EXPECT_EQ(std::vector<uint8_t>(encoded.begin(), encoded.end()), rawPoint(real->tracks[0], i)) << "point " << i;
  }

  trackExport.openTrackFileAt(localTime(2002, 5, 25, 19, 6, 21));
  ASSERT_TRUE(trackExport.isTrackFileOpen());
  const auto path = trackExport.trackFilePath();
  EXPECT_EQ(path, dir / "2002-05-25_19-06-21.mps");
  for (const CsvPoint& p : csv) {
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

}  // namespace

// A run that is never ended: the child dies in it.
int writeMpsUntilKilled(const std::filesystem::path& folder) {
  Messages messages;
  TrackExport trackExport(folder, messages);
  trackExport.openTrackFileAt(localTime(2023, 1, 2, 3, 4, 9));
  for (int i = 0; i < 200; ++i) trackExport.appendMpsPoint({i, i, false, 0, false, 0, false, 0});
  ::raise(SIGKILL);
  return 0;
}

namespace {

TEST_F(MpsWriterTest, CrashLeavesThePlaceholders) {
  const int status = runChild("writeMpsUntilKilled", dir);
  ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL);
  const auto bytes = bytesOf(dir / "2023-01-02_03-04-09.mps");
  ASSERT_GE(bytes.size(), 44u + 5 + 14u);  // the first buffers reached the file
  EXPECT_EQ(le::load32(bytes.data() + 44), kMpsLengthPlaceholder);
  EXPECT_EQ(bytes[48], 'T');
  EXPECT_EQ(le::load32(bytes.data() + 49 + 10 + 5), kMpsCountPlaceholder);
  EXPECT_FALSE(readMpsFile(bytes));
}

}  // namespace
}  // namespace orvel::test
