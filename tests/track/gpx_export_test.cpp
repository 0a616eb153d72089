// The GPX files the track library and orvel-tool write, checked by xmllint against the
// published schema and read back by gpsbabel. (A recording killed at any moment: the .mps
// writer's torture.)
#include "track/gpx_export.h"

#include <gtest/gtest.h>

#include <fstream>
#include <functional>

#include "common/gpx_check.h"
#include "common/tool_run.h"
#include "data_dir_fixture.h"
#include "gps/ole_date.h"
#include "gpx/gpx_reader.h"
#include "track/active_track.h"
#include "track/mps_reader.h"
#include "track/waypoints.h"

namespace orvel::test {
namespace {

std::string quoted(const std::filesystem::path& path) { return "'" + path.string() + "'"; }

ToolRun runTool(const std::string& args) { return runProgram(ORVEL_TOOL_PATH, args); }

// A point as the source holds it, in degrees.
struct Expected {
  double latitude = 0.0;
  double longitude = 0.0;
  std::optional<double> time;
};

Expected fromSemicircles(Semicircles lat, Semicircles lon, std::optional<double> time) {
  return {lat * (180.0 / 2147483648.0), lon * (180.0 / 2147483648.0), time};
}

// What a written GPX file must hold: the points of one kind ('t' track points, 'w'
// waypoints) and, for tracks, the segments they fall into.
struct Written {
  std::filesystem::path gpx;
  char kind = 't';
  std::vector<Expected> points;
  size_t segments = 0;
};

// The track points of a MapSource file: one segment per track with points.
Written fromMps(const std::filesystem::path& mps, const std::filesystem::path& gpx) {
  Written w{gpx, 't', {}, 0};
  const auto bytes = readFile(mps);
  const auto file = readMpsFile(bytes);
  if (!file) return w;
  for (const MpsTrack& track : file->tracks) {
    if (!track.points.empty()) ++w.segments;
    for (const MpsPoint& p : track.points) {
      w.points.push_back(fromSemicircles(p.latitude, p.longitude,
                                         p.hasTime ? std::optional<double>(p.time) : std::nullopt));
    }
  }
  return w;
}

Written fromWaypoints(const WaypointStore& store) {
  Written w{store.waypointsGpxPath(), 'w', {}, 0};
  for (const Waypoint& p : store.waypoints()) {
    w.points.push_back(fromSemicircles(
        p.lat, p.lon, p.time != 0.0 ? std::optional<double>(automationDateToUnixSeconds(p.time)) : std::nullopt));
  }
  return w;
}

class GpxExportTest : public DataDirTest {
 protected:
  // A run recorded from a real capture by orvel-tool record: run.mps and run.gpx.
  Written recordedRun() {
    const auto capture = dataFile("gps/nmea/bundg_zeus_9.log");
    EXPECT_FALSE(capture.empty());
    const ToolRun run = runTool("record " + quoted(capture) + " -o " + quoted(dir / "run.mps"));
    EXPECT_EQ(run.exitCode, 0) << run.err;
    return fromMps(dir / "run.mps", dir / "run.gpx");
  }

  // The trail of the recorded run in Tracks.bin, a break at each of its tracks, converted.
  Written convertedTrail() {
    const auto bytes = readFile(dir / "run.mps");
    const auto file = readMpsFile(bytes);
    Written w{dir / "trail.gpx", 't', {}, 0};
    if (!file) return w;
    {
      ActiveTrack trail(dir, settings, messages);
      trail.openTrackStore();
      trail.startRecording();
      for (const MpsTrack& track : file->tracks) {
        trail.markSegmentStart();
        for (const MpsPoint& p : track.points) {
          trail.appendActivePoint(float(p.longitude * (180.0 / 2147483648.0)),
                                  float(p.latitude * (180.0 / 2147483648.0)));
        }
      }
      for (const TrackPoint& p : trail.activeTrackPoints()) {
        if (p.startsSegment()) ++w.segments;
        w.points.push_back(fromSemicircles(p.latitude(), p.lon, std::nullopt));
      }
    }
    const ToolRun run = runTool("gpx " + quoted(dir / "Tracks.bin") + " -o " + quoted(w.gpx));
    EXPECT_EQ(run.exitCode, 0) << run.err;
    return w;
  }

  // The waypoints of a shared GPX file saved by the waypoint store: Waypoints.gpx.
  Written savedWaypoints() {
    GpxData shared;
    QString error;
    EXPECT_TRUE(readGpxFile(dataFile("gpx/cerknicko-jezero-no-creator.gpx"), shared, error));
    WaypointStore store(dir, messages);
    for (const GpxWaypoint& w : shared.waypoints) {
      Waypoint& added = store.addWaypoint(float(w.point.longitude), float(w.point.latitude),
                                          w.point.time ? unixSecondsToAutomationDate(*w.point.time) : 0.0,
                                          float(w.point.elevation.value_or(0.0)));
      setWaypointString(added, kWaypointName, w.name.toStdU16String() + u"\u0001 & <ü>");
      setWaypointString(added, kWaypointComment, w.description.toStdU16String());
    }
    EXPECT_TRUE(store.saveWaypoints());
    EXPECT_EQ(store.waypointsGpxPath(), dir / "Waypoints.gpx");
    return fromWaypoints(store);
  }

};

TEST_F(GpxExportTest, EveryGpxFileWrittenValidatesAndGpsbabelReadsItsPoints) {
  const std::vector<std::pair<const char*, std::function<Written()>>> sources = {
      {"recorded run", [this] { return recordedRun(); }},
      {"Tracks.bin", [this] { return convertedTrail(); }},
      {"Waypoints.gpx", [this] { return savedWaypoints(); }},
  };
  for (const auto& [what, make] : sources) {
    SCOPED_TRACE(what);
    const Written written = make();
    ASSERT_GT(written.points.size(), 5u);
    std::string lint;
    EXPECT_TRUE(validGpx11(written.gpx, lint)) << lint;
    std::string error;
    const auto counts = gpsbabelCounts(written.gpx, error);
    ASSERT_TRUE(counts) << error;
    EXPECT_EQ(written.kind == 't' ? counts->segments : counts->waypoints,
              written.kind == 't' ? written.segments : written.points.size());
    const auto points = gpsbabelPoints(written.gpx, written.kind, error);
    ASSERT_TRUE(points) << error;
    ASSERT_EQ(points->size(), written.points.size());
    for (size_t i = 0; i < points->size(); ++i) {
      SCOPED_TRACE(testing::Message() << "point " << i);
      EXPECT_NEAR((*points)[i].latitude, written.points[i].latitude, 1e-6);
      EXPECT_NEAR((*points)[i].longitude, written.points[i].longitude, 1e-6);
      ASSERT_EQ((*points)[i].time.has_value(), written.points[i].time.has_value());
      if (written.points[i].time) {
        EXPECT_NEAR(*(*points)[i].time, *written.points[i].time, 0.5);
      }
    }
  }
}

TEST(OrvelToolGpx, DamagedOrUnknownInputFailsAndWritesNothing) {
  const auto dir = scratchDir("tool-gpx-bad");
  const auto mps = readFile(dataFile("gps/mps/mps-track.mps"));
  ASSERT_FALSE(mps.empty());
  std::vector<uint8_t> ring(kTrackFileSize, 0);
  ring[0] = 0x20;  // nextIndex 10016: past the ring
  ring[1] = 0x27;
  const struct {
    const char* name;
    std::vector<uint8_t> bytes;
    const char* reason;
  } cases[] = {
      {"cut.mps", {mps.begin(), mps.begin() + long(mps.size() / 2)}, "damaged MapSource file (a record runs past the end or disagrees with its count)"},
      {"Tracks.bin", ring, "damaged Tracks.bin (its header names no slot of the ring)"},
      {"Waypoints.bin", {'W', 'O', 2, 32, 4, 1, 2, 3}, "Waypoint data are damaged."},
      {"notes.txt", {'h', 'e', 'l', 'l', 'o', '\n'}, "not a MapSource .mps file, a Tracks.bin or a Waypoints.bin"},
      {"empty", {}, "not a MapSource .mps file, a Tracks.bin or a Waypoints.bin"},
      {"missing", {}, "No such file or directory"},
  };
  for (const auto& c : cases) {
    const auto in = dir / c.name;
    if (std::string_view(c.name) != "missing") std::ofstream(in, std::ios::binary).write(reinterpret_cast<const char*>(c.bytes.data()), std::streamsize(c.bytes.size()));
    const ToolRun run = runTool("gpx " + quoted(in) + " -o " + quoted(dir / "out.gpx"));
    EXPECT_EQ(run.exitCode, 1) << c.name;
    EXPECT_EQ(run.err, "orvel-tool gpx: " + in.string() + ": " + c.reason + "\n") << c.name;
    EXPECT_FALSE(std::filesystem::exists(dir / "out.gpx")) << c.name;
  }
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir), {}), 5);  // no temporary left
  const ToolRun help = runTool("gpx --help");
  EXPECT_EQ(help.exitCode, 0);
  EXPECT_EQ(help.out.rfind("usage: orvel-tool gpx IN -o OUT.gpx\n", 0), 0u);
}

}  // namespace
}  // namespace orvel::test
