#pragma once
// What the map targets share: a loaded map decoded at several views the way drawing visits it,
// without painting. Every object goes through the map's own test, every label it names is
// read, and every point is projected through the view, so that a coordinate no screen could
// hold still meets the projection's arithmetic (UndefinedBehaviorSanitizer). Painting adds
// nothing that reads the file and costs most of the time.
#include <cstdint>
#include <initializer_list>

#include "fuzz_check.h"
#include "geo/units.h"
#include "map/format/map_file.h"
#include "view/map_view.h"

namespace orvel::fuzz {

class MapWalker final : public ObjectConsumer {
 public:
  MapWalker(MapFile& map, const MapView& view, const MapRect& visible) : map_(map), view_(view), visible_(visible) {}

  void onObject(const MapObject& object) override {
    FUZZ_CHECK(object.kind == ObjectKind::Polygon || object.kind == ObjectKind::Line ||
               object.kind == ObjectKind::Point);
    if (object.points.empty()) return;
    map_.isDrawn(object);
    const MapRect box = pointBounds(object.points);
    if (intersects(box, visible_)) view_.isLargeEnough(box, 2);
    for (const MapPoint& point : object.points) {
      const MapPoint screen = view_.mapToScreen(point);
      sum_ += static_cast<uint32_t>(screen.x) ^ static_cast<uint32_t>(screen.y);
    }
    if (object.labelRef != 0) {
      char16_t text[kLabelCapacity + 1];
      const int length = map_.getLabel(object.labelRef, text);
      FUZZ_CHECK(length >= 0 && length <= static_cast<int>(kLabelCapacity) && text[length] == 0);
    }
  }

  uint32_t sum() const { return sum_; }

 private:
  MapFile& map_;
  const MapView& view_;
  const MapRect& visible_;
  uint32_t sum_ = 0;  // keeps the projections from being left out
};

// Decodes the loaded map at the map's opening view, then at each given zoom step; the step
// `rotatedZoom` with the picture turned by 30 degrees. The targets give a middle step and the
// finest: more steps read the same levels again and reached no further code on the kept
// inputs, at twice the time per input.
inline uint32_t walkMap(MapFile& map, std::initializer_list<uint32_t> zooms, uint32_t rotatedZoom) {
  MapView view;
  view.setScreenSize(240, 320);
  view.fitNewMap(map.bounds());
  uint32_t sum = 0;
  const auto walk = [&] {
    const MapRect visible = view.visibleRect();
    MapWalker walker(map, view, visible);
    map.decode(view, visible, walker);
    sum += walker.sum();
  };
  walk();
  for (const uint32_t zoom : zooms) {
    view.setZoomIndex(zoom);
    view.setRotation(zoom == rotatedZoom ? 30 : 0);
    walk();
  }
  return sum;
}

}  // namespace orvel::fuzz
