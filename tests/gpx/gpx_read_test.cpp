// Reading GPX files written by other programs, checked against what gpsbabel reads from them.
#include "gpx/gpx_reader.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>

#include "common/gpx_check.h"
#include "common/test_data.h"
#include "common/tool_run.h"
#include "gpx/gpx_writer.h"

namespace orvel {
namespace {

using test::BabelCounts;

QByteArray bytesOf(const std::filesystem::path& path) {
  const std::vector<unsigned char> raw = test::readFile(path);
  return QByteArray(reinterpret_cast<const char*>(raw.data()), static_cast<qsizetype>(raw.size()));
}

BabelCounts countsOf(const GpxData& data) {
  const GpxCounts c = countGpx(data);
  return {c.tracks, c.segments, c.trackPoints, c.routes, c.routePoints, c.waypoints};
}

// The points of one kind in file order, as gpsbabel lists them.
std::vector<GpxPoint> pointsOf(const GpxData& data, char kind) {
  std::vector<GpxPoint> points;
  if (kind == 't') {
    for (const GpxTrack& t : data.tracks) {
      for (const GpxSegment& s : t.segments) points.insert(points.end(), s.points.begin(), s.points.end());
    }
  } else if (kind == 'r') {
    for (const GpxRoute& r : data.routes) points.insert(points.end(), r.points.begin(), r.points.end());
  } else {
    for (const GpxWaypoint& w : data.waypoints) points.push_back(w.point);
  }
  return points;
}

// gpsbabel and our reader agree on every point of the file: same count, positions to a
// millionth of a degree (gpsbabel prints six decimals), times to the millisecond.
void expectSamePoints(const std::filesystem::path& file, const GpxData& ours) {
  for (char kind : {'t', 'r', 'w'}) {
    std::string error;
    const auto theirs = test::gpsbabelPoints(file, kind, error);
    ASSERT_TRUE(theirs) << error;
    const std::vector<GpxPoint> mine = pointsOf(ours, kind);
    ASSERT_EQ(mine.size(), theirs->size()) << kind;
    for (size_t i = 0; i < mine.size(); ++i) {
      SCOPED_TRACE(testing::Message() << kind << " point " << i);
      EXPECT_NEAR(mine[i].latitude, (*theirs)[i].latitude, 0.51e-6);
      EXPECT_NEAR(mine[i].longitude, (*theirs)[i].longitude, 0.51e-6);
      ASSERT_EQ(mine[i].time.has_value(), (*theirs)[i].time.has_value());
      if (mine[i].time) {
        EXPECT_NEAR(*mine[i].time, *(*theirs)[i].time, 0.001);
      }
    }
  }
}

// Each shared file reads as gpsbabel reads it, orvel-tool info tells the same, and written
// back it validates, keeps its points and reads back the same.
TEST(GpxRead, SharedFilesReadAsGpsbabelReadsThemAndWriteBackWhole) {
  const auto files = test::filesIn(test::dataDir() / "gpx", [](const std::string& name) {
    return name.ends_with(".gpx");
  });
  ASSERT_GE(files.size(), 20u);
  for (const auto& file : files) {
    SCOPED_TRACE(file.filename().string());
    GpxData data;
    QString error;
    ASSERT_TRUE(readGpxFile(file, data, error)) << error.toStdString();
    std::string babelError;
    const auto babel = test::gpsbabelCounts(file, babelError);
    ASSERT_TRUE(babel) << babelError;
    EXPECT_EQ(countsOf(data), *babel);
    expectSamePoints(file, data);

    const test::ToolRun info = test::runProgram(ORVEL_TOOL_PATH, "info '" + file.string() + "'");
    ASSERT_EQ(info.exitCode, 0) << info.err;
    auto values = test::keyValues(info.out);
    const GpxCounts c = countGpx(data);
    const std::pair<const char*, size_t> facts[] = {{"tracks", c.tracks}, {"segments", c.segments},
        {"track_points", c.trackPoints}, {"routes", c.routes}, {"route_points", c.routePoints},
        {"waypoints", c.waypoints}};
    for (const auto& [key, count] : facts) EXPECT_EQ(values[key], std::to_string(count)) << key;
    char bounds[128] = "none";
    if (!c.bounds.empty) {
      std::snprintf(bounds, sizeof bounds, "%.7f %.7f %.7f %.7f", c.bounds.south, c.bounds.west, c.bounds.north,
                    c.bounds.east);
    }
    EXPECT_EQ(values["bounds_deg"], bounds);

    const auto written = test::scratchDir("gpx-write") / file.filename();
    const QByteArray document = gpxDocument(data);
    std::ofstream(written, std::ios::binary).write(document.constData(), document.size());
    std::string lint;
    EXPECT_TRUE(test::validGpx11(written, lint)) << lint;
    auto again = test::gpsbabelCounts(written, babelError);
    ASSERT_TRUE(again) << babelError;
    // gpsbabel leaves out a <trk> with nothing in it at all (one file has such a track);
    // reading the file back below counts the tracks.
    again->tracks = data.tracks.size();
    EXPECT_EQ(countsOf(data), *again);
    expectSamePoints(written, data);
    GpxData back;
    ASSERT_TRUE(readGpxFile(written, back, error)) << error.toStdString();
    EXPECT_EQ(back, data);
  }
}

TEST(GpxRead, WhatIsNotGpxIsRefusedWithItsReason) {
  const std::filesystem::path map = test::dataFile("maps/monaco_cp1252.img");
  ASSERT_FALSE(map.empty());
  const struct {
    const char* what;
    QByteArray bytes;
    const char* reason;
  } cases[] = {
      {"empty", "", "not a GPX file: "},
      {"text", "just some words\n", "not a GPX file: "},
      {"map", bytesOf(map), "not a GPX file: "},
      {"kml", "<?xml version=\"1.0\"?><kml><Placemark/></kml>", "not a GPX file: its root element is <kml>"},
      {"no position", "<gpx><wpt lat=\"1\"/></gpx>", "damaged GPX file at line 1, column "},
      {"beyond the pole", "<gpx><trk><trkseg><trkpt lat=\"91\" lon=\"0\"/></trkseg></trk></gpx>",
       "damaged GPX file at line 1, column "},
      {"unclosed", "<gpx version=\"1.1\"><trk><trkseg>\n<trkpt lat=\"1\" lon=\"2\"/>", "damaged GPX file at line 2"},
      {"after the root", "<gpx></gpx><gpx></gpx>", "damaged GPX file at line 1"},
  };
  for (const auto& c : cases) {
    GpxData data;
    data.waypoints.emplace_back();  // whatever was in it goes
    QString error;
    EXPECT_FALSE(readGpx(c.bytes, data, error)) << c.what;
    EXPECT_TRUE(error.startsWith(QString::fromUtf8(c.reason))) << c.what << ": " << error.toStdString();
    EXPECT_EQ(error.indexOf(u'\n'), -1) << c.what;
    EXPECT_EQ(data, GpxData{}) << c.what;
  }
}

// Cut short anywhere or with a byte changed anywhere, a file is either read whole or refused
// with a reason; a refused read holds nothing.
TEST(GpxRead, CutOrFlippedFilesAreReadWholeOrRefused) {
  const std::filesystem::path file = test::dataFile("gpx/cerknicko-jezero-no-creator.gpx");
  ASSERT_FALSE(file.empty());
  const QByteArray whole = bytesOf(file);
  GpxData full;
  QString error;
  ASSERT_TRUE(readGpx(whole, full, error));
  const qsizetype rootEnd = whole.lastIndexOf("</gpx>") + 6;
  size_t refused = 0;
  size_t tries = 0;
  const auto check = [&](const QByteArray& bytes, bool cut, qsizetype at) {
    GpxData data;
    ++tries;
    const bool ok = readGpx(bytes, data, error);
    EXPECT_EQ(ok, error.isEmpty()) << at;
    if (!ok) {
      ++refused;
      EXPECT_EQ(data, GpxData{}) << at;
      EXPECT_TRUE(error.startsWith(u"not a GPX file: ") || error.startsWith(u"damaged GPX file at line ")) << at;
    } else if (cut) {
      EXPECT_GE(at, rootEnd);  // only what follows the root may go
      EXPECT_EQ(data, full) << at;
    }
  };
  for (qsizetype length = 0; length <= whole.size(); length += 97) check(whole.first(length), true, length);
  for (qsizetype at = 0; at < whole.size(); at += 53) {
    QByteArray flipped = whole;
    flipped[at] = static_cast<char>(flipped[at] ^ (at % 2 ? 0x20 : 0xFF));
    check(flipped, false, at);
  }
  EXPECT_GT(2 * refused, tries);  // most changes break the file
}

}  // namespace
}  // namespace orvel
