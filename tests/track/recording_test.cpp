// Fixes through fix processing into the active track and the export file, wired as the
// program wires them.
#include <gtest/gtest.h>

#include <QImage>
#include <QPainter>

#include "data_dir_fixture.h"
#include "gps/demo_replay.h"
#include "gps/fix_processing.h"
#include "gps/gps_state.h"
#include "gpx/gpx_reader.h"
#include "track/gpx_export.h"
#include "track/mps_reader.h"
#include "track/active_track.h"
#include "track/mps_writer.h"
#include "track/track_recording.h"
#include "view/map_view.h"

namespace orvel::test {
namespace {

class RecordingTest : public DataDirTest {
 protected:
  void SetUp() override {
    FixObserver observer;
    connectTrackRecorders(observer, track, trackExport);
    fixes.setFixObserver(std::move(observer));
  }
  // Starts recording into the trail and into a run begun on the given day of 2024; returns
  // the run's .mps file.
  std::filesystem::path startRecording(int day) {
    track.openTrackStore();
    track.startRecording();
    std::tm start{};
    start.tm_year = 124;
    start.tm_mday = day;
    trackExport.openTrackFileAt(start);
    return trackExport.trackFilePath();
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
  const auto mps = startRecording(1);

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
  const auto file = readMpsFile(raw);
  ASSERT_TRUE(file);
  ASSERT_EQ(file->tracks.size(), 3u);
  EXPECT_EQ(file->tracks[0].points.size(), 2u);
  EXPECT_EQ(file->tracks[1].points.size(), 2u);
  EXPECT_EQ(file->tracks[2].points.size(), 1u);
  EXPECT_EQ(file->tracks[2].points[0].longitude, mpsSemicircles(10.005f));
  EXPECT_EQ(file->tracks[2].points[0].altitude, 100.0);
  // NAME.gpx beside NAME.mps: one track, a segment for each of the .mps tracks.
  GpxData gpx;
  QString error;
  ASSERT_TRUE(readGpxFile(std::filesystem::path(mps).replace_extension(".gpx"), gpx, error)) << error.toStdString();
  ASSERT_EQ(gpx.tracks.size(), 1u);
  std::vector<GpxSegment> segments;
  for (const MpsTrack& t : file->tracks) {
    GpxSegment& segment = segments.emplace_back();
    for (const MpsPoint& p : t.points) segment.points.push_back(gpxPointOf(p));
  }
  EXPECT_EQ(gpx.tracks[0].segments, segments);
}

// A running GPS (the demo replay's thread, through the NMEA protocol) feeds the recorders
// while this thread does what the interface thread does meanwhile: draws and reads the
// trail and ends tracks. Nothing is lost or doubled between the two: the ring and the
// export hold the same points in the same order.
TEST_F(RecordingTest, RecordersFedByARunningGpsWhileTheInterfaceDrawsAndEndsTracks) {
  const auto mps = startRecording(2);
  DemoReplay replay(fixes);
  DemoReplayOptions options;
  options.burstMs = 150;  // well apart for the burst rules, faster than recorded
  options.setStatus = false;
  ASSERT_TRUE(replay.startDemoReplay(dataFile("gps/nmea/bundg_zeus_9.log").string(), options));
  MapView view;
  view.setScreenSize(240, 320);
  view.setCentre(degreesToMapUnits(kDemoAnchor.longitude), degreesToMapUnits(kDemoAnchor.latitude));
  QImage picture(240, 320, QImage::Format_RGB32);
  for (int round = 0; replay.isDemoReplaying() && replay.demoFixCount() < 12; ++round) {
    QPainter painter(&picture);
    track.drawActiveTrack(painter, view);
    EXPECT_LE(track.activeTrackPoints().size(), kTrackSlots);
    if (round % 16 == 0) trackExport.beginRecordedTrack();
  }
  replay.stopDemoReplay();
  trackExport.closeTrackFile();

  const auto points = track.activeTrackPoints();
  const auto raw = readFile(mps);
  const auto file = readMpsFile(raw);
  ASSERT_TRUE(file);
  std::vector<MpsPoint> exported;
  for (const MpsTrack& t : file->tracks) exported.insert(exported.end(), t.points.begin(), t.points.end());
  ASSERT_GE(points.size(), 5u);
  ASSERT_EQ(points.size(), exported.size());
  for (size_t i = 0; i < points.size(); ++i) {
    EXPECT_NEAR(points[i].lon, exported[i].longitude, 64) << i;
    EXPECT_NEAR(points[i].latitude(), exported[i].latitude, 64) << i;
  }
}

}  // namespace
}  // namespace orvel::test
