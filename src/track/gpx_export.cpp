#include "track/gpx_export.h"

#include <cmath>

#include "gps/ole_date.h"
#include "track/mps_reader.h"

namespace orvel {
namespace {

QString textOf(std::u16string_view text) {
  text = text.substr(0, text.find(u'\0'));
  return QString::fromUtf16(text.data(), static_cast<qsizetype>(text.size()));
}

}  // namespace

// Nine decimals: finer than a semicircle, and what the GPX files are written with.
double semicirclesToDegrees(Semicircles value) { return std::round(value * (180.0 / 2147483648.0) * 1e9) / 1e9; }

GpxPoint gpxPointOf(const MpsPoint& point) {
  GpxPoint p;
  p.latitude = semicirclesToDegrees(point.latitude);
  p.longitude = semicirclesToDegrees(point.longitude);
  // Millimetres: the altitudes are single-precision values from the receiver.
  if (point.hasAltitude) p.elevation = std::round(point.altitude * 1000.0) / 1000.0;
  if (point.hasTime) p.time = static_cast<double>(point.time);
  return p;
}

GpxData gpxFromMps(const MpsFile& file) {
  GpxData data;
  for (const MpsTrack& record : file.tracks) {
    GpxTrack& track = data.tracks.emplace_back();
    track.name = QString::fromLatin1(record.name.data(), static_cast<qsizetype>(record.name.size()));
    if (record.points.empty()) continue;
    GpxSegment& segment = track.segments.emplace_back();
    for (const MpsPoint& p : record.points) segment.points.push_back(gpxPointOf(p));
  }
  return data;
}

GpxData gpxFromTrackRing(const std::vector<TrackPoint>& points) {
  GpxData data;
  GpxTrack& track = data.tracks.emplace_back();
  track.name = QStringLiteral("Tracks.bin");
  for (const TrackPoint& p : points) {
    if (track.segments.empty() || p.startsSegment()) track.segments.emplace_back();
    GpxPoint& point = track.segments.back().points.emplace_back();
    point.latitude = semicirclesToDegrees(p.latitude());
    point.longitude = semicirclesToDegrees(p.lon);
  }
  return data;
}

GpxWaypoint gpxWaypointOf(const Waypoint& waypoint) {
  GpxWaypoint w;
  w.point.latitude = semicirclesToDegrees(waypoint.lat);
  w.point.longitude = semicirclesToDegrees(waypoint.lon);
  if (waypoint.altitude != 0.0f) w.point.elevation = std::round(waypoint.altitude * 1000.0) / 1000.0;
  if (waypoint.time != 0.0) w.point.time = automationDateToUnixSeconds(waypoint.time);
  w.name = textOf(waypoint.name());
  w.description = textOf(waypoint.strings[kWaypointComment]);
  return w;
}

}  // namespace orvel
