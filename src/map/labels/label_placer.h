#pragma once
// Labels of one map drawing. They are collected while the geometry is drawn and drawn all at
// once at the end, so text lies on top of every polygon, line and icon. Point labels keep
// off each other through a coarse occupancy grid of the screen; area labels sit on the
// polygon's vertex mean; line labels turn with the segment that holds the line's midpoint.
//
// Only label references are kept: the texts are fetched from the map again when drawn.
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include <QColor>
#include <QFont>
#include <QImage>

#include "geo/units.h"

class QPainter;

namespace orvel {

class TextMeasure;

class MapFile;

struct PendingLabel {
  uint32_t labelRef = 0;   // for MapFile::getLabel
  uint32_t position = 0;   // x in the low 16 bits, y in the high 16 bits
  QFont font;
  QColor colour;
  int16_t rotation = 0;    // tenths of a degree, counter-clockwise on screen
  uint8_t alignment = 0;   // 0 top left at the position, 1 centred horizontally (areas)
  uint16_t textWidth = 0;  // line labels: the text box measured when placed (0: unknown)
  uint16_t textHeight = 0;

  int x() const { return int16_t(position & 0xFFFFu); }
  int y() const { return int16_t(position >> 16); }
};

class LabelPlacer {
 public:
  // Labels are measured with `measure`, which keeps the advances of the label fonts.
  explicit LabelPlacer(TextMeasure& measure) : measure_(measure) {}

  static constexpr int kCellWidth = 8;
  static constexpr int kCellHeight = 4;
  static constexpr uint16_t kFreeCell = 0xFFFF;

  // Empties the list and sizes the grid to the client area, every cell free.
  void resetLabels(int width, int height);

  // A label whose top-left corner is (x, y): kept only if none of the grid cells its text
  // box covers is taken; then it takes them. Returns whether it was kept.
  bool addPointLabel(std::u16string_view text, uint32_t labelRef, int x, int y,
                     const QFont& font, const QColor& colour);
  // A label centred on the vertex mean of the polygon (screen points). Not entered in the
  // grid: the caller has already checked that the polygon is wide enough for the text.
  void addAreaLabel(uint32_t labelRef, std::span<const MapPoint> points, const QFont& font,
                    const QColor& colour);
  // A label along the segment holding the middle of the line's length (screen points),
  // turned so it never reads upside down; its text box (textWidth × textHeight) is centred
  // about that segment's midpoint. Not entered in the grid.
  void addLineLabel(uint32_t labelRef, std::span<const MapPoint> points, const QFont& font,
                    const QColor& colour, int textHeight, int textWidth);

  // Draws every pending label in the order they came, fetching each text from `map`.
  // On a raster picture a turned label is set upright in a scratch picture and that is
  // turned onto the map: the glyphs stay in the font cache instead of being rasterised again
  // for each of the 181 angles.
  void drawLabels(QPainter& painter, MapFile& map);

  const std::vector<PendingLabel>& pending() const { return pending_; }
  int columns() const { return columns_; }
  int rows() const { return rows_; }
  // The index of the label holding the cell, or kFreeCell.
  uint16_t cell(int column, int row) const {
    return grid_[size_t(row) * size_t(columns_) + size_t(column)];
  }

 private:
  TextMeasure& measure_;
  void append(uint32_t labelRef, int64_t x, int64_t y, const QFont& font, const QColor& colour,
              int16_t rotation, uint8_t alignment, int textWidth = 0, int textHeight = 0);
  void drawTurned(QPainter& painter, QPainter& scratchPainter, const PendingLabel& label,
                  std::u16string_view text);

  std::vector<uint16_t> grid_;  // row by row
  int columns_ = 0;
  int rows_ = 0;
  std::vector<PendingLabel> pending_;
  QImage scratch_;  // upright turned labels; grows to the largest one, kept between draws
};

}  // namespace orvel
