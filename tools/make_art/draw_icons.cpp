#include "make_art/draw_icons.h"

#include <algorithm>
#include <array>
#include <vector>

#include <QPainter>

#include "make_art/icon_glyph.h"
#include "map/catalogue/icons.h"

namespace orvel::art {
namespace {

using icon_art::Badge;
using icon_art::IconArt;

const std::vector<IconArt>& allArt() {
  static const std::vector<IconArt> art = [] {
    std::vector<IconArt> all;
    for (auto part : {icon_art::placeIcons(), icon_art::serviceIcons(), icon_art::natureIcons()}) {
      all.insert(all.end(), part.begin(), part.end());
    }
    std::sort(all.begin(), all.end(),
              [](const IconArt& a, const IconArt& b) { return a.id < b.id; });
    return all;
  }();
  return art;
}

const IconArt* findArt(uint16_t id) {
  const auto& art = allArt();
  auto it = std::lower_bound(art.begin(), art.end(), id,
                             [](const IconArt& a, uint16_t key) { return a.id < key; });
  return it != art.end() && it->id == id ? &*it : nullptr;
}

QImage blankIcon() {
  QImage image(kIconSize, kIconSize, QImage::Format_ARGB32_Premultiplied);
  image.fill(Qt::transparent);
  return image;
}

// A white rim one pixel and a half wide around everything the symbol covers, so that a
// bare symbol stays readable on any fill beneath it.
QImage haloOf(const QImage& symbol) {
  QImage halo = blankIcon();
  for (int y = 0; y < kIconSize; ++y) {
    for (int x = 0; x < kIconSize; ++x) {
      int alpha = 0;
      for (int dy = -2; dy <= 2; ++dy) {
        for (int dx = -2; dx <= 2; ++dx) {
          if (dx * dx + dy * dy > 5) continue;
          const int sx = x + dx;
          const int sy = y + dy;
          if (sx < 0 || sy < 0 || sx >= kIconSize || sy >= kIconSize) continue;
          alpha = std::max(alpha, qAlpha(symbol.pixel(sx, sy)));
        }
      }
      halo.setPixel(x, y, qPremultiply(qRgba(255, 255, 255, alpha)));
    }
  }
  return halo;
}

void drawBadge(QPainter& painter, Badge badge, QColor colour) {
  constexpr qreal kMid = kIconSize / 2.0;
  painter.setPen(Qt::NoPen);
  if (badge == Badge::Circle) {
    painter.setBrush(Qt::white);
    painter.drawEllipse(QPointF(kMid, kMid), 12.0, 12.0);
    painter.setBrush(colour);
    painter.drawEllipse(QPointF(kMid, kMid), 11.0, 11.0);
  } else {
    painter.setBrush(Qt::white);
    painter.drawRoundedRect(QRectF(kMid - 12, kMid - 12, 24, 24), 5, 5);
    painter.setBrush(colour);
    painter.drawRoundedRect(QRectF(kMid - 11, kMid - 11, 22, 22), 4, 4);
  }
}

}  // namespace

std::span<const uint16_t> drawnIconIds() {
  static const std::vector<uint16_t> ids = [] {
    std::vector<uint16_t> out;
    for (const IconArt& art : allArt()) out.push_back(art.id);
    return out;
  }();
  return ids;
}

QImage drawIcon(uint16_t id) {
  const IconArt* art = findArt(id);
  if (art == nullptr) return {};
  const bool bare = art->badge == Badge::Bare;
  const QColor colour = QColor::fromRgb(art->colour);

  // The symbol alone, on its own layer, so that its cut-outs stay transparent.
  QImage symbol = blankIcon();
  {
    QPainter painter(&symbol);
    painter.setRenderHint(QPainter::Antialiasing);
    constexpr qreal kMid = kIconSize / 2.0;
    const qreal room = bare ? 20.0 : 14.0;  // pixels the 16-unit box is scaled to
    painter.translate(kMid - room / 2, kMid - room / 2);
    painter.scale(room / 16, room / 16);
    icon_art::Glyph glyph(painter, bare ? colour : QColor(Qt::white));
    art->draw(glyph);
  }

  QImage icon = blankIcon();
  QPainter painter(&icon);
  painter.setRenderHint(QPainter::Antialiasing);
  if (bare) {
    painter.drawImage(0, 0, haloOf(symbol));
  } else {
    drawBadge(painter, art->badge, colour);
  }
  painter.drawImage(0, 0, symbol);
  return icon;
}

}  // namespace orvel::art
