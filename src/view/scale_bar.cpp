#include "view/scale_bar.h"

#include <QPainter>
#include <QPoint>

#include "view/drawing_objects.h"
#include "view/map_view.h"
#include "view/text_draw.h"

namespace orvel {

void drawScaleBar(QPainter& painter, const DrawingObjects& objects, const MapView& view, int x, int y) {
  const QPoint bracket[4] = {
      {x, y - 4}, {x, y}, {x + kScaleBarLength, y}, {x + kScaleBarLength, y - 4}};

  painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
  painter.setPen(objects.outlinePen);
  painter.drawPolyline(bracket, 4);
  painter.setPen(objects.thinPen);
  painter.drawPolyline(bracket, 4);

  // Centred one pixel right of the bar's middle, its bottom on the base line.
  painter.setFont(objects.smallFont);
  painter.setBackgroundMode(Qt::TransparentMode);
  drawHaloText(painter, x + kScaleBarLength / 2 + 1, y + 1, view.zoomLabel(), kTextBottomCenter,
               QColor(Qt::black));
}

}  // namespace orvel
