#pragma once
// What pages ask of the window that shows them. The main window is the real host; a test
// that drives a page alone gives it a host of its own.
#include <cstdint>

class QDialog;

namespace orvel {

// Virtual key codes the pages see.
inline constexpr int kKeyLeft = 37;
inline constexpr int kKeyUp = 38;
inline constexpr int kKeyRight = 39;
inline constexpr int kKeyDown = 40;
inline constexpr int kKeyAction = 134;  // the device's action key (Return/Enter here)

class PageHost {
 public:
  virtual ~PageHost() = default;

  // Invalidates the whole client area and repaints it before returning.
  virtual void invalidateMainWindow() = 0;
  virtual int clientWidth() const = 0;
  virtual int clientHeight() const = 0;
  virtual void setPageTimer(int timerId, int periodMs) = 0;
  virtual void killPageTimer(int timerId) = 0;
  virtual void capturePointer(bool captured) = 0;
  // The choice comes back as a command.
  virtual void showPopupMenu(int menuId, int x, int y) = 0;
  // Runs a page's modal dialog (the gauge choice) and returns its end code.
  virtual int runDialog(QDialog& dialog) = 0;
  // The waypoint dialog for a new waypoint (position in degrees, time as an automation date
  // or 0, altitude in metres or 0).
  virtual void openWaypointDialog(float lon, float lat, double time, float altitude) = 0;
};

// The 32-bit millisecond tick count.
uint32_t tickCount();

}  // namespace orvel
