#pragma once
// What pages ask of the window that shows them. The main window installs the real
// services; until then (and in a test that drives a page alone) each does nothing.
#include <cstdint>
#include <functional>

namespace orvel {

class GpsState;

// Virtual key codes the pages see.
inline constexpr int kKeyLeft = 37;
inline constexpr int kKeyUp = 38;
inline constexpr int kKeyRight = 39;
inline constexpr int kKeyDown = 40;
inline constexpr int kKeyAction = 134;  // the device's action key (Return/Enter here)

struct PageHost {
  std::function<void()> invalidate;                  // repaint the client area now
  std::function<int()> clientWidth;
  std::function<int()> clientHeight;
  std::function<void(int timerId, int periodMs)> setTimer;
  std::function<void(int timerId)> killTimer;
  std::function<void(bool captured)> capturePointer;
  std::function<void(int menuId, int x, int y)> showPopupMenu;  // choice comes as a command
};

void setPageHost(PageHost host);

// Invalidates the whole client area and repaints it before returning.
void invalidateMainWindow();
int clientWidth();
int clientHeight();
void setPageTimer(int timerId, int periodMs);
void killPageTimer(int timerId);
void capturePointer(bool captured);
void showPopupMenu(int menuId, int x, int y);

// The waypoint dialog for a new waypoint (position in degrees, time as an automation date
// or 0, altitude in metres or 0). By default the waypoint is added to the store.
using WaypointDialog = std::function<void(float lon, float lat, double time, float altitude)>;
WaypointDialog setWaypointDialog(WaypointDialog dialog);
void openWaypointDialog(float lon, float lat, double time, float altitude);

// Whether GPS reading runs (the position marker is drawn only then). Port scanning is not
// started by this program yet, so the default says no.
void setGpsReadingActive(std::function<bool()> query);
bool gpsReadingActive();

// The GPS state the pages read. The program (or a test) installs the one it owns before the
// pages use it and removes it (null) before that one goes; until then the pages read an
// empty state.
void setPagesGpsState(const GpsState* state);
const GpsState& pagesGpsState();

// The 32-bit millisecond tick count.
uint32_t tickCount();

}  // namespace orvel
