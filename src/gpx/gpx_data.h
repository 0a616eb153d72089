#pragma once
// What a GPX file holds for the map: tracks made of segments of points, routes of points and
// waypoints, in file order. Texts are kept for what is shown (names) and written back
// (descriptions); everything else a GPX file may carry is left out.
#include <cstddef>
#include <optional>
#include <vector>

#include <QString>

namespace orvel {

struct GpxPoint {
  double latitude = 0.0;   // degrees, north positive
  double longitude = 0.0;  // degrees, east positive
  std::optional<double> elevation;  // metres
  std::optional<double> time;       // seconds since 1970-01-01 00:00 UTC, fractions kept
  friend bool operator==(const GpxPoint&, const GpxPoint&) = default;
};

struct GpxSegment {
  std::vector<GpxPoint> points;
  friend bool operator==(const GpxSegment&, const GpxSegment&) = default;
};

struct GpxTrack {
  QString name;
  std::vector<GpxSegment> segments;
  friend bool operator==(const GpxTrack&, const GpxTrack&) = default;
};

struct GpxRoute {
  QString name;
  std::vector<GpxPoint> points;
  friend bool operator==(const GpxRoute&, const GpxRoute&) = default;
};

struct GpxWaypoint {
  GpxPoint point;
  QString name;
  QString description;
  friend bool operator==(const GpxWaypoint&, const GpxWaypoint&) = default;
};

struct GpxData {
  std::vector<GpxTrack> tracks;
  std::vector<GpxRoute> routes;
  std::vector<GpxWaypoint> waypoints;
  friend bool operator==(const GpxData&, const GpxData&) = default;
};

// The box of every point of the data, in degrees; `empty` when it has none.
struct GpxBounds {
  bool empty = true;
  double south = 0.0;
  double west = 0.0;
  double north = 0.0;
  double east = 0.0;
};

// How much the data holds, as `orvel-tool info` tells it.
struct GpxCounts {
  size_t tracks = 0;
  size_t segments = 0;
  size_t trackPoints = 0;
  size_t routes = 0;
  size_t routePoints = 0;
  size_t waypoints = 0;
  GpxBounds bounds;
};

GpxCounts countGpx(const GpxData& data);

}  // namespace orvel
