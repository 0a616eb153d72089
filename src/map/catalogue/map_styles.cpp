#include "map/catalogue/map_styles.h"

#include <cstddef>
#include <functional>
#include <memory>

#include "map/catalogue/icons.h"
#include "map/catalogue/patterns.h"
#include "view/fonts.h"

namespace orvel {
namespace {

QColor rgb(uint32_t value) { return QColor::fromRgb(static_cast<QRgb>(value)); }

// Pens in pixels whatever the painter's transform; wide pens end and join round.
QPen makePen(bool dashed, int width, QColor colour) {
  QPen pen(colour, width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
  pen.setCosmetic(true);
  if (dashed) {
    pen.setCapStyle(Qt::FlatCap);
    pen.setDashPattern({6, 3});  // in pen widths: 6 pixels drawn, 3 left out
  }
  return pen;
}

struct PenRow {
  PenId id;
  bool dashed;
  int width;
  QRgb colour;
};

constexpr PenRow kPens[] = {
    {PenId::Tram, false, 2, qRgb(0, 0, 0)},
    {PenId::DepthMajor, false, 2, qRgb(0, 255, 255)},
    {PenId::DepthIntermediate, false, 1, qRgb(0, 255, 255)},
    {PenId::DepthMinor, true, 1, qRgb(0, 255, 255)},
    {PenId::LandMajor, false, 2, qRgb(137, 80, 24)},
    {PenId::LandIntermediate, false, 1, qRgb(137, 80, 24)},
    {PenId::LandMinor, true, 1, qRgb(137, 80, 24)},
    {PenId::Border, true, 1, qRgb(0, 200, 100)},
    {PenId::Shoreline, false, 1, qRgb(0, 0, 128)},
    {PenId::IntermittentStream, true, 1, qRgb(0, 0, 255)},
    {PenId::Stream, false, 1, qRgb(0, 0, 255)},
    {PenId::RailroadBase, false, 3, qRgb(0, 0, 0)},
    {PenId::RailroadTies, true, 1, qRgb(255, 255, 255)},
    {PenId::Trail, true, 1, qRgb(0, 0, 0)},
    {PenId::Street, false, 1, qRgb(255, 0, 0)},
    {PenId::MainRoad, false, 2, qRgb(255, 0, 0)},
    {PenId::PrincipalHighway, false, 3, qRgb(230, 0, 0)},
    {PenId::HighwayCasing, false, 4, qRgb(100, 50, 50)},
    {PenId::HighwayInner, false, 2, qRgb(196, 100, 66)},
    {PenId::Default, true, 1, qRgb(255, 0, 0)},
};

enum class FontId : uint8_t { A, P12, P14, P16, P18 };

struct LabelRow {
  LabelId id;
  FontId font;
  QRgb colour;
};

constexpr LabelRow kLabels[] = {
    {LabelId::None, FontId::A, qRgb(0, 0, 0)},
    {LabelId::ABlack, FontId::A, qRgb(0, 0, 0)},
    {LabelId::ANavy, FontId::A, qRgb(0, 0, 128)},
    {LabelId::ABlue, FontId::A, qRgb(0, 0, 255)},
    {LabelId::AGreen, FontId::A, qRgb(0, 200, 100)},
    {LabelId::ABrown, FontId::A, qRgb(137, 80, 24)},
    {LabelId::ACyan, FontId::A, qRgb(0, 255, 255)},
    {LabelId::P12Black, FontId::P12, qRgb(0, 0, 0)},
    {LabelId::P12Grey, FontId::P12, qRgb(96, 96, 96)},
    {LabelId::P12Cyan, FontId::P12, qRgb(0, 255, 255)},
    {LabelId::P12Brown, FontId::P12, qRgb(137, 80, 24)},
    {LabelId::P14Black, FontId::P14, qRgb(0, 0, 0)},
    {LabelId::P16Black, FontId::P16, qRgb(0, 0, 0)},
    {LabelId::P18Black, FontId::P18, qRgb(0, 0, 0)},
};

template <typename Id>
size_t slot(Id id) {
  return static_cast<size_t>(id);
}

// Which table a row belongs to, and where; -1 when it is none of that table's rows.
ptrdiff_t rowIndex(const TypeStyle* row, std::span<const TypeStyle> table) {
  if (row == nullptr) return -1;
  const std::less<const TypeStyle*> before;
  if (before(row, table.data()) || !before(row, table.data() + table.size())) return -1;
  return row - table.data();
}

}  // namespace

MapStyles::MapStyles() {
  static_assert(kDefaultFillPatternId - kFirstPatternId == 4);

  pens_[slot(PenId::None)] = QPen(Qt::NoPen);
  for (const PenRow& row : kPens) {
    pens_[slot(row.id)] = makePen(row.dashed, row.width, QColor::fromRgb(row.colour));
  }

  // Label font A: the narrow bold face of map labels; point fonts as the point table names.
  const std::array<QFont, 5> fonts{
      makeGdiFont("Century Gothic", 16, 5, 700), makeGdiFont("Tahoma", 12, 0, 0),
      makeGdiFont("Tahoma", 14, 0, 700), makeGdiFont("Tahoma", 16, 0, 700),
      makeGdiFont("Tahoma", 18, 0, 700)};
  for (const LabelRow& row : kLabels) {
    labels_[slot(row.id)] = {fonts[slot(row.font)], QColor::fromRgb(row.colour)};
  }

  for (int id = kFirstPatternId; id <= kLastPatternId; ++id) {
    patterns_[static_cast<size_t>(id - kFirstPatternId)] = QBrush(loadPatternTile(id));
  }

  const auto polygons = polygonTypes();
  for (size_t i = 0; i < polygons.size(); ++i) {
    const FillRef& fill = polygons[i].fill;
    switch (fill.kind) {
      case FillKind::Solid:
        polygonBrushes_[i] = QBrush(rgb(fill.value));
        break;
      case FillKind::Pattern:
        polygonBrushes_[i] = patternBrush(static_cast<int>(fill.value));
        break;
      case FillKind::None:
        polygonBrushes_[i] = defaultFill();
        break;
    }
  }

  for (uint16_t id : iconIds()) icons_.emplace_back(id, loadIcon(id));
  const auto points = pointTypes();
  for (size_t i = 0; i < points.size(); ++i) {
    pointIcons_[i] = points[i].icon != 0 ? icon(points[i].icon) : nullptr;
  }
}

const QBrush& MapStyles::polygonBrush(const TypeStyle* row) const {
  const ptrdiff_t i = rowIndex(row, polygonTypes());
  return i >= 0 ? polygonBrushes_[static_cast<size_t>(i)] : defaultFill();
}

const LabelStyle& MapStyles::polygonLabel(const TypeStyle* row) const {
  return label(row != nullptr ? row->label : LabelId::ABlack);
}

const QPen& MapStyles::lineMainPen(const TypeStyle* row) const {
  return pen(row != nullptr && row->pen != PenId::None ? row->pen : PenId::Default);
}

const QPen* MapStyles::lineSecondPen(const TypeStyle* row) const {
  if (row == nullptr || row->secondPen == PenId::None) return nullptr;
  return &pen(row->secondPen);
}

const LabelStyle& MapStyles::lineLabel(const TypeStyle* row) const {
  return label(row != nullptr ? row->label : LabelId::ABlack);
}

const QImage* MapStyles::pointIcon(const TypeStyle* row) const {
  const ptrdiff_t i = rowIndex(row, pointTypes());
  if (i >= 0) return pointIcons_[static_cast<size_t>(i)];
  return row != nullptr && row->icon != 0 ? icon(row->icon) : nullptr;
}

const LabelStyle& MapStyles::pointLabel(const TypeStyle* row) const {
  return label(row != nullptr && row->label != LabelId::None ? row->label : LabelId::P12Grey);
}

const QPen& MapStyles::pen(PenId id) const {
  return pens_[slot(id) < pens_.size() ? slot(id) : slot(PenId::Default)];
}

const LabelStyle& MapStyles::label(LabelId id) const {
  return labels_[slot(id) < labels_.size() ? slot(id) : slot(LabelId::None)];
}

const QBrush& MapStyles::patternBrush(int bitmapId) const {
  if (bitmapId < kFirstPatternId || bitmapId > kLastPatternId) return defaultFill();
  return patterns_[static_cast<size_t>(bitmapId - kFirstPatternId)];
}

const QImage* MapStyles::icon(uint16_t id) const {
  auto it = std::lower_bound(icons_.begin(), icons_.end(), id,
                             [](const auto& entry, uint16_t key) { return entry.first < key; });
  return it != icons_.end() && it->first == id ? &it->second : nullptr;
}

}  // namespace orvel
