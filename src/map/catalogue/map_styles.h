#pragma once
// The drawing objects of the type catalogue, made once: pens, brushes, label fonts and
// colours, point icons. Drawing looks a code up once (findPolygonType and friends in
// catalogue.h) and asks the style set for the row's objects; a row of nullptr (code not
// catalogued) gives the defaults.
#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

#include <QBrush>
#include <QColor>
#include <QFont>
#include <QImage>
#include <QPen>

#include "map/catalogue/catalogue.h"
#include "map/catalogue/type_style.h"

namespace orvel {

struct LabelStyle {
  QFont font;
  QColor colour;
};

// Labels along lines are drawn in label font A turned by the angle of one of 181 steps:
// step i stands for the angle (i * 10 - 900) tenths of a degree, counter-clockwise on the
// screen, i.e. -90..90 whole degrees. Placement picks the step for its angle, turns the
// painter by painterRotationFor(step) about the label's position and draws the text there
// unturned with label font A, its top-left corner at the label's position.
inline constexpr int kRotatedFontCount = 181;

// Step for an angle in whole degrees, counter-clockwise; angles beyond +-90 are clamped.
constexpr int rotatedFontIndex(int degrees) {
  return std::clamp(degrees, -90, 90) + 90;
}
// Angle of a step in tenths of a degree, counter-clockwise (-900..900); steps are clamped.
constexpr int labelAngleFor(int index) {
  return std::clamp(index, 0, kRotatedFontCount - 1) * 10 - 900;
}
// The same angle as QPainter::rotate takes it (degrees, clockwise on the screen).
constexpr double painterRotationFor(int index) { return -labelAngleFor(index) / 10.0; }

class MapStyles {
 public:
  // Needs a QGuiApplication.
  MapStyles();

  // Polygons: the row's fill, or the default fill (pattern 120) when it has none. Pattern
  // brushes repeat from the painter's brush origin: set it to the projected map centre.
  const QBrush& polygonBrush(const TypeStyle* row) const;
  const LabelStyle& polygonLabel(const TypeStyle* row) const;  // default: font A, black
  // Lines: the row's main pen, or the default pen (dashed 1px red).
  const QPen& lineMainPen(const TypeStyle* row) const;
  // The pen drawn over the main one, or nullptr.
  const QPen* lineSecondPen(const TypeStyle* row) const;
  const LabelStyle& lineLabel(const TypeStyle* row) const;  // default: font A, black
  // Points: the row's icon, or nullptr.
  const QImage* pointIcon(const TypeStyle* row) const;
  const LabelStyle& pointLabel(const TypeStyle* row) const;  // default: point font 12, grey

  const QPen& pen(PenId id) const;       // a QPen with Qt::NoPen style for PenId::None
  const LabelStyle& label(LabelId id) const;  // LabelId::None gives font A, black
  const QBrush& defaultFill() const { return patterns_[kDefaultPatternSlot]; }
  const QBrush& patternBrush(int bitmapId) const;  // 116..122; the default fill otherwise
  const QImage* icon(uint16_t id) const;           // nullptr for an id not drawn

  const QFont& labelFontA() const { return labels_[static_cast<size_t>(LabelId::ABlack)].font; }
  // The font of a rotated-label step: label font A (the turn is the painter's).
  const QFont& rotatedLabelFont(int /*index*/) const { return labelFontA(); }

 private:
  static constexpr size_t kDefaultPatternSlot = 4;  // bitmap 120

  std::array<QPen, static_cast<size_t>(PenId::Count)> pens_;
  std::array<LabelStyle, static_cast<size_t>(LabelId::Count)> labels_;
  std::array<QBrush, 7> patterns_;                          // bitmaps 116..122
  std::array<QBrush, kPolygonTypeCount> polygonBrushes_;    // per polygon row
  std::vector<std::pair<uint16_t, QImage>> icons_;          // by id, ascending
  std::array<const QImage*, kPointTypeCount> pointIcons_{};  // per point row
};

}  // namespace orvel
