#include <QImage>
#include <QPainter>
#include <QPainterPath>
#include <QPolygon>

#include "track/waypoints.h"
#include "view/drawing_objects.h"
#include "view/map_view.h"
#include "view/text_draw.h"

namespace orvel {
namespace {

// The icon's top left corner lies this far up and left of the waypoint.
constexpr int kIconOffset = 15;

}  // namespace

// A small flag: a dark pole standing on the point, a red pennant at its top, and a ring
// around the foot so the exact place stays visible on busy maps.
QImage drawWaypointIcon() {
  QImage icon(32, 32, QImage::Format_ARGB32_Premultiplied);
  icon.fill(Qt::transparent);
  QPainter p(&icon);
  p.setRenderHint(QPainter::Antialiasing, true);

  p.setPen(QPen(QColor(255, 255, 255, 200), 4));  // light outline under the shapes
  p.drawLine(QPointF(15.5, 2.5), QPointF(15.5, 15.5));
  const QPolygonF pennant({QPointF(16.5, 2.0), QPointF(28.0, 6.0), QPointF(16.5, 10.0)});
  p.setBrush(QColor(220, 30, 30));
  p.setPen(QPen(QColor(255, 255, 255, 200), 2));
  p.drawPolygon(pennant);
  p.setPen(QPen(QColor(120, 0, 0), 1));
  p.drawPolygon(pennant);

  p.setPen(QPen(QColor(40, 40, 40), 2));
  p.drawLine(QPointF(15.5, 2.0), QPointF(15.5, 15.5));
  p.setBrush(Qt::NoBrush);
  p.setPen(QPen(QColor(40, 40, 40), 1.5));
  p.drawEllipse(QPointF(15.5, 15.5), 3.0, 2.0);
  return icon;
}

void WaypointStore::drawWaypoints(QPainter& painter, const DrawingObjects& drawing, const MapView& view,
                                  const MapRect& visible) const {
  painter.save();
  painter.setFont(drawing.smallFont);
  painter.setPen(Qt::black);
  painter.setBackgroundMode(Qt::TransparentMode);
  for (const Waypoint& w : list_) {
    const int32_t x = w.lon >> 8;  // map units
    const int32_t y = w.lat >> 8;
    if (x < visible.west || x > visible.east || y < visible.south || y > visible.north) continue;
    const MapPoint screen = view.semicirclesToScreen({w.lon, w.lat});
    painter.drawImage(QPoint(screen.x - kIconOffset, screen.y - kIconOffset), icon_);
    drawTextAt(painter, screen.x + 5, screen.y + 3, w.name(), 0);
  }
  painter.restore();
}

}  // namespace orvel
