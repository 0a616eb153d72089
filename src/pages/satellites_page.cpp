#include "pages/satellites_page.h"

#include <algorithm>
#include <cstdio>

#include <QPainter>
#include <QString>

#include "gps/gps_state.h"
#include "pages/page_host.h"
#include "geo/coords.h"
#include "view/fonts.h"
#include "view/text_draw.h"
#include "geo/trig.h"

namespace orvel {

namespace {

constexpr int kBandRows = 50;
constexpr int kTinyScreenWidth = 240;

// GDI's rectangle and ellipse boxes leave out their right and bottom edges; a Qt box drawn
// with a one-pixel pen covers its far edge, so it is one pixel smaller.
QRect gdiBox(int left, int top, int right, int bottom) {
  return QRect(left, top, right - left - 1, bottom - top - 1);
}

std::u16string twoDigits(uint32_t number) {
  char text[16];
  std::snprintf(text, sizeof text, "%02u", number);
  return QString::fromLatin1(text).toStdU16String();
}

int roundHalfUp(float value) { return static_cast<int>(value + 0.5f); }

// The sky on the left, as large as the height allows with room for "N" above and "S" below;
// beside it the band and bars, then the labels and the status line, centred in the height.
SatellitesLayout landscapeLayout(int width, int height) {
  constexpr int kLetterRoom = 16;  // above the sky for the "N", below it for the "S"
  constexpr int kSide = 10;        // beside the sky for the "W" and the "E"
  constexpr int kBandAndTexts = 50 + 80;
  constexpr int kBars = 13;        // twelve bars with their numbers fit, and a gap
  SatellitesLayout layout;
  layout.radius = std::max(20, std::min(width / 4, height / 2 - kLetterRoom));
  layout.cx = kSide + layout.radius;
  layout.cy = height / 2;
  layout.bandLeft = layout.cx + layout.radius + kSide;
  layout.bandRight = width - 3;
  layout.barWidth = std::max(1, (layout.bandRight - layout.bandLeft) / (2 * kBars));
  layout.firstBarX = layout.bandLeft + layout.barWidth;
  layout.textX = layout.bandLeft + 7;
  layout.valueX = layout.textX + 70;
  layout.base = std::max(height - kBandAndTexts, 0) / 2 + 50;
  return layout;
}

}  // namespace

SatellitesLayout satellitesLayout(int width, int height) {
  SatellitesLayout layout;
  layout.radius = width / 4;
  layout.cx = width / 2;
  layout.cy = height / 4;
  layout.barWidth = width / 28;
  layout.bandLeft = 3;
  layout.bandRight = width - 3;
  layout.firstBarX = layout.barWidth;
  layout.textX = 10;
  layout.valueX = 80;
  if (width > kTinyScreenWidth) {
    // Room above the sky for the "N", and below the band for the three labels and the
    // status line; a wide screen shrinks the sky to fit between them.
    constexpr int kAbove = 16;
    constexpr int kBelow = 60 + 80;
    if (layout.cy - layout.radius < kAbove || layout.cy + layout.radius + kBelow > height) {
      const int fitted = (height - kAbove - kBelow) / 2;
      if (width > height && fitted < kTinyScreenWidth / 4) return landscapeLayout(width, height);
      layout.radius = std::max(20, std::min(width / 4, fitted));
      layout.cy = std::max(height / 4, layout.radius + kAbove);
    }
  }
  layout.base = layout.cy + layout.radius + 60;
  return layout;
}

int satelliteGreyLevel(int index) { return 255 - 255 * index / 31; }

int snrGreyIndex(uint32_t snr) {
  return static_cast<int>(std::min<uint64_t>(uint64_t{snr} * 32 / 99, 31));
}

std::u16string fixQualityName(uint32_t flags, uint32_t fixType) {
  if ((flags & (kFixSatellitesUsed | kFixType)) == 0) return u"None";
  if (fixType > kFixTypeSimulation) return u"Unknown type";
  const std::string_view name = fixTypeName(fixType);
  return std::u16string(name.begin(), name.end());
}

void SatellitesPage::makeResources() {
  background_ = QBrush(QColor(181, 248, 227));
  sky_ = QBrush(QColor(155, 231, 247));
  skyPen_ = QPen(QColor(0, 0, 255), 1);
  skyPen_.setCosmetic(true);
  bar_ = QBrush(QColor(255, 0, 0));
  for (int i = 0; i < 32; ++i) {
    const int level = satelliteGreyLevel(i);
    greys_[static_cast<size_t>(i)] = QBrush(QColor(level, level, level));
  }
  font_ = makeGdiFont("Tahoma", 13, 0, 400);
  ready_ = true;
}

void SatellitesPage::initialize() { makeResources(); }

void SatellitesPage::shutdown() {
  ready_ = false;
  font_ = QFont();
}

void SatellitesPage::paint(QPainter& painter) {
  if (!ready_) makeResources();  // painted without the framework (a test, a tool)
  const int width = context_.host.clientWidth();
  const int height = context_.host.clientHeight();
  const SatellitesLayout layout = satellitesLayout(width, height);
  const int r = layout.radius;
  const int cx = layout.cx;
  const int cy = layout.cy;
  const int base = layout.base;
  const int b = layout.barWidth;

  painter.save();
  painter.setRenderHint(QPainter::Antialiasing, false);
  painter.fillRect(QRect(0, 0, width, height), background_);

  // The sky, the half-elevation ring and the zenith dot.
  painter.setPen(QPen(Qt::black, 1));
  painter.setBrush(sky_);
  painter.drawEllipse(gdiBox(cx - r, cy - r, cx + r + 1, cy + r + 1));
  painter.setPen(skyPen_);
  painter.drawEllipse(gdiBox(cx - r / 2, cy - r / 2, cx + r / 2 + 1, cy + r / 2 + 1));
  painter.drawEllipse(gdiBox(cx - 1, cy - 1, cx + 2, cy + 2));

  painter.setFont(font_);
  drawHaloText(painter, cx, cy - r + 4, u"N", kTextBottomCenter, QColor(0, 0, 255));
  drawHaloText(painter, cx, cy + r - 2, u"S", kTextCenter, QColor(255, 0, 0));
  drawHaloText(painter, cx + r, cy + 6, u"E", kTextBottomCenter, Qt::black);
  drawHaloText(painter, cx - r, cy + 6, u"W", kTextBottomCenter, Qt::black);

  // The signal band, white at the bottom to black at the top.
  for (int k = 0; k < kBandRows; ++k) {
    painter.fillRect(QRect(layout.bandLeft, base - k, layout.bandRight - layout.bandLeft, 1),
                     greys_[static_cast<size_t>(31 * k / 49)]);
  }

  const GpsSnapshot gps = context_.gps.gpsSnapshot();
  painter.setPen(skyPen_);
  int barX = layout.firstBarX;
  for (const SatelliteInfo& satellite : gps.satellites) {
    // Elevation and azimuth arrive as the receiver sent them; the sky's formula expects
    // 0..90 and whole degrees of a turn.
    const float d = static_cast<float>((90 - static_cast<int>(std::min<uint32_t>(satellite.elevation, 90))) * r);
    const float azimuth = static_cast<float>(satellite.azimuth % 360) * kPi / 180.0f;
    const int x = cx + roundHalfUp(d * tableSin(azimuth) / 90.0f);
    const int y = cy - roundHalfUp(d * tableCos(azimuth) / 90.0f);
    const std::u16string number = twoDigits(satellite.prn);

    painter.setBrush(greys_[static_cast<size_t>(snrGreyIndex(satellite.snr))]);
    painter.drawEllipse(gdiBox(x - 4, y - 4, x + 5, y + 5));
    painter.setPen(Qt::black);
    drawTextAt(painter, x - 3, y + 5, number, kTextLeft);

    const int barHeight = static_cast<int>(std::min<uint64_t>(uint64_t{satellite.snr} * 50 / 100, 1000));
    painter.setPen(skyPen_);
    painter.setBrush(bar_);
    if (barHeight > 0) painter.drawRect(gdiBox(barX, base - barHeight, barX + b, base));
    painter.setPen(Qt::black);
    drawTextAt(painter, barX, base + 2, number, kTextLeft);
    painter.setPen(skyPen_);
    barX += 2 * b;
  }

  const int textX = layout.textX;
  const int valueX = layout.valueX;
  painter.setPen(Qt::black);
  drawTextAt(painter, textX, base + 15, u"Широта:", kTextLeft);
  drawTextAt(painter, textX, base + 30, u"Долгота:", kTextLeft);
  drawTextAt(painter, textX, base + 45, u"Fix:", kTextLeft);

  const GpsFix& fix = gps.fix;
  if (fix.has(kFixPosition)) {
    drawTextAt(painter, valueX, base + 15, formatLatitude(fix.latitude), kTextLeft);
    drawTextAt(painter, valueX, base + 30, formatLongitude(fix.longitude), kTextLeft);
  } else {
    drawTextAt(painter, valueX, base + 15, u"-", kTextLeft);
    drawTextAt(painter, valueX, base + 30, u"-", kTextLeft);
  }

  const QString name = QString::fromStdU16String(fixQualityName(fix.flags, fix.fixType));
  QString quality = name;
  if (fix.has(kFixHorizontalError)) {
    quality = QString::asprintf("%s, ±%d м", name.toUtf8().constData(),
                                roundHalfUp(fix.horizontalError));
  } else if (fix.has(kFixHdop)) {
    quality = QString::asprintf("%s, HDOP %0.1f", name.toUtf8().constData(), static_cast<double>(fix.hdop));
  }
  drawTextAt(painter, valueX, base + 45, quality.toStdU16String(), kTextLeft);

  if (fix.has(kFixSatellitesUsed)) {
    const QString used = QString::asprintf("Исп.: %u", fix.satellitesUsed);
    drawHaloText(painter, 10, 10, used.toStdU16String(), kTextLeft, QColor(255, 0, 0));
  }
  drawHaloText(painter, textX, base + 65, gps.statusText, kTextLeft, QColor(0, 0, 128));
  painter.restore();
}

void SatellitesPage::onStatusChanged() { context_.host.invalidateMainWindow(); }
void SatellitesPage::onFixChanged() { context_.host.invalidateMainWindow(); }
void SatellitesPage::onSatellitesChanged() { context_.host.invalidateMainWindow(); }


}  // namespace orvel
