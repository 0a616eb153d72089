#pragma once
// The waypoint store: the user's named points, loaded from data folder/Waypoints.bin at
// start-up, rewritten whole after every change (with Waypoints.gpx beside it, for other GPS
// programs) and drawn over the map. The newest waypoint
// is at the head of the list; loading puts each record at the head too, so a load followed
// by a save reverses the file's order.
#include <filesystem>
#include <forward_list>
#include <functional>
#include <string>

#include <QImage>

#include "core/atomic_file.h"
#include "geo/units.h"
#include "track/waypoint_file.h"

class QPainter;

namespace orvel {

class MapView;
struct DrawingObjects;
class Messages;

// Lets the user edit a new waypoint before it is saved (the waypoint dialog).
using WaypointEditor = std::function<void(Waypoint& waypoint)>;

// The waypoints of one program, used from the interface thread only.
class WaypointStore {
 public:
  // `dataFolder` holds Waypoints.bin; failures to read or write it are told through
  // `messages`. The store draws its own waypoint icon.
  WaypointStore(std::filesystem::path dataFolder, Messages& messages);
  WaypointStore(const WaypointStore&) = delete;
  WaypointStore& operator=(const WaypointStore&) = delete;

  std::filesystem::path waypointsPath() const;     // data folder/Waypoints.bin
  std::filesystem::path waypointsGpxPath() const;  // data folder/Waypoints.gpx

  // Puts the file's records at the head of the list. A missing file is no error; a damaged
  // one keeps its whole records and shows "Waypoint data are damaged."; the file itself is
  // left alone until the next save. A whole file whose Waypoints.gpx is missing or older is
  // written out again as GPX.
  void loadWaypoints();
  // Replaces the file by the whole list, then Waypoints.gpx by the same list in GPX, each
  // atomically: when a save fails (shown) that file keeps what it held, and a failed
  // Waypoints.bin leaves Waypoints.gpx alone. Returns whether both were written.
  bool saveWaypoints();
  // Deletes every waypoint (at exit).
  void freeWaypoints();

  // The list from its head.
  const std::forward_list<Waypoint>& waypoints() const { return list_; }

  // "001" ... "999": the first number no waypoint's name equals; "999" when all are taken.
  std::u16string nextWaypointName() const;

  // The editor new waypoints go through; none: they are saved as made.
  void setWaypointEditor(WaypointEditor editor);

  // Adds a waypoint with the next automatic name at the head of the list, lets the editor
  // change it, and saves the list. `time` is an automation date or 0, `altitude` metres or 0.
  Waypoint& addWaypoint(float lonDegrees, float latDegrees, double time, float altitude);

  // The waypoint icon: 32 x 32, the point itself at (15, 15).
  const QImage& waypointIcon() const { return icon_; }

  // Draws every waypoint inside `visible` (edges included): its icon around it and its name
  // beside it, in the 12-pixel label font.
  void drawWaypoints(QPainter& painter, const DrawingObjects& drawing, const MapView& view,
                     const MapRect& visible) const;

  // Tests pass a hook that stands in for a crash just before a save replaces the file.
  void setBeforeReplaceHook(BeforeReplaceHook hook) { beforeReplace_ = hook; }

 private:
  // Replaces Waypoints.gpx by the list (as the second half of a save does); a failure is
  // shown if `tellFailure`.
  bool writeWaypointsGpx(bool tellFailure);
  const std::filesystem::path folder_;
  Messages& messages_;
  std::forward_list<Waypoint> list_;
  WaypointEditor editor_;
  QImage icon_;
  BeforeReplaceHook beforeReplace_ = nullptr;
};

// Draws the waypoint icon: a small flag standing on the point.
QImage drawWaypointIcon();

}  // namespace orvel
