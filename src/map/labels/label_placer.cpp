#include "map/labels/label_placer.h"

#include <algorithm>
#include <cmath>

#include <QPaintEngine>
#include <QPainter>

#include "map/format/map_file.h"
#include "view/text_draw.h"
#include "view/text_measure.h"

namespace orvel {

namespace {

constexpr double kPiD = 3.14159265358979323846;

// Turned labels larger than this are drawn turned directly, not through the scratch picture.
constexpr int kMaxTurnedExtent = 2048;
// Room around an upright label in the scratch picture for glyphs reaching past its box.
constexpr int kScratchMargin = 2;

int64_t floorDiv(int64_t value, int64_t divisor) {
  const int64_t q = value / divisor;
  return (value % divisor != 0 && value < 0) ? q - 1 : q;
}

uint32_t isqrt(uint64_t v) {
  auto r = uint64_t(std::sqrt(double(v)));
  while (r * r > v) --r;
  while ((r + 1) * (r + 1) <= v) ++r;
  return uint32_t(r);
}

uint32_t segmentLength(const MapPoint& a, const MapPoint& b) {
  const int64_t dx = int64_t(b.x) - a.x;
  const int64_t dy = int64_t(b.y) - a.y;
  return isqrt(uint64_t(dx * dx + dy * dy));
}

}  // namespace

void LabelPlacer::resetLabels(int width, int height) {
  pending_.clear();
  columns_ = std::max(width, 0) / kCellWidth;
  rows_ = std::max(height, 0) / kCellHeight;
  grid_.assign(size_t(columns_) * size_t(rows_), kFreeCell);
}

void LabelPlacer::append(uint32_t labelRef, int64_t x, int64_t y, const QFont& font,
                         const QColor& colour, int16_t rotation, uint8_t alignment, int textWidth,
                         int textHeight) {
  // Positions are kept in 16 bits each; a coordinate out of that range wraps.
  const uint32_t position = uint32_t(uint16_t(x)) | (uint32_t(uint16_t(y)) << 16);
  // A box too large for the scratch picture is left unknown: such a label is drawn turned.
  const bool fits = textWidth > 0 && textHeight > 0 && textWidth <= kMaxTurnedExtent && textHeight <= kMaxTurnedExtent;
  pending_.push_back({labelRef, position, font, colour, rotation, alignment, uint16_t(fits ? textWidth : 0),
                      uint16_t(fits ? textHeight : 0)});
}

bool LabelPlacer::addPointLabel(std::u16string_view text, uint32_t labelRef, int x, int y,
                                const QFont& font, const QColor& colour) {
  // Cell values are list indexes and 0xFFFF means free, so that many labels is the limit.
  if (pending_.size() >= kFreeCell) return false;
  const QSize extent = measure_.measureText(font, text);

  // The box covers the cells from (x, y) to (x + w, y + h) inclusive, and only those inside
  // the grid are tested. A box starting left of or above the screen is cut at column or row
  // 0 (cells are found by rounding down, so the part outside counts for nothing); a box
  // wholly outside covers no cell and is kept.
  const int64_t right = int64_t(x) + extent.width();
  const int64_t bottom = int64_t(y) + extent.height();
  const int firstColumn = int(std::max<int64_t>(floorDiv(x, kCellWidth), 0));
  const int lastColumn = int(std::min<int64_t>(floorDiv(right, kCellWidth), columns_ - 1));
  const int firstRow = int(std::max<int64_t>(floorDiv(y, kCellHeight), 0));
  const int lastRow = int(std::min<int64_t>(floorDiv(bottom, kCellHeight), rows_ - 1));

  if (firstColumn > lastColumn || firstRow > lastRow) {
    append(labelRef, x, y, font, colour, 0, 0);
    return true;
  }
  for (int row = firstRow; row <= lastRow; ++row) {
    for (int column = firstColumn; column <= lastColumn; ++column) {
      if (cell(column, row) != kFreeCell) return false;
    }
  }
  const auto index = uint16_t(pending_.size());
  for (int row = firstRow; row <= lastRow; ++row) {
    uint16_t* line = grid_.data() + size_t(row) * size_t(columns_);
    std::fill(line + firstColumn, line + lastColumn + 1, index);
  }
  append(labelRef, x, y, font, colour, 0, 0);
  return true;
}

void LabelPlacer::addAreaLabel(uint32_t labelRef, std::span<const MapPoint> points,
                               const QFont& font, const QColor& colour) {
  if (points.empty()) return;
  // The mean is taken in unsigned 32-bit arithmetic on purpose. A negative coordinate sum
  // (a polygon lying mostly left of or above the screen) wraps to 2^32 + sum before the
  // division, so its label lands on the true mean (in the 16 bits kept) only when the count
  // is a power of two, and far away otherwise. Such labels are mostly off screen anyway;
  // keep the placement as it is rather than switching to a signed mean.
  uint32_t sumX = 0;
  uint32_t sumY = 0;
  for (const MapPoint& p : points) {
    sumX += uint32_t(p.x);
    sumY += uint32_t(p.y);
  }
  const auto count = uint32_t(points.size());
  append(labelRef, sumX / count, sumY / count, font, colour, 0, kTextCenter);
}

void LabelPlacer::addLineLabel(uint32_t labelRef, std::span<const MapPoint> points,
                               const QFont& font, const QColor& colour, int textHeight,
                               int textWidth) {
  uint64_t total = 0;
  for (size_t i = 1; i < points.size(); ++i) total += segmentLength(points[i - 1], points[i]);

  int64_t anchorX = 0;
  int64_t anchorY = 0;
  int degrees = 0;
  uint64_t run = 0;
  for (size_t i = 1; i < points.size(); ++i) {
    const MapPoint& a = points[i - 1];
    const MapPoint& b = points[i];
    run += segmentLength(a, b);
    if (run <= total / 2) continue;
    anchorX = (int64_t(a.x) + b.x) / 2;
    anchorY = (int64_t(a.y) + b.y) / 2;
    // Fold the direction into [-90°, 90°) so the text never reads upside down. Screen y
    // grows downwards, so the screen angle is negated to get a counter-clockwise rotation.
    double angle = std::atan2(double(b.y) - a.y, double(b.x) - a.x);
    if (angle >= kPiD / 2) {
      angle -= kPiD;
    } else if (angle < -kPiD / 2) {
      angle += kPiD;
    }
    degrees = -int(angle * 180.0 / kPiD + 0.5);
    break;
  }

  // Move the text's top-left corner so that the turned box is centred on the anchor.
  const float r = float(degrees) * 3.1415927f * 0.0055555557f;
  const float s = std::sin(r);
  const float c = std::cos(r);
  const auto w = float(textWidth);
  const auto h = float(textHeight);
  const int offsetX = int(0.5f - (c * w * 0.5f + h * s));
  const int offsetY = int((s * w * 0.5f - h * c) + 0.5f);
  append(labelRef, anchorX + offsetX, anchorY + offsetY, font, colour, int16_t(degrees * 10), 0,
         textWidth, textHeight);
}

void LabelPlacer::drawTurned(QPainter& painter, QPainter& scratchPainter, const PendingLabel& label,
                             std::u16string_view text) {
  const int width = label.textWidth + 2 * kScratchMargin;
  const int height = label.textHeight + 2 * kScratchMargin;
  if (scratch_.width() < width || scratch_.height() < height) {
    if (scratchPainter.isActive()) scratchPainter.end();
    scratch_ = QImage(std::max(width, scratch_.width()), std::max(height, scratch_.height()),
                      QImage::Format_ARGB32_Premultiplied);
  }
  if (!scratchPainter.isActive()) scratchPainter.begin(&scratch_);
  scratchPainter.setCompositionMode(QPainter::CompositionMode_Source);
  scratchPainter.fillRect(QRect(0, 0, width, height), Qt::transparent);
  scratchPainter.setCompositionMode(QPainter::CompositionMode_SourceOver);
  scratchPainter.setFont(label.font);
  scratchPainter.setPen(label.colour);
  drawTextAt(scratchPainter, kScratchMargin, kScratchMargin, text, label.alignment, &measure_);

  // The text's top-left corner stays at the position and the line turns about it.
  const QTransform saved = painter.worldTransform();
  painter.translate(label.x(), label.y());
  painter.rotate(-label.rotation / 10.0);
  painter.drawImage(QPoint(-kScratchMargin, -kScratchMargin), scratch_, QRect(0, 0, width, height));
  painter.setWorldTransform(saved);
}

void LabelPlacer::drawLabels(QPainter& painter, MapFile& map) {
  const bool raster = painter.paintEngine() != nullptr && painter.paintEngine()->type() == QPaintEngine::Raster;
  QPainter scratchPainter;
  char16_t text[kLabelCapacity + 1];
  for (const PendingLabel& label : pending_) {
    const int length = map.getLabel(label.labelRef, text);
    if (length <= 0) continue;
    const std::u16string_view view(text, size_t(std::min<int>(length, int(kLabelCapacity))));
    if (label.rotation != 0 && raster && label.textWidth > 0 && label.textHeight > 0) {
      drawTurned(painter, scratchPainter, label, view);
      continue;
    }
    painter.setFont(label.font);
    painter.setPen(label.colour);
    if (label.rotation == 0) {
      drawTextAt(painter, label.x(), label.y(), view, label.alignment, &measure_);
      continue;
    }
    const QTransform saved = painter.worldTransform();
    painter.translate(label.x(), label.y());
    painter.rotate(-label.rotation / 10.0);
    drawTextAt(painter, 0, 0, view, label.alignment, &measure_);
    painter.setWorldTransform(saved);
  }
}

}  // namespace orvel
