#include "view/drawing_objects.h"

#include "view/fonts.h"

namespace orvel {

QPen makeSolidPen(const QColor& colour, int width) {
  QPen pen(QBrush(colour), width, Qt::SolidLine, width > 1 ? Qt::RoundCap : Qt::FlatCap,
           width > 1 ? Qt::RoundJoin : Qt::MiterJoin);
  pen.setCosmetic(true);
  return pen;
}

DrawingObjects::DrawingObjects()
    // Heights are character cells, as the program's fonts are asked for everywhere.
    : smallFont(makeGdiFont("Arial", 12, 0, 0)),
      largeFont(makeGdiFont("Arial", 14, 0, 0)),
      outlinePen(makeSolidPen(Qt::white, 3)),
      thinPen(makeSolidPen(Qt::black, 1)) {
  for (int i = 0; i < kSolidBrushCount; ++i) {
    brushes[size_t(i)] = QBrush(colorRefColor(kSolidBrushColors[size_t(i)]), Qt::SolidPattern);
  }
}

}  // namespace orvel
