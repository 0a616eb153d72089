#pragma once
// The map page: shows the composed map view and turns stylus drags into pans, the up and
// down keys and the zoom commands into zoom steps, a held action key or a tap-and-hold into
// a new waypoint, and each new GPS fix into a turn and a move of the view.
#include <cstdint>

#include "pages/page.h"
#include "pages/page_context.h"
#include "compose/view_composer.h"

namespace orvel {

class CurrentMap;
class MapView;

inline constexpr int kActionTimerId = 10;
inline constexpr int kActionHoldMs = 1000;

class MapPage : public Page {
 public:
  // The page shows `map` through `view`; the layers over the map and the position marker
  // come in through the composer's hooks, which the page's owner sets.
  MapPage(const PageContext& context, MapView& view, CurrentMap& map);

  void initialize() override;
  void shutdown() override;
  std::u16string getTitle() const override { return u"Карта"; }
  void deactivate() override;
  bool usesBackBuffer() const override { return false; }
  void paint(QPainter& painter) override;
  void onFixChanged() override;
  void onPenDown(int x, int y) override;
  void onPenMove(int x, int y) override;
  void onPenUp(int x, int y) override;
  void onContextMenu(int x, int y) override;
  void onSize() override;
  void onTimer(int timerId) override;
  bool onKeyDown(int key) override;
  bool onKeyUp(int key) override;
  int onCommand(int commandId) override;
  bool canZoom() const override { return true; }

  // Rebuilds the off-screen picture of the view and repaints.
  void compose();
  // How many times the picture was rebuilt since start (what a user sees as a redraw).
  uint64_t compositionCount() const { return compositions_; }
  bool panning() const { return panning_; }
  bool actionPending() const { return actionPending_; }
  ViewComposer& composer() { return composer_; }
  const ViewComposer& composer() const { return composer_; }

 private:
  struct PendingWaypoint {
    float longitude = 0.0f;
    float latitude = 0.0f;
    double time = 0.0;
    float altitude = 0.0f;
    uint32_t pressTick = 0;
  };

  void zoomIn();
  void zoomOut();

  PageContext context_;
  MapView& view_;
  CurrentMap& map_;
  ViewComposer composer_;
  uint64_t compositions_ = 0;
  bool composedSinceStart_ = false;
  bool panning_ = false;
  int panStartX_ = 0;
  int panStartY_ = 0;
  int previewDx_ = 0;
  int previewDy_ = 0;
  bool previewShown_ = false;
  bool actionPending_ = false;
  PendingWaypoint pendingWaypoint_;
  int contextX_ = 0;
  int contextY_ = 0;
  int32_t lastHeading_ = 0;
  int32_t lastLatitudeUnits_ = 0;
  int32_t lastLongitudeUnits_ = 0;
};

}  // namespace orvel
