// Drawing of an .orv map: the chosen level's areas, then lines, then points, each culled by
// its block and its own box, styled from the type catalogue; labels go to placement and are
// drawn last, over everything.
#include <QPainter>

#include "map/catalogue/icons.h"
#include "map/catalogue/map_styles.h"
#include "map/catalogue/catalogue.h"
#include "map/orv/orv_map_file.h"
#include "view/text_draw.h"

namespace orvel {
namespace {

// Objects smaller than this on the screen are not drawn; labels need the larger size.
constexpr int32_t kMinObjectPixels = 2;
constexpr int32_t kMinLabelPixels = 10;
constexpr int kPointLabelOffset = 3;

class OrvDrawer final : public ObjectConsumer {
 public:
  OrvDrawer(MapFile& map, QPainter& painter, const MapView& view, const MapRect& visible, LabelPlacer& labels,
            std::span<MapPoint> screen, std::span<QPoint> qtPoints)
      : map_(map), painter_(painter), view_(view), visible_(visible), styles_(mapStyles()), labels_(labels),
        screen_(screen), qtPoints_(qtPoints) {}

  void onObject(const MapObject& object) override {
    if (object.kind == ObjectKind::Point) {
      drawPoint(object);
      return;
    }
    const size_t n = object.points.size();
    if (n < 2) return;
    const MapRect box = pointBounds(object.points);
    if (!intersects(box, visible_) || !view_.isLargeEnough(box, kMinObjectPixels)) return;
    if (object.kind == ObjectKind::Polygon && !isDrawnPolygonType(object.type)) return;
    for (size_t i = 0; i < n; ++i) {
      screen_[i] = view_.mapToScreen(object.points[i]);
      qtPoints_[i] = QPoint(screen_[i].x, screen_[i].y);
    }
    const std::span<const MapPoint> screen(screen_.data(), n);
    if (object.kind == ObjectKind::Polygon) {
      const TypeStyle* row = findPolygonType(object.type);
      painter_.setBrush(styles_.polygonBrush(row));
      painter_.drawPolygon(qtPoints_.data(), static_cast<int>(n));
      if (const std::u16string_view text = labelFor(object, box); !text.empty()) {
        const LabelStyle& style = styles_.polygonLabel(row);
        if (view_.isLargeEnough(box, textExtent(style.font, text).width())) {
          labels_.addAreaLabel(object.labelRef, screen, style.font, style.colour);
        }
      }
      return;
    }
    const TypeStyle* row = findLineType(object.type);
    painter_.setPen(styles_.lineMainPen(row));
    painter_.drawPolyline(qtPoints_.data(), static_cast<int>(n));
    if (const QPen* second = styles_.lineSecondPen(row)) {
      painter_.setPen(*second);
      painter_.drawPolyline(qtPoints_.data(), static_cast<int>(n));
    }
    if (const std::u16string_view text = labelFor(object, box); !text.empty()) {
      const LabelStyle& style = styles_.lineLabel(row);
      const QSize extent = textExtent(style.font, text);
      if (view_.isLargeEnough(box, extent.width())) {
        labels_.addLineLabel(object.labelRef, screen, style.font, style.colour, extent.height(), extent.width());
      }
    }
  }

 private:
  // The label's text when the object has one and is large enough to carry it.
  std::u16string_view labelFor(const MapObject& object, const MapRect& box) {
    if (object.labelRef == 0 || !view_.isLargeEnough(box, kMinLabelPixels)) return {};
    const int length = map_.getLabel(object.labelRef, text_);
    return std::u16string_view(text_, static_cast<size_t>(length));
  }

  void drawPoint(const MapObject& object) {
    if (object.points.empty() || !contains(visible_, object.points[0])) return;
    const MapPoint at = view_.mapToScreen(object.points[0]);
    const TypeStyle* row = findPointType(object.type);
    if (const QImage* icon = styles_.pointIcon(row)) {
      painter_.drawImage(QPoint(at.x - kIconHotSpot, at.y - kIconHotSpot), *icon);
    }
    if (object.labelRef == 0) return;
    const int length = map_.getLabel(object.labelRef, text_);
    if (length == 0) return;
    const LabelStyle& style = styles_.pointLabel(row);
    labels_.addPointLabel(std::u16string_view(text_, static_cast<size_t>(length)), object.labelRef,
                          at.x + kPointLabelOffset, at.y + kPointLabelOffset, style.font, style.colour);
  }

  MapFile& map_;
  QPainter& painter_;
  const MapView& view_;
  const MapRect& visible_;
  const MapStyles& styles_;
  LabelPlacer& labels_;
  std::span<MapPoint> screen_;
  std::span<QPoint> qtPoints_;
  char16_t text_[kLabelCapacity + 1] = {};
};

}  // namespace

void OrvMapFile::draw(QPainter& painter, const MapView& view, const MapRect& visible) {
  const int width = view.screenWidth();
  const int height = view.screenHeight();
  labels_.resetLabels(width, height);
  OrvLevel entry;
  const int chosen = chooseLevel(view.zoomLevel());
  if (chosen >= 0 && level(static_cast<uint32_t>(chosen), entry)) {
    painter.save();
    OrvDrawer drawer(*this, painter, view, visible, labels_, screenPoints_, qtPoints_);
    // Areas are filled without outline.
    painter.setPen(Qt::NoPen);
    walkPass(entry, visible, ObjectKind::Polygon, drawer);
    painter.setBrush(Qt::NoBrush);
    walkPass(entry, visible, ObjectKind::Line, drawer);
    walkPass(entry, visible, ObjectKind::Point, drawer);
    painter.restore();
  }
  labels_.drawLabels(painter, *this);
  labels_.resetLabels(width, height);
}

}  // namespace orvel
