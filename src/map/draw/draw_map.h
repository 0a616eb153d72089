#pragma once
// Drawing a map view: one way for every map format. The format only decodes; drawMap hands
// its objects to the map painter (map_painter.h), which draws them and their labels.
#include <vector>

#include <QPoint>

#include "geo/units.h"
#include "map/labels/label_placer.h"
#include "view/text_measure.h"

class QPainter;

namespace orvel {

class MapFile;
class MapStyles;
class MapView;

// What drawing uses and keeps from one picture to the next: the styles of the map object
// types, the kept advances of the label fonts, the label store and room for one object's
// points on the screen. It belongs to whoever draws maps again and again (the view
// composer). The point arrays grow to the largest object drawn and are then reused, so
// drawing allocates nothing per object.
struct MapDrawContext {
  explicit MapDrawContext(const MapStyles& mapStyles) : styles(mapStyles), labels(measure) {}
  MapDrawContext(const MapDrawContext&) = delete;
  MapDrawContext& operator=(const MapDrawContext&) = delete;

  const MapStyles& styles;
  TextMeasure measure;
  LabelPlacer labels;
  std::vector<MapPoint> screen;
  std::vector<QPoint> qtScreen;
};

// Draws the view's objects of `map` and then their labels with the painter (client size =
// the view's screen size), and leaves the painter's state as it found it.
void drawMap(QPainter& painter, MapFile& map, const MapView& view, const MapRect& visible, MapDrawContext& context);

}  // namespace orvel
