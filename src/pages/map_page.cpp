#include "pages/map_page.h"

#include <QPainter>

#include "core/message.h"
#include "core/settings.h"
#include "gps/gps_state.h"
#include "map/catalogue/map_styles.h"
#include "map/map_file.h"
#include "pages/commands.h"
#include "pages/page_host.h"
#include "track/active_track.h"
#include "track/waypoints.h"
#include "view/map_view.h"
#include "geo/units.h"

namespace orvel {

namespace {

constexpr int kPanStep = 20;
constexpr float kRotateMinSpeedKmh = 2.0f;

std::optional<PositionSnapshot> currentPosition() {
  if (!gpsReadingActive()) return std::nullopt;
  const GpsFix fix = pagesGpsState().currentFix();
  if (!(fix.flags & kFixPosition)) return std::nullopt;
  PositionSnapshot position;
  position.longitude = fix.longitude;
  position.latitude = fix.latitude;
  position.speedValid = (fix.flags & kFixSpeed) != 0;
  position.speedKmh = fix.speed;
  position.courseValid = (fix.flags & kFixCourse) != 0;
  position.course = fix.course;
  return position;
}

}  // namespace

MapPage& mapPage() {
  static MapPage page;
  return page;
}

void composeMapView() { mapPage().compose(); }

void MapPage::installComposerHooks() {
  composer_.setTrackLayer([](QPainter& painter, const MapView& view, const MapRect&) {
    drawActiveTrack(painter, view);
  });
  composer_.setWaypointLayer(drawWaypoints);
  composer_.setPositionSource(currentPosition);
  composer_.setRepaintRequest(invalidateMainWindow);
}

void MapPage::initialize() {
  panning_ = false;
  actionPending_ = false;
  previewShown_ = false;
  composedSinceStart_ = false;
  lastHeading_ = 0;
  lastLatitudeUnits_ = 0;
  lastLongitudeUnits_ = 0;
  installComposerHooks();
  createMapStyles();
  mapView().setRotation(0);
}

void MapPage::shutdown() {
  composer_ = ViewComposer{};
  destroyMapStyles();
  closeMapFile();
}

void MapPage::deactivate() {
  if (actionPending_) {
    killPageTimer(kActionTimerId);
    actionPending_ = false;
  }
}

void MapPage::compose() {
  ++compositions_;
  composedSinceStart_ = true;
  composer_.composeView(currentMap(), mapView());
}

void MapPage::paint(QPainter& painter) {
  if (!previewShown_) {
    composer_.paintView(painter, mapView());
    return;
  }
  // Drag preview: the old picture shifted, the strips it uncovers filled white. The map is
  // not recomposed until the pen comes up.
  const int width = clientWidth();
  const int height = clientHeight();
  const int dx = previewDx_;
  const int dy = previewDy_;
  if (dx >= 0) {
    painter.fillRect(QRect(0, 0, dx, height), Qt::white);
  } else {
    painter.fillRect(QRect(width + dx, 0, -dx, height), Qt::white);
  }
  if (dy > 0) {
    painter.fillRect(QRect(0, 0, width, dy), Qt::white);
  } else {
    painter.fillRect(QRect(0, height + dy, width, -dy), Qt::white);
  }
  if (!composer_.picture().isNull()) {
    painter.drawImage(QPoint(dx, dy), composer_.picture(), QRect(0, 0, width, height));
  }
}

void MapPage::onPenDown(int x, int y) {
  panStartX_ = x;
  panStartY_ = y;
  panning_ = true;
  capturePointer(true);
}

void MapPage::onPenMove(int x, int y) {
  if (!panning_) return;
  previewDx_ = x - panStartX_;
  previewDy_ = y - panStartY_;
  previewShown_ = true;
  invalidateMainWindow();
}

void MapPage::onPenUp(int x, int y) {
  if (!panning_) return;
  capturePointer(false);
  panning_ = false;
  const bool previewWasShown = previewShown_;
  previewShown_ = false;
  const int dx = x - panStartX_;
  const int dy = y - panStartY_;
  if (dx == 0 && dy == 0) {
    // A tap changes nothing; only a preview that moved away needs putting back.
    if (previewWasShown) invalidateMainWindow();
    return;
  }
  mapView().pan(dx, dy);
  compose();
}

void MapPage::onContextMenu(int x, int y) {
  contextX_ = x;
  contextY_ = y;
  showPopupMenu(kMenuMapPopup, x, y);
}

void MapPage::onSize() {
  // Start-up composes once the map named on the command line is open; showing the window
  // before that must not draw a picture without it.
  if (composedSinceStart_) compose();
}

void MapPage::onTimer(int timerId) {
  if (!actionPending_ || timerId != kActionTimerId) return;
  killPageTimer(kActionTimerId);
  actionPending_ = false;
  openWaypointDialog(pendingWaypoint_.longitude, pendingWaypoint_.latitude,
                     pendingWaypoint_.time, pendingWaypoint_.altitude);
  compose();
}

bool MapPage::onKeyDown(int key) {
  switch (key) {
    case kKeyUp:
      zoomIn();
      return true;
    case kKeyDown:
      zoomOut();
      return true;
    case kKeyAction: {
      // The values are those of the moment of pressing; the dialog opens only if the key
      // is still held when the timer fires.
      const GpsFix fix = pagesGpsState().currentFix();
      const MapPoint centre = mapView().centre();
      pendingWaypoint_.longitude = mapUnitsToDegrees(centre.x);
      pendingWaypoint_.latitude = mapUnitsToDegrees(centre.y);
      pendingWaypoint_.time = (fix.flags & kFixTime) ? fix.time : 0.0;
      pendingWaypoint_.altitude = (fix.flags & kFixAltitude) ? fix.altitude : 0.0f;
      pendingWaypoint_.pressTick = tickCount();
      actionPending_ = true;
      setPageTimer(kActionTimerId, kActionHoldMs);
      return true;
    }
    default:
      return false;
  }
}

bool MapPage::onKeyUp(int key) {
  if (key != kKeyAction) return false;
  if (actionPending_) {
    actionPending_ = false;
    killPageTimer(kActionTimerId);
  }
  return true;
}

int MapPage::onCommand(int commandId) {
  if (commandId < kCmdZoomIn || commandId > kCmdSavePointHere) return 0;
  switch (commandId) {
    case kCmdZoomIn:
      zoomIn();
      return 1;
    case kCmdZoomOut:
      zoomOut();
      return 1;
    case kCmdRecompose:
      compose();
      return 1;
    // The pan commands answer 0, unlike the rest.
    case kCmdPanRight:
      mapView().pan(kPanStep, 0);
      compose();
      return 0;
    case kCmdPanLeft:
      mapView().pan(-kPanStep, 0);
      compose();
      return 0;
    case kCmdPanDown:
      mapView().pan(0, kPanStep);
      compose();
      return 0;
    case kCmdPanUp:
      mapView().pan(0, -kPanStep);
      compose();
      return 0;
    case kCmdGoTo:
      showMessage("Sorry, the feature is not implemented.");
      return 1;
    case kCmdCancel:
      return 1;
    case kCmdSavePointHere: {
      const MapPoint at = mapView().screenToMap(contextX_, contextY_);
      openWaypointDialog(mapUnitsToDegrees(at.x), mapUnitsToDegrees(at.y), 0.0, 0.0f);
      compose();
      return 1;
    }
    default:
      return 0;
  }
}

void MapPage::zoomIn() {
  const uint32_t index = mapView().zoomIndex();
  if (index == 0) return;
  mapView().setZoomIndex(index - 1);
  compose();
}

void MapPage::zoomOut() {
  const uint32_t index = mapView().zoomIndex();
  if (index >= kZoomSteps - 1) return;
  mapView().setZoomIndex(index + 1);
  compose();
}

void MapPage::onFixChanged() {
  const GpsFix fix = pagesGpsState().currentFix();
  bool changed = false;

  if (readSettingBool("RotateMap", false) && (fix.flags & kFixCourse)) {
    if ((fix.flags & kFixSpeed) && fix.speed >= kRotateMinSpeedKmh) {
      const int32_t heading = static_cast<int32_t>(fix.course + 0.5f);
      if (heading != lastHeading_) {
        mapView().setRotation(heading);
        changed = true;
      }
      lastHeading_ = heading;
    }
  } else {
    lastHeading_ = 0;
  }

  if (readSettingBool("KeepVisible", true) && (fix.flags & kFixPosition)) {
    const int32_t lon = degreesToMapUnits(fix.longitude);
    const int32_t lat = degreesToMapUnits(fix.latitude);
    if (lon != lastLongitudeUnits_ || lat != lastLatitudeUnits_) {
      mapView().setCentre(lon, lat);
      changed = true;
    }
    lastLongitudeUnits_ = lon;
    lastLatitudeUnits_ = lat;
  }

  if (changed) compose();
}

}  // namespace orvel
