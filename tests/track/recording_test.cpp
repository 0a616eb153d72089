// Fixes through fix processing into the active track and the export file, wired as the
// program wires them.
#include <gtest/gtest.h>

#include "data_dir_fixture.h"
#include "gps/fix_processing.h"
#include "gps/gps_state.h"
#include "track/mps_reader.h"
#include "track/active_track.h"
#include "track/mps_writer.h"
#include "track/track_recording.h"

namespace orvel::test {
namespace {

class RecordingTest : public DataDirTest {
 protected:
  void SetUp() override {
    FixObserver observer;
    connectTrackRecorders(observer, track, trackExport);
    fixes.setFixObserver(std::move(observer));
  }
  ActiveTrack track{dir, settings, messages};
  TrackExport trackExport{dir, messages};
  GpsState gps;
  FixProcessor fixes{gps};
};

GpsFix fixAt(float lon, float lat, double time) {
  GpsFix fix;
  fix.flags = kFixPosition | kFixTime | kFixAltitude;
  fix.longitude = lon;
  fix.latitude = lat;
  fix.time = time;
  fix.altitude = 100.0f;
  return fix;
}

TEST_F(RecordingTest, FixesBecomeTrackPointsAndSegments) {
  track.openTrackStore();
  track.startRecording();
  std::tm start{};
  start.tm_year = 124;
  start.tm_mday = 1;
  trackExport.openTrackFileAt(start);
  const auto mps = trackExport.trackFilePath();

  GpsFix noFix;
  noFix.flags = kFixType;
  fixes.updateFix(fixAt(10.0f, 50.0f, 45000.0));        // first: new track, new segment
  fixes.updateFix(fixAt(10.001f, 50.001f, 45000.001));  // moved
  fixes.updateFix(fixAt(10.001f, 50.002f, 45000.002));  // north only: not a point
  fixes.updateFix(noFix);                               // breaks nothing by itself
  fixes.updateFix(fixAt(10.003f, 50.003f, 45000.003));  // position again: new track and segment
  fixes.updateFix(fixAt(10.004f, 50.004f, 45000.004));
  fixes.fixLost();
  fixes.fixLost();                                      // no second empty track
  fixes.updateFix(fixAt(10.005f, 50.005f, 45000.005));  // moved from the kept fix, after a loss
  trackExport.closeTrackFile();

  const auto points = track.activeTrackPoints();
  ASSERT_EQ(points.size(), 5u);
  const bool breaks[] = {true, false, true, false, true};
  const float lons[] = {10.0f, 10.001f, 10.003f, 10.004f, 10.005f};
  for (size_t i = 0; i < points.size(); ++i) {
    EXPECT_EQ(points[i].startsSegment(), breaks[i]) << i;
    EXPECT_EQ(points[i].lon, degreesToSemicircles(lons[i])) << i;
  }

  const auto raw = readFile(mps);
  const auto file = readMpsFile(std::vector<uint8_t>(raw.begin(), raw.end()));
  ASSERT_TRUE(file);
  ASSERT_EQ(file->tracks.size(), 3u);
  EXPECT_EQ(file->tracks[0].points.size(), 2u);
  EXPECT_EQ(file->tracks[1].points.size(), 2u);
  EXPECT_EQ(file->tracks[2].points.size(), 1u);
  EXPECT_EQ(file->tracks[2].points[0].longitude, mpsSemicircles(10.005f));
  EXPECT_EQ(file->tracks[2].points[0].altitude, 100.0);
}

}  // namespace
}  // namespace orvel::test
