#include "view/drawing_objects.h"

#include <memory>

#include "view/fonts.h"

namespace orvel {

namespace {

std::unique_ptr<DrawingObjects>& sharedObjects() {
  static std::unique_ptr<DrawingObjects> objects;
  return objects;
}

}  // namespace

QPen makeSolidPen(const QColor& colour, int width) {
  QPen pen(QBrush(colour), width, Qt::SolidLine, width > 1 ? Qt::RoundCap : Qt::FlatCap,
           width > 1 ? Qt::RoundJoin : Qt::MiterJoin);
  pen.setCosmetic(true);
  return pen;
}

void createDrawingObjects() {
  auto& objects = sharedObjects();
  if (objects) return;
  objects = std::make_unique<DrawingObjects>();
  // Heights are character cells, as the program's fonts are asked for everywhere.
  objects->smallFont = makeGdiFont("Arial", 12, 0, 0);
  objects->largeFont = makeGdiFont("Arial", 14, 0, 0);
  objects->outlinePen = makeSolidPen(Qt::white, 3);
  objects->thinPen = makeSolidPen(Qt::black, 1);
  for (int i = 0; i < kSolidBrushCount; ++i) {
    const QColor colour = colorRefColor(kSolidBrushColors[size_t(i)]);
    objects->brushes[size_t(i)] = QBrush(colour, Qt::SolidPattern);
  }
}

void destroyDrawingObjects() { sharedObjects().reset(); }

const DrawingObjects& drawingObjects() {
  if (!sharedObjects()) createDrawingObjects();
  return *sharedObjects();
}

}  // namespace orvel
