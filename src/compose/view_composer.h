#pragma once
// The map page's picture in two steps. composeView draws the slow layers (background, map,
// an opened GPX file, track, waypoints) into an off-screen picture whenever the view or the data change;
// paintView copies that picture and draws the fast layers (scale bar, position marker, north
// arrow) over it at every paint, so a new fix or a repaint never redraws the map.
//
// The composer knows nothing of GPS, tracks or waypoints: they come in through the hooks.
#include <functional>
#include <optional>

#include <QImage>

#include "geo/units.h"
#include "map/draw/draw_map.h"

class QPainter;

namespace orvel {

class MapFile;
class MapStyles;
class MapView;
class Settings;
struct DrawingObjects;

// Where the receiver says we are, as the position marker needs it.
struct PositionSnapshot {
  float longitude = 0.0f;  // degrees, east positive
  float latitude = 0.0f;   // degrees, north positive
  bool speedValid = false;
  float speedKmh = 0.0f;
  bool courseValid = false;
  float course = 0.0f;  // degrees clockwise from north
};

// The current fix, or nothing while GPS input is shut down (then no marker is drawn).
using PositionSource = std::function<std::optional<PositionSnapshot>()>;

// A layer drawn over the map during composition (a GPX file, the recorded track, the
// waypoints).
using ViewLayer =
    std::function<void(QPainter& painter, const MapView& view, const MapRect& visible)>;

// Below this speed the marker is a circle; from it on, an arrow along the course.
inline constexpr float kMarkerArrowSpeedKmh = 2.0f;

class ViewComposer {
 public:
  // "ShowTrack", "ShowWaypoints" and "RotateMap" are read from `settings` where they apply.
  ViewComposer(const Settings& settings, const DrawingObjects& drawing, const MapStyles& styles)
      : settings_(settings), drawing_(drawing), mapDrawing_(styles) {}

  // Rebuilds the picture for the view (re-creating it when the screen size changed), then
  // asks for a repaint. `map` may be null: the picture is then white under the layers.
  void composeView(MapFile* map, const MapView& view);
  // Copies the picture to (0, 0) and draws the scale bar, the position marker and the north
  // arrow over it. Before the first composition only the fast layers are drawn.
  void paintView(QPainter& painter, const MapView& view) const;

  // The GPX file shown over the map, under the recorded track; always drawn when set.
  void setGpxLayer(ViewLayer layer) { gpxLayer_ = std::move(layer); }
  void setTrackLayer(ViewLayer layer) { trackLayer_ = std::move(layer); }
  void setWaypointLayer(ViewLayer layer) { waypointLayer_ = std::move(layer); }
  void setPositionSource(PositionSource source) { positionSource_ = std::move(source); }
  // Called at the end of every composition: invalidate the window and repaint it at once.
  void setRepaintRequest(std::function<void()> request) { repaintRequest_ = std::move(request); }

  const QImage& picture() const { return picture_; }

 private:
  void drawPositionMarker(QPainter& painter, const MapView& view,
                          const PositionSnapshot& fix) const;

  const Settings& settings_;
  const DrawingObjects& drawing_;
  QImage picture_;
  MapDrawContext mapDrawing_;  // labels and scratch kept from one composition to the next
  ViewLayer gpxLayer_;
  ViewLayer trackLayer_;
  ViewLayer waypointLayer_;
  PositionSource positionSource_;
  std::function<void()> repaintRequest_;
};

}  // namespace orvel
