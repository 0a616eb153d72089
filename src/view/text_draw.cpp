#include "view/text_draw.h"

#include <QFontMetrics>
#include <QPainter>
#include <QPoint>
#include <QString>

#include "view/drawing_objects.h"
#include "view/text_measure.h"
#include "geo/trig.h"
#include "geo/units.h"

namespace orvel {

namespace {

// Borrows the characters without copying; valid while `text` lives.
QString borrowed(std::u16string_view text) {
  return QString::fromRawData(reinterpret_cast<const QChar*>(text.data()), qsizetype(text.size()));
}

int roundToInt(float v) { return floorToInt(v + 0.5f); }

}  // namespace

QSize textExtent(const QFont& font, std::u16string_view text) {
  const QFontMetrics metrics(font);
  return {metrics.horizontalAdvance(borrowed(text)), metrics.height()};
}

void drawTextAt(QPainter& painter, int x, int y, std::u16string_view text, unsigned format,
                TextMeasure* measure) {
  // A one-pixel box at the anchor, moved so that its right or bottom edge (exclusive, as box
  // edges are) falls on x or y when the text is anchored there.
  const int left = (format & kTextRight) ? x - 1 : x;
  const int top = (format & kTextBottom) ? y - 1 : y;
  const int right = left + 1;
  const int bottom = top + 1;

  const QString string = borrowed(text);
  const QFontMetrics metrics = painter.fontMetrics();
  const int height = metrics.height();

  // Measuring lays the text out once more: only when the anchor is not its left edge.
  int textLeft = left;
  if (format & (kTextCenter | kTextRight)) {
    const int width = measure ? measure->measureText(painter.font(), text).width()
                              : metrics.horizontalAdvance(string);
    textLeft = (format & kTextCenter) ? (left + right - width) / 2 : right - width;
  }
  int textTop = top;
  if (format & kTextVCenter) {
    textTop = top + (bottom - top) / 2 - height / 2;
  } else if (format & kTextBottom) {
    textTop = bottom - height;
  }
  painter.drawText(QPoint(textLeft, textTop + metrics.ascent()), string);
}

void drawHaloText(QPainter& painter, int x, int y, std::u16string_view text, unsigned format,
                  const QColor& colour) {
  const QPen saved = painter.pen();
  painter.setBackgroundMode(Qt::TransparentMode);
  painter.setPen(QColor(Qt::white));
  drawTextAt(painter, x - 1, y - 1, text, format);
  drawTextAt(painter, x + 1, y - 1, text, format);
  drawTextAt(painter, x - 1, y + 1, text, format);
  drawTextAt(painter, x + 1, y + 1, text, format);
  painter.setPen(colour);
  drawTextAt(painter, x, y, text, format);
  painter.setPen(saved);
}

void drawNorthArrow(QPainter& painter, const DrawingObjects& objects, int cx, int cy, int length,
                    int halfWidth, float angle) {
  const float c = tableCos(angle);
  const float s = tableSin(angle);
  const int wc = roundToInt(float(halfWidth) * c);
  const int ws = roundToInt(float(halfWidth) * s);
  const int ls = roundToInt(float(length) * s);
  const int lc = roundToInt(float(length) * c);

  painter.setPen(objects.thinPen);

  const QPoint north[3] = {{cx + wc, cy + ws}, {cx - wc, cy - ws}, {cx + ls, cy - lc}};
  painter.setBrush(objects.brush(SolidBrush::Blue));
  painter.drawPolygon(north, 3);

  const QPoint south[3] = {{cx - wc, cy - ws}, {cx + wc, cy + ws}, {cx - ls, cy + lc}};
  painter.setBrush(objects.brush(SolidBrush::Red));
  painter.drawPolygon(south, 3);
}

}  // namespace orvel
