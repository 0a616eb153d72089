#pragma once
// The GPX file shown over the map: its tracks (solid), routes (dashed, a dot at each point)
// and waypoints (dots with their names), all in a colour of their own, drawn under the
// recorded trail.
//
// Drawing is made for files of 100,000 points and more: the points are projected once per
// zoom step, and each segment is cut into runs of a few hundred points with a bounding box,
// so that a view draws only the runs whose box it meets.
#include <cstdint>
#include <filesystem>
#include <vector>

#include <QPointF>
#include <QString>

#include "geo/units.h"
#include "gpx/gpx_data.h"

class QPainter;

namespace orvel {

class MapView;
struct DrawingObjects;

inline constexpr uint32_t kGpxLayerRgb = 0x0050DC;  // RGB(0, 80, 220)
inline constexpr size_t kGpxRunPoints = 256;        // points per culled run, at most

// Owned by the program's session; used from the interface thread only.
class GpxLayer {
 public:
  // Reads the file and, when it is whole, shows it in place of what was shown. Otherwise
  // nothing changes and `error` says why (see readGpx).
  bool openGpx(const std::filesystem::path& path, QString& error);
  // Shows data already read (from `path`).
  void showGpx(GpxData data, const std::filesystem::path& path);
  // Shows nothing.
  void closeGpx();

  bool isShown() const { return shown_; }
  const std::filesystem::path& gpxPath() const { return path_; }
  const GpxData& gpxData() const { return data_; }
  // The box of every point, in map units; the empty box when nothing is shown.
  const MapRect& bounds() const { return bounds_; }

  // Draws what meets `visible` (the view's visible box).
  void drawGpx(QPainter& painter, const DrawingObjects& drawing, const MapView& view, const MapRect& visible);
  // How often the points were projected: once for each zoom step drawn at.
  uint64_t projections() const { return projections_; }
  // How many runs of points the last drawing walked (those whose box meets the view).
  size_t runsDrawn() const { return runsDrawn_; }

 private:
  struct Line {
    uint32_t firstRun = 0;
    uint32_t runCount = 0;
    bool route = false;
  };
  struct Run {
    uint32_t first = 0;  // index into fine_
    uint32_t count = 0;  // points, the last shared with the next run of the line
    MapRect box;         // map units
  };

  void project(const MapView& view);
  void drawLines(QPainter& painter, const MapView& view, const MapRect& visible, bool routes);
  void drawWaypoints(QPainter& painter, const DrawingObjects& drawing, const MapView& view,
                     const MapRect& visible) const;

  bool shown_ = false;
  std::filesystem::path path_;
  GpxData data_;
  MapRect bounds_;
  std::vector<MapPoint> fine_;       // semicircles of every track and route point, line by line
  std::vector<MapPoint> waypoints_;  // semicircles of every waypoint
  std::vector<Line> lines_;
  std::vector<Run> runs_;

  // Pixels at the projected zoom step, before the latitude's scale of longitudes.
  std::vector<QPointF> projected_;
  uint32_t projectedZoom_ = UINT32_MAX;
  uint64_t projections_ = 0;
  size_t runsDrawn_ = 0;
};

// Centres the view on `box` (map units) at the finest zoom step that shows all of it.
void fitViewTo(MapView& view, const MapRect& box);

}  // namespace orvel
