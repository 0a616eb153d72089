#include "pages/compass_page.h"

#include <algorithm>

#include <QPainter>

#include "gps/gps_state.h"
#include "pages/page_host.h"
#include "view/text_draw.h"
#include "geo/trig.h"

namespace orvel {

namespace {

int roundHalfUp(float value) { return static_cast<int>(value + 0.5f); }

// Folds an angle into the range the trigonometry tables accept.
float foldRadians(float radians) {
  constexpr float kTurn = 2.0f * kPi;
  while (radians > kTurn) radians -= kTurn;
  while (radians < -kTurn) radians += kTurn;
  return radians;
}

}  // namespace

CompassLayout compassLayout(int width, int height) {
  CompassLayout layout;
  layout.cx = width / 2;
  layout.cy = height / 2;
  layout.radius = width > 240 ? std::min(width, height) / 3 : width / 3;
  return layout;
}

void CompassPage::paint(QPainter& painter) {
  const int width = context_.host.clientWidth();
  const int height = context_.host.clientHeight();
  const CompassLayout layout = compassLayout(width, height);
  const int cx = layout.cx;
  const int cy = layout.cy;
  const int r = layout.radius;

  painter.save();
  painter.setRenderHint(QPainter::Antialiasing, false);
  painter.fillRect(QRect(0, 0, width, height), Qt::white);
  painter.setPen(QPen(Qt::black, 1));
  painter.setBrush(Qt::white);
  // GDI's box (cx - R, cy - R)..(cx + R, cy + R) leaves out its far edges.
  painter.drawEllipse(QRect(cx - r, cy - r, 2 * r - 1, 2 * r - 1));

  const GpsFix fix = context_.gps.currentFix();
  const bool hasCourse = fix.has(kFixCourse);
  const float course = hasCourse ? fix.course : 0.0f;
  for (int a = 0; a < 360; a += 10) {
    const float theta = foldRadians((static_cast<float>(a) - course) * kPi / 180.0f);
    const float c = tableCos(theta);
    const float s = tableSin(theta);
    painter.drawLine(cx + roundHalfUp(static_cast<float>(r - 5) * c), cy + roundHalfUp(static_cast<float>(r - 5) * s),
                     cx + roundHalfUp(static_cast<float>(r) * c), cy + roundHalfUp(static_cast<float>(r) * s));
  }
  if (hasCourse) drawNorthArrow(painter, context_.drawing, cx, cy, r - 5, r / 5, foldRadians(-course * kPi / 180.0f));
  painter.restore();
}

void CompassPage::onFixChanged() { context_.host.invalidateMainWindow(); }


}  // namespace orvel
