#pragma once
// What the track library keeps, in GPX terms: recorded points, the trail of Tracks.bin, the
// MapSource tracks and the waypoints. Positions keep every step of their semicircles.
#include <vector>

#include "gpx/gpx_data.h"
#include "track/active_track.h"
#include "track/mps_format.h"
#include "track/waypoint_file.h"

namespace orvel {

struct MpsFile;

// Degrees of a position in semicircles, to nine decimals.
double semicirclesToDegrees(Semicircles value);

// A recorded point: elevation and time when the point has them (its depth has no place).
GpxPoint gpxPointOf(const MpsPoint& point);
// One track per track record of the file, named as the record.
GpxData gpxFromMps(const MpsFile& file);
// The trail as drawn: one track named "Tracks.bin", a new segment at each break.
GpxData gpxFromTrackRing(const std::vector<TrackPoint>& points);
// A waypoint with its name, time, elevation (its altitude when not 0) and its comment as
// the description.
GpxWaypoint gpxWaypointOf(const Waypoint& waypoint);

}  // namespace orvel
