// The GPX layer drawn over the map: where its lines and waypoints land, and what it leaves out.
#include "gpx/layer/gpx_layer.h"

#include <gtest/gtest.h>

#include <QImage>
#include <QPainter>

#include "common/draw_kit.h"
#include "common/recording_device.h"
#include "common/test_data.h"
#include "gpx/gpx_reader.h"
#include "view/map_view.h"

namespace orvel {
namespace {

constexpr QRgb kLayer = 0xFF000000u | kGpxLayerRgb;

MapPoint fine(const GpxPoint& p) {
  return {static_cast<int32_t>(std::floor(p.longitude * (2147483648.0 / 180.0) + 0.5)),
          static_cast<int32_t>(std::floor(p.latitude * (2147483648.0 / 180.0) + 0.5))};
}

bool layerColourNear(const QImage& image, MapPoint at) {
  for (int dy = -1; dy <= 1; ++dy) {
    for (int dx = -1; dx <= 1; ++dx) {
      const int x = at.x + dx;
      const int y = at.y + dy;
      if (x >= 0 && y >= 0 && x < image.width() && y < image.height() && image.pixel(x, y) == kLayer) return true;
    }
  }
  return false;
}

// Every track point, route point and waypoint that the view puts on the screen is drawn
// there, in the layer's colour, whatever the zoom step and the turn of the map.
TEST(GpxLayerDraw, PointsLieWhereTheViewProjectsThem) {
  const struct {
    const char* file;
    uint32_t zoom;
    int rotation;
    int width, height;
  } views[] = {
      {"gpx/cerknicko-jezero-no-creator.gpx", 7, 0, 800, 480},
      {"gpx/cerknicko-jezero-no-creator.gpx", 9, 30, 240, 320},
      {"gpx/cerknicko-jezero-no-creator.gpx", 11, 90, 800, 480},
      {"gpx/gpx1.1_with_all_fields.gpx", 21, 0, 240, 320},
      {"gpx/gpx1.1_with_all_fields.gpx", 26, 0, 800, 480},  // with its track of one point
      {"gpx/first_and_last_elevation.gpx", 16, 200, 480, 480},
  };
  const test::DrawKit kit;
  for (const auto& v : views) {
    SCOPED_TRACE(testing::Message() << v.file << " zoom " << v.zoom << " rotation " << v.rotation);
    GpxData data;
    QString error;
    ASSERT_TRUE(readGpxFile(test::dataFile(v.file), data, error)) << error.toStdString();
    // Without names: a name's halo may cover a line, as it should on a map.
    for (GpxWaypoint& w : data.waypoints) w.name.clear();
    std::vector<GpxPoint> points;
    for (const GpxTrack& t : data.tracks) {
      for (const GpxSegment& s : t.segments) points.insert(points.end(), s.points.begin(), s.points.end());
    }
    for (const GpxRoute& r : data.routes) points.insert(points.end(), r.points.begin(), r.points.end());
    for (const GpxWaypoint& w : data.waypoints) points.push_back(w.point);
    ASSERT_FALSE(points.empty());
    GpxLayer layer;
    layer.showGpx(std::move(data), v.file);
    MapView view;
    view.setScreenSize(v.width, v.height);
    view.setZoomIndex(v.zoom);
    const MapPoint middle = fine(points[points.size() / 2]);
    view.setCentre(middle.x >> 8, middle.y >> 8);
    view.setRotation(v.rotation);
    QImage image(v.width, v.height, QImage::Format_RGB32);
    image.fill(Qt::white);
    {
      QPainter painter(&image);
      layer.drawGpx(painter, kit.drawing, view, view.visibleRect());
    }
    size_t onScreen = 0;
    for (size_t i = 0; i < points.size(); ++i) {
      const MapPoint at = view.semicirclesToScreen(fine(points[i]));
      if (at.x < 1 || at.y < 1 || at.x >= v.width - 1 || at.y >= v.height - 1) continue;
      ++onScreen;
      EXPECT_TRUE(layerColourNear(image, at)) << "point " << i << " at " << at.x << "," << at.y;
    }
    EXPECT_GT(onScreen, 3u);
  }
}

// A trail of 20,000 points across ten degrees of longitude, read as a GPX file.
GpxLayer longTrail() {
  GpxData data;
  GpxSegment& segment = data.tracks.emplace_back().segments.emplace_back();
  for (int i = 0; i < 20000; ++i) segment.points.push_back({45.0 + (i % 7) * 1e-5, 10.0 + i * 5e-4, std::nullopt, std::nullopt});
  GpxLayer layer;
  layer.showGpx(std::move(data), "long.gpx");
  return layer;
}

// The points are projected once per zoom step; a view walks only the runs of points whose
// box it meets.
TEST(GpxLayerDraw, ProjectsOncePerZoomStepAndWalksOnlyWhatTheViewMeets) {
  const test::DrawKit kit;
  GpxLayer layer = longTrail();
  MapView view;
  view.setScreenSize(800, 480);
  view.setZoomIndex(12);
  const size_t allRuns = (20000 - 1 + kGpxRunPoints - 2) / (kGpxRunPoints - 1);
  const struct {
    double lon;  // of the view's centre
    uint32_t zoom;
    uint64_t projections;  // after drawing
    size_t fewestRuns, mostRuns;
  } steps[] = {
      {15.0, 8, 1, 1, 2},               // four kilometres of a 770 km line
      {15.2, 8, 1, 1, 2},               // panned: nothing projected anew
      {25.0, 8, 1, 0, 0},               // beyond the end: nothing drawn
      {15.0, 9, 2, 1, 2},               // the next zoom step
      {15.0, 26, 3, allRuns, allRuns},  // all of it
  };
  for (const auto& s : steps) {
    SCOPED_TRACE(testing::Message() << s.lon << " zoom " << s.zoom);
    view.setZoomIndex(s.zoom);
    view.setCentre(degreesToMapUnits(float(s.lon)), degreesToMapUnits(45.0f));
    test::RecordingDevice device(800, 480);
    {
      QPainter painter(&device);
      layer.drawGpx(painter, kit.drawing, view, view.visibleRect());
    }
    EXPECT_EQ(layer.projections(), s.projections);
    EXPECT_GE(layer.runsDrawn(), s.fewestRuns);
    EXPECT_LE(layer.runsDrawn(), s.mostRuns);
    EXPECT_EQ(device.callsOf(test::DrawCall::Kind::Polyline).empty(), s.mostRuns == 0);
  }
}

}  // namespace
}  // namespace orvel
