#pragma once
// A paint device that draws nothing and records every drawing call made on it, with the
// painter's pen, brush, font and transform at the time. Tests check what was drawn (shapes,
// their corners, colours, texts) instead of comparing pixels.
#include <vector>

#include <QBrush>
#include <QFont>
#include <QPaintDevice>
#include <QPaintEngine>
#include <QPen>
#include <QPointF>
#include <QPolygonF>
#include <QRectF>
#include <QString>
#include <QTransform>

namespace orvel::test {

struct DrawCall {
  enum class Kind { Polygon, Polyline, Ellipse, Text, Image, Rects, Lines, Path, Points, Pixmap };

  Kind kind = Kind::Polygon;
  QPolygonF points;     // Polygon, Polyline, Points: the vertices; Lines: pairs of ends
  QRectF rect;          // Ellipse, Path, Image, Pixmap, Rects (the first): the box
  QPointF origin;       // Text: the baseline start given to the engine
  QString text;         // Text
  QFont font;           // Text: the item's font
  QPen pen;
  QBrush brush;
  QTransform transform;  // world transform at the time of the call
  Qt::BGMode backgroundMode = Qt::TransparentMode;

  // The recorded geometry mapped through the transform, in device pixels.
  QPolygonF devicePoints() const { return transform.map(points); }
  QPointF deviceOrigin() const { return transform.map(origin); }
};

class RecordingEngine : public QPaintEngine {
 public:
  RecordingEngine();

  bool begin(QPaintDevice* device) override;
  bool end() override;
  void updateState(const QPaintEngineState& state) override;
  Type type() const override { return QPaintEngine::User; }

  void drawRects(const QRectF* rects, int count) override;
  void drawLines(const QLineF* lines, int count) override;
  void drawEllipse(const QRectF& rect) override;
  void drawPath(const QPainterPath& path) override;
  void drawPoints(const QPointF* points, int count) override;
  void drawPolygon(const QPointF* points, int count, PolygonDrawMode mode) override;
  void drawPixmap(const QRectF& rect, const QPixmap& pixmap, const QRectF& source) override;
  void drawTiledPixmap(const QRectF& rect, const QPixmap& pixmap, const QPointF& offset) override;
  void drawImage(const QRectF& rect, const QImage& image, const QRectF& source,
                 Qt::ImageConversionFlags flags) override;
  void drawTextItem(const QPointF& origin, const QTextItem& item) override;

  std::vector<DrawCall> calls;

 private:
  DrawCall start(DrawCall::Kind kind) const;
  void drawBox(DrawCall::Kind kind, const QRectF& rect);
};

class RecordingDevice : public QPaintDevice {
 public:
  RecordingDevice(int width, int height);
  ~RecordingDevice() override;

  QPaintEngine* paintEngine() const override { return &engine_; }

  const std::vector<DrawCall>& calls() const { return engine_.calls; }
  std::vector<DrawCall> callsOf(DrawCall::Kind kind) const;
  // The texts drawn, in order.
  std::vector<QString> texts() const;
  void clear() { engine_.calls.clear(); }

 protected:
  int metric(PaintDeviceMetric metric) const override;

 private:
  int width_;
  int height_;
  mutable RecordingEngine engine_;
};

}  // namespace orvel::test
