#include "pages/page_host.h"

#include <chrono>
#include <utility>

#include "gps/gps_state.h"
#include "track/waypoints.h"

namespace orvel {

namespace {

PageHost& host() {
  static PageHost theHost;
  return theHost;
}

WaypointDialog& waypointDialog() {
  static WaypointDialog dialog;
  return dialog;
}

std::function<bool()>& readingQuery() {
  static std::function<bool()> query;
  return query;
}

const GpsState*& installedGpsState() {
  static const GpsState* state = nullptr;
  return state;
}

}  // namespace

void setPageHost(PageHost newHost) { host() = std::move(newHost); }

void invalidateMainWindow() {
  if (host().invalidate) host().invalidate();
}

int clientWidth() { return host().clientWidth ? host().clientWidth() : 0; }
int clientHeight() { return host().clientHeight ? host().clientHeight() : 0; }

void setPageTimer(int timerId, int periodMs) {
  if (host().setTimer) host().setTimer(timerId, periodMs);
}

void killPageTimer(int timerId) {
  if (host().killTimer) host().killTimer(timerId);
}

void capturePointer(bool captured) {
  if (host().capturePointer) host().capturePointer(captured);
}

void showPopupMenu(int menuId, int x, int y) {
  if (host().showPopupMenu) host().showPopupMenu(menuId, x, y);
}

WaypointDialog setWaypointDialog(WaypointDialog dialog) {
  return std::exchange(waypointDialog(), std::move(dialog));
}

void openWaypointDialog(float lon, float lat, double time, float altitude) {
  if (waypointDialog()) {
    waypointDialog()(lon, lat, time, altitude);
  } else {
    addWaypoint(lon, lat, time, altitude);
  }
}

void setGpsReadingActive(std::function<bool()> query) { readingQuery() = std::move(query); }

bool gpsReadingActive() { return readingQuery() ? readingQuery()() : false; }

void setPagesGpsState(const GpsState* state) { installedGpsState() = state; }

const GpsState& pagesGpsState() {
  static const GpsState empty;
  return installedGpsState() ? *installedGpsState() : empty;
}

// tickCount() is defined once, with the receiver protocols (gps/gps_protocol.cpp).

}  // namespace orvel
