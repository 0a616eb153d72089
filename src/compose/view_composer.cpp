#include "compose/view_composer.h"

#include <QPainter>
#include <QPoint>
#include <QRect>

#include "core/settings.h"
#include "map/draw/draw_map.h"
#include "map/format/map_file.h"
#include "view/drawing_objects.h"
#include "view/map_view.h"
#include "view/scale_bar.h"
#include "view/text_draw.h"
#include "geo/trig.h"

namespace orvel {

namespace {

constexpr float kDegreesToRadians = 0.0055555557f;  // 1/180, times pi gives radians

int roundToInt(float v) { return floorToInt(v + 0.5f); }

}  // namespace

void ViewComposer::composeView(MapFile* map, const MapView& view) {
  const int width = view.screenWidth();
  const int height = view.screenHeight();
  if (picture_.isNull() || picture_.width() != width || picture_.height() != height) {
    picture_ = (width > 0 && height > 0) ? QImage(width, height, QImage::Format_RGB32) : QImage();
  }

  if (!picture_.isNull()) {
    QPainter painter(&picture_);
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.fillRect(QRect(0, 0, width, height), Qt::white);

    const MapRect visible = view.visibleRect();
    if (map) {
      painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
      painter.setBackgroundMode(Qt::TransparentMode);
      painter.setBackground(QColor(Qt::white));
      // Pattern fills are anchored at the map's middle so they move with the map when panned.
      const MapRect& bounds = map->bounds();
      const MapPoint middle{int32_t((int64_t(bounds.west) + bounds.east) / 2),
                            int32_t((int64_t(bounds.south) + bounds.north) / 2)};
      const MapPoint origin = view.mapToScreen(middle);
      painter.setBrushOrigin(QPoint(origin.x, origin.y));
      drawMap(painter, *map, view, visible, mapDrawing_);
    }
    if (gpxLayer_) gpxLayer_(painter, view, visible);
    if (trackLayer_ && settings_.readSettingBool("ShowTrack", true)) trackLayer_(painter, view, visible);
    if (waypointLayer_ && settings_.readSettingBool("ShowWaypoints", true)) {
      waypointLayer_(painter, view, visible);
    }
  }

  if (repaintRequest_) repaintRequest_();
}

void ViewComposer::paintView(QPainter& painter, const MapView& view) const {
  const int width = view.screenWidth();
  const int height = view.screenHeight();
  if (!picture_.isNull()) {
    // A plain copy of the screen-sized corner, never scaled.
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    painter.drawImage(QPoint(0, 0), picture_, QRect(0, 0, width, height));
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
  }

  drawScaleBar(painter, drawing_, view, 10, height - 15);

  if (positionSource_) {
    if (const std::optional<PositionSnapshot> fix = positionSource_()) {
      drawPositionMarker(painter, view, *fix);
    }
  }

  drawNorthArrow(painter, drawing_, width - 20, 20, 15, 5, float(-view.rotation()) * kPi * kDegreesToRadians);
}

void ViewComposer::drawPositionMarker(QPainter& painter, const MapView& view,
                                      const PositionSnapshot& fix) const {
  // The position is projected as it is, valid or not.
  const MapPoint at =
      view.mapToScreen({degreesToMapUnits(fix.longitude), degreesToMapUnits(fix.latitude)});
  const int cx = at.x;
  const int cy = at.y;

  painter.setPen(makeSolidPen(Qt::white, 1));
  painter.setBrush(QBrush(Qt::black));

  if (fix.speedValid && fix.speedKmh >= kMarkerArrowSpeedKmh) {
    // Heading up when the map turns with the course; else along the course, if known.
    float angle = 0.0f;
    if (!settings_.readSettingBool("RotateMap", false) && fix.courseValid) angle = fix.course;
    const float a = angle * kPi * kDegreesToRadians;
    const float c = tableCos(a);
    const float s = tableSin(a);
    const int bc = roundToInt(6.0f * c);
    const int bs = roundToInt(6.0f * s);
    const QPoint tip(cx + roundToInt(16.0f * s), cy - roundToInt(16.0f * c));
    const QPoint arrow[3] = {{cx + bc, cy + bs}, {cx - bc, cy - bs}, tip};
    painter.drawPolygon(arrow, 3);
  } else {
    // The circle's box runs from (cx - 6, cy - 6) up to, not including, (cx + 7, cy + 7):
    // 13 pixels across. Qt's outline covers width + 1 pixels, hence 12.
    painter.drawEllipse(QRect(cx - 6, cy - 6, 12, 12));
  }
}

}  // namespace orvel
