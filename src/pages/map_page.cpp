#include "pages/map_page.h"

#include <QPainter>

#include "core/message.h"
#include "core/settings.h"
#include "geo/units.h"
#include "gps/gps_state.h"
#include "map/current_map.h"
#include "pages/commands.h"
#include "pages/page_host.h"
#include "view/map_view.h"

namespace orvel {

namespace {

constexpr int kPanStep = 20;
constexpr float kRotateMinSpeedKmh = 2.0f;

}  // namespace

MapPage::MapPage(const PageContext& context, MapView& view, CurrentMap& map)
    : context_(context), view_(view), map_(map), composer_(context.settings, context.drawing, context.styles) {
  composer_.setRepaintRequest([this] { context_.host.invalidateMainWindow(); });
}

void MapPage::initialize() {
  panning_ = false;
  actionPending_ = false;
  previewShown_ = false;
  composedSinceStart_ = false;
  lastHeading_ = 0;
  lastLatitudeUnits_ = 0;
  lastLongitudeUnits_ = 0;
  view_.setRotation(0);
}

void MapPage::shutdown() { map_.closeMapFile(); }

void MapPage::deactivate() {
  if (actionPending_) {
    context_.host.killPageTimer(kActionTimerId);
    actionPending_ = false;
  }
}

void MapPage::compose() {
  ++compositions_;
  composedSinceStart_ = true;
  composer_.composeView(map_.currentMap(), view_);
}

void MapPage::paint(QPainter& painter) {
  if (!previewShown_) {
    composer_.paintView(painter, view_);
    return;
  }
  // Drag preview: the old picture shifted, the strips it uncovers filled white. The map is
  // not recomposed until the pen comes up.
  const int width = context_.host.clientWidth();
  const int height = context_.host.clientHeight();
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
  context_.host.capturePointer(true);
}

void MapPage::onPenMove(int x, int y) {
  if (!panning_) return;
  previewDx_ = x - panStartX_;
  previewDy_ = y - panStartY_;
  previewShown_ = true;
  context_.host.invalidateMainWindow();
}

void MapPage::onPenUp(int x, int y) {
  if (!panning_) return;
  context_.host.capturePointer(false);
  panning_ = false;
  const bool previewWasShown = previewShown_;
  previewShown_ = false;
  const int dx = x - panStartX_;
  const int dy = y - panStartY_;
  if (dx == 0 && dy == 0) {
    // A tap changes nothing; only a preview that moved away needs putting back.
    if (previewWasShown) context_.host.invalidateMainWindow();
    return;
  }
  view_.pan(dx, dy);
  compose();
}

void MapPage::onContextMenu(int x, int y) {
  contextX_ = x;
  contextY_ = y;
  context_.host.showPopupMenu(kMenuMapPopup, x, y);
}

void MapPage::onSize() {
  // Start-up composes once the map named on the command line is open; showing the window
  // before that must not draw a picture without it.
  if (composedSinceStart_) compose();
}

void MapPage::onTimer(int timerId) {
  if (!actionPending_ || timerId != kActionTimerId) return;
  context_.host.killPageTimer(kActionTimerId);
  actionPending_ = false;
  context_.host.openWaypointDialog(pendingWaypoint_.longitude, pendingWaypoint_.latitude,
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
      const GpsFix fix = context_.gps.currentFix();
      const MapPoint centre = view_.centre();
      pendingWaypoint_.longitude = mapUnitsToDegrees(centre.x);
      pendingWaypoint_.latitude = mapUnitsToDegrees(centre.y);
      pendingWaypoint_.time = (fix.flags & kFixTime) ? fix.time : 0.0;
      pendingWaypoint_.altitude = (fix.flags & kFixAltitude) ? fix.altitude : 0.0f;
      pendingWaypoint_.pressTick = tickCount();
      actionPending_ = true;
      context_.host.setPageTimer(kActionTimerId, kActionHoldMs);
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
    context_.host.killPageTimer(kActionTimerId);
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
      view_.pan(kPanStep, 0);
      compose();
      return 0;
    case kCmdPanLeft:
      view_.pan(-kPanStep, 0);
      compose();
      return 0;
    case kCmdPanDown:
      view_.pan(0, kPanStep);
      compose();
      return 0;
    case kCmdPanUp:
      view_.pan(0, -kPanStep);
      compose();
      return 0;
    case kCmdGoTo:
      showMessage(context_.messages, "Sorry, the feature is not implemented.");
      return 1;
    case kCmdCancel:
      return 1;
    case kCmdSavePointHere: {
      const MapPoint at = view_.screenToMap(contextX_, contextY_);
      context_.host.openWaypointDialog(mapUnitsToDegrees(at.x), mapUnitsToDegrees(at.y), 0.0, 0.0f);
      compose();
      return 1;
    }
    default:
      return 0;
  }
}

void MapPage::zoomIn() {
  const uint32_t index = view_.zoomIndex();
  if (index == 0) return;
  view_.setZoomIndex(index - 1);
  compose();
}

void MapPage::zoomOut() {
  const uint32_t index = view_.zoomIndex();
  if (index >= kZoomSteps - 1) return;
  view_.setZoomIndex(index + 1);
  compose();
}

void MapPage::onFixChanged() {
  const GpsFix fix = context_.gps.currentFix();
  bool changed = false;

  if (context_.settings.readSettingBool("RotateMap", false) && (fix.flags & kFixCourse)) {
    if ((fix.flags & kFixSpeed) && fix.speed >= kRotateMinSpeedKmh) {
      const int32_t heading = static_cast<int32_t>(fix.course + 0.5f);
      if (heading != lastHeading_) {
        view_.setRotation(heading);
        changed = true;
      }
      lastHeading_ = heading;
    }
  } else {
    lastHeading_ = 0;
  }

  if (context_.settings.readSettingBool("KeepVisible", true) && (fix.flags & kFixPosition)) {
    const int32_t lon = degreesToMapUnits(fix.longitude);
    const int32_t lat = degreesToMapUnits(fix.latitude);
    if (lon != lastLongitudeUnits_ || lat != lastLatitudeUnits_) {
      view_.setCentre(lon, lat);
      changed = true;
    }
    lastLongitudeUnits_ = lon;
    lastLatitudeUnits_ = lat;
  }

  if (changed) compose();
}

}  // namespace orvel
