#include "gpx/layer/gpx_layer.h"

#include <algorithm>
#include <cmath>

#include <QPainter>
#include <QPen>

#include "gpx/gpx_reader.h"
#include "view/drawing_objects.h"
#include "view/map_view.h"
#include "view/text_draw.h"

namespace orvel {
namespace {

constexpr int kTrackPenWidth = 3;
constexpr int kRoutePenWidth = 2;
constexpr int kRoutePointWidth = 6;
constexpr int kWaypointRadius = 4;
// Lines are cut this many pixels beyond the screen's edges, outside the widest pen's reach.
constexpr double kClipMargin = 8.0;

Semicircles toSemicircles(double degrees) {
  const double value = std::floor(degrees * (2147483648.0 / 180.0) + 0.5);
  return static_cast<Semicircles>(std::clamp(value, -2147483648.0, 2147483647.0));
}

MapPoint fineOf(const GpxPoint& p) { return {toSemicircles(p.longitude), toSemicircles(p.latitude)}; }

MapPoint unitsOf(MapPoint fine) { return {fine.x >> 8, fine.y >> 8}; }

void widen(MapRect& box, MapPoint p) {
  box.west = std::min(box.west, p.x);
  box.east = std::max(box.east, p.x);
  box.south = std::min(box.south, p.y);
  box.north = std::max(box.north, p.y);
}

// The box grown by a sixteenth of its size on every side (and one unit at least).
MapRect grown(const MapRect& r) {
  const int64_t dx = (static_cast<int64_t>(r.east) - r.west) / 16 + 1;
  const int64_t dy = (static_cast<int64_t>(r.north) - r.south) / 16 + 1;
  const auto clamp32 = [](int64_t v) { return static_cast<int32_t>(std::clamp<int64_t>(v, INT32_MIN, INT32_MAX)); };
  return {clamp32(r.west - dx), clamp32(r.south - dy), clamp32(r.east + dx), clamp32(r.north + dy)};
}

bool near(const QPointF& a, const QPointF& b) { return std::fabs(a.x() - b.x()) < 0.5 && std::fabs(a.y() - b.y()) < 0.5; }

// Cuts the segment a-b to the rectangle (Liang-Barsky). False when nothing of it lies inside.
bool clipSegment(QPointF& a, QPointF& b, const QRectF& r) {
  const double dx = b.x() - a.x();
  const double dy = b.y() - a.y();
  double t0 = 0.0;
  double t1 = 1.0;
  const double p[4] = {-dx, dx, -dy, dy};
  const double q[4] = {a.x() - r.left(), r.right() - a.x(), a.y() - r.top(), r.bottom() - a.y()};
  for (int i = 0; i < 4; ++i) {
    if (p[i] == 0.0) {
      if (q[i] < 0.0) return false;
      continue;
    }
    const double t = q[i] / p[i];
    if (p[i] < 0.0) {
      if (t > t1) return false;
      t0 = std::max(t0, t);
    } else {
      if (t < t0) return false;
      t1 = std::min(t1, t);
    }
  }
  const QPointF start = a;
  if (t1 < 1.0) b = QPointF(start.x() + t1 * dx, start.y() + t1 * dy);
  if (t0 > 0.0) a = QPointF(start.x() + t0 * dx, start.y() + t0 * dy);
  return true;
}

// Gathers clipped segments into polylines and draws each when it ends.
class PolylineBuilder {
 public:
  explicit PolylineBuilder(QPainter& painter) : painter_(painter) {}
  ~PolylineBuilder() { flush(); }

  void add(QPointF a, QPointF b, const QRectF& clip) {
    const QPointF end = b;
    if (!clipSegment(a, b, clip)) {
      flush();
      return;
    }
    if (points_.empty() || !near(points_.back(), a)) {
      flush();
      points_.push_back(a);
    }
    // Points closer than half a pixel to the last one drawn add nothing to the line.
    if (!near(points_.back(), b)) points_.push_back(b);
    if (b != end) flush();  // the line leaves the screen here
  }

  void flush() {
    if (points_.size() >= 2) painter_.drawPolyline(points_.data(), static_cast<int>(points_.size()));
    points_.clear();
  }

 private:
  QPainter& painter_;
  std::vector<QPointF> points_;
};

}  // namespace

bool GpxLayer::openGpx(const std::filesystem::path& path, QString& error) {
  GpxData data;
  if (!readGpxFile(path, data, error)) return false;
  showGpx(std::move(data), path);
  return true;
}

void GpxLayer::showGpx(GpxData data, const std::filesystem::path& path) {
  closeGpx();
  data_ = std::move(data);
  path_ = path;
  shown_ = true;
  const auto addLine = [this](const std::vector<GpxPoint>& points, bool route) {
    if (points.empty()) return;
    Line line;
    line.route = route;
    line.firstRun = static_cast<uint32_t>(runs_.size());
    const size_t first = fine_.size();
    for (const GpxPoint& p : points) fine_.push_back(fineOf(p));
    // Runs of kGpxRunPoints points, each sharing its last point with the next.
    for (size_t start = first; start == first || start + 1 < fine_.size(); start += kGpxRunPoints - 1) {
      Run run;
      run.first = static_cast<uint32_t>(start);
      run.count = static_cast<uint32_t>(std::min(kGpxRunPoints, fine_.size() - start));
      for (uint32_t i = 0; i < run.count; ++i) widen(run.box, unitsOf(fine_[run.first + i]));
      widen(bounds_, {run.box.west, run.box.south});
      widen(bounds_, {run.box.east, run.box.north});
      runs_.push_back(run);
    }
    line.runCount = static_cast<uint32_t>(runs_.size()) - line.firstRun;
    lines_.push_back(line);
  };
  for (const GpxTrack& track : data_.tracks) {
    for (const GpxSegment& segment : track.segments) addLine(segment.points, false);
  }
  for (const GpxRoute& route : data_.routes) addLine(route.points, true);
  for (const GpxWaypoint& w : data_.waypoints) {
    waypoints_.push_back(fineOf(w.point));
    widen(bounds_, unitsOf(waypoints_.back()));
  }
}

void GpxLayer::closeGpx() {
  shown_ = false;
  path_.clear();
  data_ = GpxData{};
  bounds_ = MapRect{};
  fine_.clear();
  waypoints_.clear();
  lines_.clear();
  runs_.clear();
  projected_.clear();
  projectedZoom_ = UINT32_MAX;
}

void GpxLayer::project(const MapView& view) {
  if (projectedZoom_ == view.zoomIndex() && projected_.size() == fine_.size()) return;
  const double scale = static_cast<double>(view.unitsDen()) / (static_cast<double>(view.unitsNum()) * 256.0);
  projected_.resize(fine_.size());
  for (size_t i = 0; i < fine_.size(); ++i) projected_[i] = QPointF(fine_[i].x * scale, fine_[i].y * scale);
  projectedZoom_ = view.zoomIndex();
  ++projections_;
}

void GpxLayer::drawGpx(QPainter& painter, const DrawingObjects& drawing, const MapView& view,
                       const MapRect& visible) {
  if (!shown_) return;
  project(view);
  runsDrawn_ = 0;
  painter.save();
  painter.setBrush(Qt::NoBrush);
  // Bevelled joins: a round join costs the stroker trigonometry at each of many thousand
  // points, and at these widths looks the same.
  QPen route = makeSolidPen(QColor::fromRgb(kGpxLayerRgb), kRoutePenWidth);
  route.setStyle(Qt::DashLine);
  route.setJoinStyle(Qt::BevelJoin);
  painter.setPen(route);
  drawLines(painter, view, visible, true);
  QPen track = makeSolidPen(QColor::fromRgb(kGpxLayerRgb), kTrackPenWidth);
  track.setJoinStyle(Qt::BevelJoin);
  painter.setPen(track);
  drawLines(painter, view, visible, false);
  drawWaypoints(painter, drawing, view, visible);
  painter.restore();
}

void GpxLayer::drawLines(QPainter& painter, const MapView& view, const MapRect& visible, bool routes) {
  // The view's projection (MapView::mapToScreen) on the projected points, in floating point.
  const double scale = static_cast<double>(view.unitsDen()) / (static_cast<double>(view.unitsNum()) * 256.0);
  const double centreX = view.centre().x * 256.0 * scale;
  const double centreY = view.centre().y * 256.0 * scale;
  const double across = view.latScale() / 255.0;
  const double cosRot = view.cosRot() / 1024.0;
  const double sinRot = view.sinRot() / 1024.0;
  const double halfWidth = view.screenWidth() / 2;
  const double halfHeight = view.screenHeight() / 2;
  const auto toScreen = [&](const QPointF& p) {
    const double dx = (p.x() - centreX) * across;
    const double dy = p.y() - centreY;
    return QPointF(cosRot * dx - sinRot * dy + halfWidth, halfHeight - (cosRot * dy + sinRot * dx));
  };
  const QRectF clip(-kClipMargin, -kClipMargin, view.screenWidth() + 2 * kClipMargin,
                    view.screenHeight() + 2 * kClipMargin);
  const MapRect reach = grown(visible);

  PolylineBuilder builder(painter);
  for (const Line& line : lines_) {
    if (line.route != routes) continue;
    for (uint32_t r = line.firstRun; r < line.firstRun + line.runCount; ++r) {
      const Run& run = runs_[r];
      if (!intersects(run.box, reach)) {
        builder.flush();
        continue;
      }
      ++runsDrawn_;
      QPointF previous = toScreen(projected_[run.first]);
      for (uint32_t i = 1; i < run.count; ++i) {
        const QPointF next = toScreen(projected_[run.first + i]);
        builder.add(previous, next, clip);
        previous = next;
      }
    }
    builder.flush();
  }
  // A route's points are its turns: each is a dot on the dashed line. A line of one point
  // is a dot too.
  std::vector<QPointF> dots;
  for (const Line& line : lines_) {
    if (line.route != routes) continue;
    for (uint32_t r = line.firstRun; r < line.firstRun + line.runCount; ++r) {
      const Run& run = runs_[r];
      if ((!routes && run.count != 1) || !intersects(run.box, reach)) continue;
      // The last point of a run is the first of the next.
      const uint32_t count = r + 1 < line.firstRun + line.runCount ? run.count - 1 : run.count;
      for (uint32_t i = 0; i < count; ++i) {
        const QPointF at = toScreen(projected_[run.first + i]);
        if (clip.contains(at)) dots.push_back(at);
      }
    }
  }
  if (dots.empty()) return;
  if (routes) painter.setPen(makeSolidPen(QColor::fromRgb(kGpxLayerRgb), kRoutePointWidth));
  painter.drawPoints(dots.data(), static_cast<int>(dots.size()));
}

void GpxLayer::drawWaypoints(QPainter& painter, const DrawingObjects& drawing, const MapView& view,
                             const MapRect& visible) const {
  const MapRect reach = grown(visible);
  const QColor colour = QColor::fromRgb(kGpxLayerRgb);
  painter.setFont(drawing.smallFont);
  painter.setPen(makeSolidPen(Qt::white, 1));
  painter.setBrush(colour);
  for (size_t i = 0; i < waypoints_.size(); ++i) {
    if (!contains(reach, unitsOf(waypoints_[i]))) continue;
    const MapPoint at = view.semicirclesToScreen(waypoints_[i]);
    painter.drawEllipse(QPoint(at.x, at.y), kWaypointRadius, kWaypointRadius);
    const QString& name = data_.waypoints[i].name;
    if (!name.isEmpty()) {
      drawHaloText(painter, at.x + kWaypointRadius + 2, at.y - kWaypointRadius - 2,
                   std::u16string_view(reinterpret_cast<const char16_t*>(name.utf16()), size_t(name.size())), 0,
                   colour);
    }
  }
}

void fitViewTo(MapView& view, const MapRect& box) {
  if (box.west > box.east || box.south > box.north) return;
  view.setCentre(static_cast<int32_t>((static_cast<int64_t>(box.west) + box.east) / 2),
                 static_cast<int32_t>((static_cast<int64_t>(box.south) + box.north) / 2));
  const int64_t width = static_cast<int64_t>(box.east) - box.west;
  const int64_t height = static_cast<int64_t>(box.north) - box.south;
  for (uint32_t zoom = 0; zoom < static_cast<uint32_t>(kZoomSteps); ++zoom) {
    view.setZoomIndex(zoom);
    // Pixels the box spans at this step, as mapToScreen counts them.
    const double across = static_cast<double>(width) * view.latScale() * view.unitsDen() / (view.unitsNum() * 255.0);
    const double along = static_cast<double>(height) * view.unitsDen() / view.unitsNum();
    if (across <= view.screenWidth() && along <= view.screenHeight()) return;
  }
}

}  // namespace orvel
