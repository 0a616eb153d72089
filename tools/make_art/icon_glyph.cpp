#include "make_art/icon_glyph.h"

#include <cmath>
#include <numbers>

#include <QFont>
#include <QPainter>
#include <QPainterPath>
#include <QPolygonF>

namespace orvel::icon_art {

Glyph::Glyph(QPainter& painter, QColor ink) : painter_(painter), ink_(ink) {}

void Glyph::ink(QColor colour) {
  ink_ = colour;
  cutting_ = false;
}

void Glyph::cut() { cutting_ = true; }

void Glyph::strokeOnly(qreal width, bool dashed) {
  painter_.setCompositionMode(cutting_ ? QPainter::CompositionMode_Clear
                                       : QPainter::CompositionMode_SourceOver);
  QPen pen(ink_, width, Qt::SolidLine, dashed ? Qt::FlatCap : Qt::RoundCap, Qt::RoundJoin);
  if (dashed) pen.setDashPattern({1.6, 1.2});
  painter_.setPen(pen);
  painter_.setBrush(Qt::NoBrush);
}

void Glyph::fillOnly() {
  painter_.setCompositionMode(cutting_ ? QPainter::CompositionMode_Clear
                                       : QPainter::CompositionMode_SourceOver);
  painter_.setPen(Qt::NoPen);
  painter_.setBrush(ink_);
}

void Glyph::line(qreal x1, qreal y1, qreal x2, qreal y2, qreal width) {
  strokeOnly(width);
  painter_.drawLine(QPointF(x1, y1), QPointF(x2, y2));
}

void Glyph::lines(std::initializer_list<QPointF> points, qreal width) {
  strokeOnly(width);
  painter_.drawPolyline(QPolygonF(QList<QPointF>(points)));
}

void Glyph::outline(std::initializer_list<QPointF> points, qreal width) {
  strokeOnly(width);
  painter_.drawPolygon(QPolygonF(QList<QPointF>(points)));
}

void Glyph::fill(std::initializer_list<QPointF> points) {
  fillOnly();
  painter_.drawPolygon(QPolygonF(QList<QPointF>(points)));
}

void Glyph::disc(qreal cx, qreal cy, qreal r) { ellipse(cx, cy, r, r); }

void Glyph::ellipse(qreal cx, qreal cy, qreal rx, qreal ry) {
  fillOnly();
  painter_.drawEllipse(QPointF(cx, cy), rx, ry);
}

void Glyph::ring(qreal cx, qreal cy, qreal r, qreal width) { ellipseRing(cx, cy, r, r, width); }

void Glyph::ellipseRing(qreal cx, qreal cy, qreal rx, qreal ry, qreal width) {
  strokeOnly(width);
  painter_.drawEllipse(QPointF(cx, cy), rx, ry);
}

void Glyph::box(qreal x, qreal y, qreal w, qreal h, qreal radius) {
  fillOnly();
  if (radius > 0) {
    painter_.drawRoundedRect(QRectF(x, y, w, h), radius, radius);
  } else {
    painter_.drawRect(QRectF(x, y, w, h));
  }
}

void Glyph::arc(qreal cx, qreal cy, qreal r, qreal startDeg, qreal spanDeg, qreal width) {
  strokeOnly(width);
  painter_.drawArc(QRectF(cx - r, cy - r, 2 * r, 2 * r), static_cast<int>(startDeg * 16),
                   static_cast<int>(spanDeg * 16));
}

void Glyph::pie(qreal cx, qreal cy, qreal r, qreal startDeg, qreal spanDeg) {
  fillOnly();
  painter_.drawPie(QRectF(cx - r, cy - r, 2 * r, 2 * r), static_cast<int>(startDeg * 16),
                   static_cast<int>(spanDeg * 16));
}

void Glyph::wave(qreal x0, qreal x1, qreal y, qreal amplitude, qreal period, qreal width,
                 bool dashed) {
  strokeOnly(width, dashed);
  QPainterPath path(QPointF(x0, y));
  constexpr int kSteps = 24;
  for (int i = 1; i <= kSteps; ++i) {
    const qreal x = x0 + (x1 - x0) * i / kSteps;
    path.lineTo(x, y - amplitude * std::sin((x - x0) * 2 * std::numbers::pi / period));
  }
  painter_.drawPath(path);
}

void Glyph::star(qreal cx, qreal cy, qreal outer, qreal inner, int points) {
  QPolygonF polygon;
  for (int i = 0; i < 2 * points; ++i) {
    const qreal r = (i % 2 == 0) ? outer : inner;
    const qreal a = -std::numbers::pi / 2 + i * std::numbers::pi / points;
    polygon << QPointF(cx + r * std::cos(a), cy + r * std::sin(a));
  }
  fillOnly();
  painter_.drawPolygon(polygon);
}

void Glyph::dottedRing(qreal cx, qreal cy, qreal rx, qreal ry, int count, qreal dotRadius) {
  for (int i = 0; i < count; ++i) {
    const qreal a = i * 2 * std::numbers::pi / count;
    disc(cx + rx * std::cos(a), cy + ry * std::sin(a), dotRadius);
  }
}

void Glyph::drop(qreal cx, qreal top, qreal height) {
  const qreal r = height * 0.36;
  const qreal cy = top + height - r;
  QPainterPath path(QPointF(cx, top));
  path.cubicTo(QPointF(cx + r * 0.4, top + height * 0.3), QPointF(cx + r, cy - r * 0.6),
               QPointF(cx + r, cy));
  path.arcTo(QRectF(cx - r, cy - r, 2 * r, 2 * r), 0, -180);
  path.cubicTo(QPointF(cx - r, cy - r * 0.6), QPointF(cx - r * 0.4, top + height * 0.3),
               QPointF(cx, top));
  fillOnly();
  painter_.drawPath(path);
}

void Glyph::letters(const char* text, qreal height) {
  QFont font(QStringLiteral("DejaVu Sans"));
  font.setPixelSize(64);
  font.setWeight(QFont::Bold);
  QPainterPath path;
  path.addText(0, 0, font, QString::fromUtf8(text));
  const QRectF bounds = path.boundingRect();
  if (bounds.height() <= 0) return;
  const qreal scale = height / bounds.height();
  QTransform t;
  t.translate(8, 8);
  t.scale(scale, scale);
  t.translate(-bounds.center().x(), -bounds.center().y());
  fillOnly();
  painter_.drawPath(t.map(path));
}

}  // namespace orvel::icon_art
