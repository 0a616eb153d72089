#pragma once
// A page of the main window. The window forwards every paint, pen, key, timer, size,
// command and GPS message to the current page and knows nothing else of it; each operation
// has a default so that a page overrides only what it needs.
#include <string>

class QPainter;

namespace orvel {

class Page {
 public:
  virtual ~Page() = default;

  virtual void initialize() {}
  virtual void shutdown() {}
  virtual std::u16string getTitle() const = 0;
  virtual void activate() {}
  virtual void deactivate() {}
  // true: paint into the shared back buffer, which the window then copies to the screen.
  virtual bool usesBackBuffer() const { return true; }
  virtual void paint(QPainter& painter) = 0;
  virtual void onStatusChanged() {}
  virtual void onFixChanged() {}
  virtual void onSatellitesChanged() {}
  virtual void onPenDown(int /*x*/, int /*y*/) {}
  virtual void onPenMove(int /*x*/, int /*y*/) {}
  virtual void onPenUp(int /*x*/, int /*y*/) {}
  virtual void onContextMenu(int /*x*/, int /*y*/) {}
  virtual void spareOperation() {}
  virtual void onSize() {}
  virtual void onTimer(int /*timerId*/) {}
  // Keys are virtual key codes (see kKey* in page_host.h); true = consumed.
  virtual bool onKeyDown(int /*key*/) { return false; }
  virtual bool onKeyUp(int /*key*/) { return false; }
  virtual int onCommand(int /*commandId*/) { return 0; }
  virtual bool canZoom() const { return false; }
};

}  // namespace orvel
