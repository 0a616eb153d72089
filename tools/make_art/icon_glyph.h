#pragma once
// Internal to the icon drawing: a symbol is drawn by a plain function on a Glyph, a thin
// layer over QPainter whose coordinates are a 16 x 16 box (y down), scaled by the caller to
// the room the badge or the bare symbol leaves. Shapes are drawn in the current ink, or
// cut out of what is drawn so far.
#include <cstdint>
#include <initializer_list>
#include <span>

#include <QColor>
#include <QPointF>

class QPainter;

namespace orvel::icon_art {

class Glyph {
 public:
  Glyph(QPainter& painter, QColor ink);

  void ink(QColor colour);  // draw in this colour from now on
  void cut();               // erase from now on, until ink() is called again

  void line(qreal x1, qreal y1, qreal x2, qreal y2, qreal width = 1.4);
  void lines(std::initializer_list<QPointF> points, qreal width = 1.4);
  void outline(std::initializer_list<QPointF> points, qreal width = 1.4);  // closed
  void fill(std::initializer_list<QPointF> points);
  void disc(qreal cx, qreal cy, qreal r);
  void ellipse(qreal cx, qreal cy, qreal rx, qreal ry);
  void ring(qreal cx, qreal cy, qreal r, qreal width);
  void ellipseRing(qreal cx, qreal cy, qreal rx, qreal ry, qreal width);
  void box(qreal x, qreal y, qreal w, qreal h, qreal radius = 0);
  // Angles in degrees, counter-clockwise from three o'clock, as QPainter takes them.
  void arc(qreal cx, qreal cy, qreal r, qreal startDeg, qreal spanDeg, qreal width);
  void pie(qreal cx, qreal cy, qreal r, qreal startDeg, qreal spanDeg);
  void wave(qreal x0, qreal x1, qreal y, qreal amplitude, qreal period, qreal width,
            bool dashed = false);
  void star(qreal cx, qreal cy, qreal outer, qreal inner, int points = 5);
  void dottedRing(qreal cx, qreal cy, qreal rx, qreal ry, int count, qreal dotRadius);
  void drop(qreal cx, qreal top, qreal height);
  void letters(const char* text, qreal height);  // bold, centred in the box

  QPainter& painter() { return painter_; }

 private:
  void strokeOnly(qreal width, bool dashed = false);
  void fillOnly();

  QPainter& painter_;
  QColor ink_;
  bool cutting_ = false;
};

enum class Badge : uint8_t { Circle, Square, Bare };

struct IconArt {
  uint16_t id;
  Badge badge;
  QRgb colour;  // the badge's colour, or a bare symbol's ink
  void (*draw)(Glyph&);
};

// The symbols, by theme.
std::span<const IconArt> placeIcons();    // settlements, hazards, food, lodging, culture, sport
std::span<const IconArt> serviceIcons();  // shops, services, emergency, transport, outdoors
std::span<const IconArt> natureIcons();   // man-made, water, land, worship, waypoint

}  // namespace orvel::icon_art
