#include "gpx/gpx_data.h"

#include <algorithm>

namespace orvel {
namespace {

void widen(GpxBounds& box, const GpxPoint& p) {
  if (box.empty) {
    box = {false, p.latitude, p.longitude, p.latitude, p.longitude};
    return;
  }
  box.south = std::min(box.south, p.latitude);
  box.north = std::max(box.north, p.latitude);
  box.west = std::min(box.west, p.longitude);
  box.east = std::max(box.east, p.longitude);
}

}  // namespace

GpxCounts countGpx(const GpxData& data) {
  GpxCounts counts;
  counts.tracks = data.tracks.size();
  for (const GpxTrack& track : data.tracks) {
    counts.segments += track.segments.size();
    for (const GpxSegment& segment : track.segments) {
      counts.trackPoints += segment.points.size();
      for (const GpxPoint& p : segment.points) widen(counts.bounds, p);
    }
  }
  counts.routes = data.routes.size();
  for (const GpxRoute& route : data.routes) {
    counts.routePoints += route.points.size();
    for (const GpxPoint& p : route.points) widen(counts.bounds, p);
  }
  counts.waypoints = data.waypoints.size();
  for (const GpxWaypoint& w : data.waypoints) widen(counts.bounds, w.point);
  return counts;
}

}  // namespace orvel
