#include "app/program_icon.h"

#include <QPainter>
#include <QPainterPath>

namespace orvel {

QImage programIcon(int size) {
  QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
  image.fill(Qt::transparent);
  QPainter painter(&image);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.scale(size / 32.0, size / 32.0);

  // Three folded panels of a map sheet.
  const QColor panels[3] = {QColor(0xd8, 0xec, 0xc4), QColor(0xf4, 0xee, 0xd0),
                            QColor(0xc8, 0xe0, 0xf4)};
  for (int i = 0; i < 3; ++i) {
    QPainterPath panel;
    const qreal x = 3 + i * 9;
    const qreal dip = (i % 2) ? 2 : 0;
    panel.moveTo(x, 6 + dip);
    panel.lineTo(x + 9, 6 + 2 - dip);
    panel.lineTo(x + 9, 28 + 2 - dip);
    panel.lineTo(x, 28 + dip);
    panel.closeSubpath();
    painter.setPen(QPen(QColor(0x50, 0x50, 0x50), 1));
    painter.setBrush(panels[i]);
    painter.drawPath(panel);
  }
  // A road across the sheet.
  painter.setPen(QPen(QColor(0xc0, 0x40, 0x30), 1.6));
  painter.drawLine(QPointF(5, 24), QPointF(27, 14));

  // The position pin.
  QPainterPath pin;
  pin.moveTo(16, 22);
  pin.cubicTo(10, 14, 10, 6, 16, 6);
  pin.cubicTo(22, 6, 22, 14, 16, 22);
  painter.setPen(QPen(Qt::black, 1));
  painter.setBrush(QColor(0x20, 0x60, 0xd0));
  painter.drawPath(pin);
  painter.setBrush(Qt::white);
  painter.drawEllipse(QPointF(16, 11.5), 2.2, 2.2);
  return image;
}

}  // namespace orvel
