#include "pages/info_pages.h"

#include <QPainter>

#include "pages/page_host.h"
#include "view/drawing_objects.h"
#include "view/text_draw.h"

namespace orvel {

void TitledPage::paint(QPainter& painter) {
  const int width = clientWidth();
  const int height = clientHeight();
  painter.fillRect(QRect(0, 0, width, height), Qt::white);
  painter.setFont(drawingObjects().largeFont);
  painter.setPen(Qt::black);
  drawTextAt(painter, width / 2, height / 2, getTitle(), kTextCenter | kTextVCenter);
}

void CompassPage::onFixChanged() { invalidateMainWindow(); }

GaugesPage& gaugesPage() {
  static GaugesPage page;
  return page;
}

SatellitesPage& satellitesPage() {
  static SatellitesPage page;
  return page;
}

CompassPage& compassPage() {
  static CompassPage page;
  return page;
}

}  // namespace orvel
