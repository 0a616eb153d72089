#include "map/draw/map_painter.h"

#include <algorithm>

#include <QBrush>
#include <QImage>
#include <QPainter>
#include <QPen>

#include "map/catalogue/catalogue.h"
#include "map/catalogue/icons.h"
#include "map/catalogue/map_styles.h"
#include "map/labels/label_placer.h"
#include "view/map_view.h"
#include "view/text_draw.h"

namespace orvel {
MapPainter::MapPainter(QPainter& painter, const MapView& view, const MapRect& visible, MapFile& map,
                       MapDrawContext& context)
    : painter_(painter), view_(view), visible_(visible), map_(map), context_(context), styles_(context.styles) {}

void MapPainter::begin() {
  context_.labels.resetLabels(view_.screenWidth(), view_.screenHeight());
  painter_.setPen(Qt::NoPen);
  pen_ = nullptr;
  brush_ = nullptr;
}

void MapPainter::finish() { context_.labels.drawLabels(painter_, map_); }

void MapPainter::onObject(const MapObject& object) {
  if (object.points.empty() || !map_.isDrawn(object)) return;
  switch (object.kind) {
    case ObjectKind::Polygon: drawArea(object); break;
    case ObjectKind::Line: drawLine(object); break;
    case ObjectKind::Point: drawPoint(object); break;
  }
}

int MapPainter::project(std::span<const MapPoint> points) {
  if (context_.screen.size() < points.size()) {
    context_.screen.resize(points.size());
    context_.qtScreen.resize(points.size());
  }
  for (size_t i = 0; i < points.size(); ++i) {
    const MapPoint at = view_.mapToScreen(points[i]);
    context_.screen[i] = at;
    context_.qtScreen[i] = QPoint(at.x, at.y);
  }
  return static_cast<int>(points.size());
}

std::span<const MapPoint> MapPainter::projected(int count) const {
  return std::span<const MapPoint>(context_.screen.data(), static_cast<size_t>(count));
}

int MapPainter::fetchLabel(uint32_t labelRef) {
  if (labelRef == 0) return 0;
  const int length = map_.getLabel(labelRef, text_);
  return std::clamp(length, 0, static_cast<int>(kLabelCapacity));
}

int MapPainter::textWidth(const QFont& font, int length) const {
  return context_.measure.measureText(font, std::u16string_view(text_, static_cast<size_t>(length))).width();
}

void MapPainter::usePen(const QPen* pen) {
  if (pen == pen_) return;
  painter_.setPen(pen != nullptr ? *pen : QPen(Qt::NoPen));
  pen_ = pen;
}

void MapPainter::useBrush(const QBrush* brush) {
  if (brush == brush_) return;
  painter_.setBrush(*brush);
  brush_ = brush;
}

void MapPainter::drawArea(const MapObject& object) {
  const MapRect box = pointBounds(object.points);
  if (!intersects(box, visible_) || !view_.isLargeEnough(box, kMinDrawnPixels)) return;
  const int count = project(object.points);
  const TypeStyle* row = findPolygonType(object.type);
  usePen(nullptr);
  useBrush(&styles_.polygonBrush(row));
  painter_.drawPolygon(context_.qtScreen.data(), count);

  if (object.labelRef == 0 || !view_.isLargeEnough(box, kMinLabelledPixels)) return;
  const int length = fetchLabel(object.labelRef);
  if (length == 0) return;
  const LabelStyle& style = styles_.polygonLabel(row);
  if (!view_.isLargeEnough(box, textWidth(style.font, length))) return;
  context_.labels.addAreaLabel(object.labelRef, projected(count), style.font, style.colour);
}

void MapPainter::drawLine(const MapObject& object) {
  const MapRect box = pointBounds(object.points);
  if (!intersects(box, visible_) || !view_.isLargeEnough(box, kMinDrawnPixels)) return;
  const int count = project(object.points);
  const TypeStyle* row = findLineType(object.type);
  usePen(&styles_.lineMainPen(row));
  painter_.drawPolyline(context_.qtScreen.data(), count);
  if (const QPen* second = styles_.lineSecondPen(row)) {
    usePen(second);
    painter_.drawPolyline(context_.qtScreen.data(), count);
  }

  if (object.labelRef == 0 || !view_.isLargeEnough(box, kMinLabelledPixels)) return;
  const int length = fetchLabel(object.labelRef);
  if (length == 0) return;
  const LabelStyle& style = styles_.lineLabel(row);
  const QSize extent = context_.measure.measureText(style.font, std::u16string_view(text_, static_cast<size_t>(length)));
  if (!view_.isLargeEnough(box, extent.width())) return;
  context_.labels.addLineLabel(object.labelRef, projected(count), style.font, style.colour, extent.height(),
                               extent.width());
}

void MapPainter::drawPoint(const MapObject& object) {
  const MapPoint at = object.points.front();
  if (!contains(visible_, at)) return;
  const MapPoint screen = view_.mapToScreen(at);
  const TypeStyle* row = findPointType(object.type);
  if (const QImage* icon = styles_.pointIcon(row)) {
    painter_.drawImage(QPoint(screen.x - kIconHotSpot, screen.y - kIconHotSpot), *icon);
  }
  const int length = fetchLabel(object.labelRef);
  if (length == 0) return;
  const LabelStyle& style = styles_.pointLabel(row);
  context_.labels.addPointLabel(std::u16string_view(text_, static_cast<size_t>(length)), object.labelRef,
                                screen.x + kPointLabelOffset, screen.y + kPointLabelOffset, style.font,
                                style.colour);
}

}  // namespace orvel
