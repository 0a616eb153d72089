#include "common/recording_device.h"

#include <algorithm>

#include <QPainter>
#include <QPainterPath>
#include <QPixmap>
#include <QTextItem>

namespace orvel::test {

RecordingEngine::RecordingEngine() : QPaintEngine(QPaintEngine::AllFeatures) {}

bool RecordingEngine::begin(QPaintDevice*) { return true; }
bool RecordingEngine::end() { return true; }
void RecordingEngine::updateState(const QPaintEngineState&) {}

DrawCall RecordingEngine::start(DrawCall::Kind kind) const {
  DrawCall call;
  call.kind = kind;
  if (const QPainter* p = painter()) {
    call.pen = p->pen();
    call.brush = p->brush();
    call.transform = p->worldTransform();
    call.backgroundMode = p->backgroundMode();
    call.font = p->font();
  }
  return call;
}

void RecordingEngine::drawRects(const QRectF* rects, int count) {
  DrawCall call = start(DrawCall::Kind::Rects);
  if (count > 0) call.rect = rects[0];
  calls.push_back(std::move(call));
}

void RecordingEngine::drawLines(const QLineF* lines, int count) {
  DrawCall call = start(DrawCall::Kind::Lines);
  for (int i = 0; i < count; ++i) call.points << lines[i].p1() << lines[i].p2();
  calls.push_back(std::move(call));
}

void RecordingEngine::drawBox(DrawCall::Kind kind, const QRectF& rect) {
  DrawCall call = start(kind);
  call.rect = rect;
  calls.push_back(std::move(call));
}

void RecordingEngine::drawEllipse(const QRectF& rect) { drawBox(DrawCall::Kind::Ellipse, rect); }

void RecordingEngine::drawPath(const QPainterPath& path) {
  DrawCall call = start(DrawCall::Kind::Path);
  call.points = path.toFillPolygon();
  call.rect = path.boundingRect();
  calls.push_back(std::move(call));
}

void RecordingEngine::drawPoints(const QPointF* points, int count) {
  DrawCall call = start(DrawCall::Kind::Points);
  call.points = QPolygonF(QList<QPointF>(points, points + count));
  calls.push_back(std::move(call));
}

void RecordingEngine::drawPolygon(const QPointF* points, int count, PolygonDrawMode mode) {
  DrawCall call = start(mode == PolylineMode ? DrawCall::Kind::Polyline : DrawCall::Kind::Polygon);
  call.points = QPolygonF(QList<QPointF>(points, points + count));
  calls.push_back(std::move(call));
}

void RecordingEngine::drawPixmap(const QRectF& rect, const QPixmap&, const QRectF&) { drawBox(DrawCall::Kind::Pixmap, rect); }
void RecordingEngine::drawTiledPixmap(const QRectF& rect, const QPixmap&, const QPointF&) {
  drawBox(DrawCall::Kind::Pixmap, rect);
}
void RecordingEngine::drawImage(const QRectF& rect, const QImage&, const QRectF&, Qt::ImageConversionFlags) {
  drawBox(DrawCall::Kind::Image, rect);
}

void RecordingEngine::drawTextItem(const QPointF& origin, const QTextItem& item) {
  DrawCall call = start(DrawCall::Kind::Text);
  call.origin = origin;
  call.text = item.text();
  call.font = item.font();
  calls.push_back(std::move(call));
}

RecordingDevice::RecordingDevice(int width, int height) : width_(width), height_(height) {}

RecordingDevice::~RecordingDevice() = default;

std::vector<DrawCall> RecordingDevice::callsOf(DrawCall::Kind kind) const {
  std::vector<DrawCall> out;
  std::ranges::copy_if(engine_.calls, std::back_inserter(out), [kind](const DrawCall& c) { return c.kind == kind; });
  return out;
}

std::vector<QString> RecordingDevice::texts() const {
  std::vector<QString> out;
  for (const DrawCall& call : callsOf(DrawCall::Kind::Text)) out.push_back(call.text);
  return out;
}

int RecordingDevice::metric(PaintDeviceMetric metric) const {
  switch (metric) {
    case PdmWidth: return width_;
    case PdmHeight: return height_;
    case PdmWidthMM: return width_ * 254 / 960;
    case PdmHeightMM: return height_ * 254 / 960;
    case PdmNumColors: return 0x7FFFFFFF;
    case PdmDepth: return 32;
    case PdmDpiX:
    case PdmDpiY:
    case PdmPhysicalDpiX:
    case PdmPhysicalDpiY: return 96;
    case PdmDevicePixelRatio: return 1;
    case PdmDevicePixelRatioScaled: return int(devicePixelRatioFScale());
    default: return QPaintDevice::metric(metric);
  }
}

}  // namespace orvel::test
