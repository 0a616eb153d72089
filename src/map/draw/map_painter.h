#pragma once
// Drawing of decoded map objects, the same for every map format: a consumer that a reader
// hands its objects to, in drawing order (areas, then lines, then points), while it walks
// one view (drawMap in draw_map.h sets this up).
//
// An object the map's own test (MapFile::isDrawn) leaves out is skipped. For each other
// object it applies the rules every map is drawn by:
//   areas   culled by their box (it must meet the visible area and span 2 pixels across or
//           down), filled with the type's brush and no outline; an area label when the
//           object has one, the box spans 10 pixels and at least the text's width;
//   lines   culled the same way, drawn with the type's main pen and again with its second
//           pen when it has one; the label along the line under the same conditions;
//   points  drawn when inside the visible area (edges included): the type's icon centred on
//           the point, the label below right of it, kept off other point labels.
// Labels are collected while drawing and drawn over everything by finish().
//
// Nothing is allocated per object: points are projected into the drawing context's arrays
// (they grow only for an object larger than any before), texts decoded into one buffer, and
// the label placer's lists are reused from draw to draw.
#include <cstdint>
#include <span>

#include "map/draw/draw_map.h"
#include "map/format/map_file.h"
#include "geo/units.h"

class QBrush;
class QFont;
class QFontMetrics;
class QPainter;
class QPen;

namespace orvel {

class MapStyles;
class MapView;

// Sizes on screen that decide what is drawn and labelled.
inline constexpr int kMinDrawnPixels = 2;
inline constexpr int kMinLabelledPixels = 10;

// Icons are drawn with their middle on the point; point labels start below right of it.
inline constexpr int kPointLabelOffset = 3;

class MapPainter final : public ObjectConsumer {
 public:
  MapPainter(QPainter& painter, const MapView& view, const MapRect& visible, MapFile& map,
             MapDrawContext& context);

  // Empties the label store and selects no outline. Call before the first object.
  void begin();
  void onObject(const MapObject& object) override;
  // Draws the collected labels over everything drawn.
  void finish();

 private:
  void drawArea(const MapObject& object);
  void drawLine(const MapObject& object);
  void drawPoint(const MapObject& object);
  // Projects the object's points into the context's arrays; returns how many.
  int project(std::span<const MapPoint> points);
  std::span<const MapPoint> projected(int count) const;
  // Decodes the label into text_; its length (0 for none).
  int fetchLabel(uint32_t labelRef);
  int textWidth(const QFont& font, int length) const;
  void usePen(const QPen* pen);
  void useBrush(const QBrush* brush);

  QPainter& painter_;
  const MapView& view_;
  const MapRect visible_;
  MapFile& map_;
  MapDrawContext& context_;
  const MapStyles& styles_;
  const QPen* pen_ = nullptr;      // the pen selected last; nullptr = no pen
  const QBrush* brush_ = nullptr;  // the brush selected last
  char16_t text_[kLabelCapacity + 1];
};

}  // namespace orvel
