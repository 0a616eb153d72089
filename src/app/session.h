#pragma once
// Everything the running viewer keeps, owned in one place for the program's lifetime: the
// settings, the message box's sink, the view and the map shown, the shared drawing objects
// and map styles, the GPX file shown over the map, the recorded trail, its export and the
// waypoints, the receiver's state, fix
// processing and the GPS input with its reading threads. main() makes one;
// whatever needs a part of it is handed that part by reference. Two sessions live side by
// side without touching each other (tests do that).
#include <filesystem>

#include "core/message.h"
#include "core/settings.h"
#include "gps/fix_processing.h"
#include "gps/gps_input.h"
#include "gps/gps_state.h"
#include "gpx/layer/gpx_layer.h"
#include "map/catalogue/map_styles.h"
#include "map/current_map.h"
#include "track/active_track.h"
#include "track/mps_writer.h"
#include "track/ui/waypoint_dialog.h"
#include "track/waypoints.h"
#include "view/drawing_objects.h"
#include "view/map_view.h"

namespace orvel {

class Session {
 public:
  // Needs the GUI application (fonts, icons). The trail, the recorded tracks and the
  // waypoints live in `dataFolder`. Opens no file: start-up does that in its order.
  explicit Session(const std::filesystem::path& dataFolder)
      : track(dataFolder, settings, messages), trackExport(dataFolder, messages), waypoints(dataFolder, messages) {}
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  Settings settings;
  Messages messages;
  MapView view;
  CurrentMap map{messages};
  const DrawingObjects drawing;
  const MapStyles styles;
  GpxLayer gpxLayer;
  ActiveTrack track;
  TrackExport trackExport;
  WaypointStore waypoints;
  LengthFormat lengths;
  GpsState gps;
  FixProcessor fixes{gps};
  // Last made, first gone: its threads end before anything they report to.
  GpsInput gpsInput{fixes, settings};
};

}  // namespace orvel
