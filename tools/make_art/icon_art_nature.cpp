// Symbols for man-made features, water and land features, places of worship and the
// waypoint flag.
#include <array>

#include "make_art/icon_glyph.h"

namespace orvel::icon_art {
namespace {

constexpr QRgb kManMade = qRgb(110, 110, 110);
constexpr QRgb kMilitary = qRgb(85, 95, 50);
constexpr QRgb kWell = qRgb(0, 110, 200);
constexpr QRgb kWater = qRgb(0, 100, 210);
constexpr QRgb kLand = qRgb(140, 90, 40);
constexpr QRgb kWood = qRgb(30, 120, 50);
constexpr QRgb kLava = qRgb(190, 60, 20);
constexpr QRgb kWorship = qRgb(90, 70, 120);
constexpr QRgb kWaypoint = qRgb(0, 0, 0);

void house(Glyph& g, qreal x, qreal y, qreal w) {
  g.fill({{x - 0.4, y + w * 0.55}, {x + w / 2, y}, {x + w + 0.4, y + w * 0.55}});
  g.box(x + w * 0.14, y + w * 0.5, w * 0.72, w * 0.7);
}

void manMade(Glyph& g) {
  g.box(2.4, 7, 4.6, 7.4);
  g.box(8, 3, 5.6, 11.4);
  g.cut();
  g.box(9.6, 5, 2.4, 2);
  g.box(9.6, 9, 2.4, 2);
}
void bridge(Glyph& g) {
  g.box(0.8, 4.6, 14.4, 1.8);
  g.arc(8, 13.4, 6, 0, 180, 1.5);
  g.line(2, 6.4, 2, 13.4, 1.4);
  g.line(14, 6.4, 14, 13.4, 1.4);
  g.line(5, 6.4, 5, 8.6, 1);
  g.line(8, 6.4, 8, 7.4, 1);
  g.line(11, 6.4, 11, 8.6, 1);
}
void building(Glyph& g) {
  house(g, 1.4, 1.6, 13.2);
  g.cut();
  g.box(6.8, 10, 2.4, 4.4);
}
void cemetery(Glyph& g) {
  g.pie(8, 6.4, 4.2, 0, 180);
  g.box(3.8, 6.3, 8.4, 7.2);
  g.line(2.2, 14.4, 13.8, 14.4, 1.4);
  g.cut();
  g.line(8, 4.2, 8, 11.4, 1.2);
  g.line(5.8, 6.6, 10.2, 6.6, 1.2);
}
void crossing(Glyph& g) {
  g.line(2.5, 2.5, 13.5, 13.5, 2.2);
  g.line(13.5, 2.5, 2.5, 13.5, 2.2);
}
void dam(Glyph& g) {
  g.fill({{6.8, 2}, {10, 2}, {12.6, 14.5}, {6.8, 14.5}});
  g.wave(0.8, 6, 6, 0.8, 3.4, 1.1);
  g.wave(0.8, 6, 9.4, 0.8, 3.4, 1.1);
  g.wave(0.8, 6, 12.8, 0.8, 3.4, 1.1);
}
void locale(Glyph& g) {
  g.ring(8, 8, 5.4, 1.5);
  g.disc(8, 8, 2.2);
}
void military(Glyph& g) {
  g.star(8, 8.4, 7, 2.8);
  g.cut();
  g.star(8, 8.4, 3.2, 1.3);
}
void mine(Glyph& g) {
  g.line(3, 13.6, 11, 4.6, 1.4);
  g.line(5, 4.6, 13, 13.6, 1.4);
  g.line(9.2, 3, 12.8, 6.2, 2.4);
  g.line(3.2, 6.2, 6.8, 3, 2.4);
}
void oilField(Glyph& g) {
  g.line(8, 1.4, 3.4, 14, 1.3);
  g.line(8, 1.4, 12.6, 14, 1.3);
  g.line(5.2, 9.4, 10.8, 9.4, 1);
  g.line(6.4, 5.6, 9.6, 5.6, 1);
  g.line(5.2, 9.4, 9.6, 5.6, 0.8);
  g.line(10.8, 9.4, 6.4, 5.6, 0.8);
  g.line(1.8, 14.2, 14.2, 14.2, 1.4);
}
void tower(Glyph& g) {
  g.line(8, 4, 5, 14.4, 1.3);
  g.line(8, 4, 11, 14.4, 1.3);
  g.line(6.2, 10.2, 9.8, 10.2, 1);
  g.disc(8, 3, 1.6);
  g.arc(8, 3, 4, -40, 80, 1);
  g.arc(8, 3, 4, 140, 80, 1);
}
void trail(Glyph& g) {
  g.disc(8.6, 2.4, 1.7);
  g.box(4.8, 4.4, 2.4, 4, 0.7);
  g.lines({{8.2, 4.6}, {7.4, 9}}, 1.9);
  g.lines({{7.4, 9}, {5.2, 14.4}}, 1.5);
  g.lines({{7.4, 9}, {9.6, 11.4}, {9.6, 14.4}}, 1.5);
  g.lines({{8.2, 5.6}, {10.8, 8}}, 1.2);
  g.line(11.4, 6.4, 12.4, 14.4, 0.9);
}
void tunnel(Glyph& g) {
  g.box(1.2, 3.4, 13.6, 11.2, 1);
  g.cut();
  g.box(4, 9.4, 8, 5.4);
  g.pie(8, 9.6, 4, 0, 180);
}
void well(Glyph& g) { g.drop(8, 1.2, 13.4); }
void historicTown(Glyph& g) {
  house(g, 0.8, 3.2, 6.6);
  house(g, 8.6, 5, 6.6);
  g.line(0.4, 14.2, 15.6, 14.2, 1.2);
}

void waterFeature(Glyph& g) {
  for (qreal y : {4.0, 8.0, 12.0}) g.wave(1.5, 14.5, y, 1.1, 4.4, 1.5);
}
void arroyo(Glyph& g) {
  g.wave(1, 15, 6, 1.4, 6, 1.5, true);
  g.wave(1, 15, 11, 1.4, 6, 1.5, true);
}
void falls(Glyph& g) {
  g.line(1, 3.4, 8, 3.4, 1.5);
  for (qreal x : {8.0, 10.2, 12.4}) g.line(x, 3.4 + (x - 8) * 0.5, x, 11, 1.2);
  g.wave(4.5, 15.5, 13.6, 0.9, 3.6, 1.2);
}
void geyser(Glyph& g) {
  g.line(8, 13.6, 8, 3.6, 1.7);
  for (QPointF d : {QPointF(4.8, 4.6), QPointF(11.2, 4.6), QPointF(5.8, 1.8), QPointF(10.2, 1.8),
                    QPointF(8, 0.9)}) {
    g.disc(d.x(), d.y(), 0.95);
  }
  g.ellipse(8, 14, 4.6, 1.5);
}
void island(Glyph& g) {
  g.ellipseRing(8, 9, 7, 5, 1);
  g.ink(QColor(150, 120, 60));
  g.ellipse(8, 9, 4.6, 3);
}
void lake(Glyph& g) {
  g.ink(QColor(150, 200, 255));
  g.ellipse(8, 8.4, 6.8, 4.8);
  g.ink(QColor(kWater));
  g.ellipseRing(8, 8.4, 6.8, 4.8, 1.3);
  g.wave(4.4, 11.6, 8.4, 0.7, 3.6, 0.9);
}
void spring(Glyph& g) {
  g.disc(4.2, 11.4, 2.6);
  g.wave(6.6, 15.2, 11.4, 1.1, 4.3, 1.4);
  g.ring(4.2, 11.4, 4.4, 0.8);
}
void stream(Glyph& g) { g.wave(1, 15, 8, 2.4, 7.5, 1.8); }
void swamp(Glyph& g) {
  g.line(1, 12.4, 7, 12.4, 1.3);
  g.line(9, 12.4, 15, 12.4, 1.3);
  g.ink(QColor(40, 130, 80));
  for (qreal x : {4.0, 12.0}) {
    g.line(x, 12, x, 6.6, 1.1);
    g.line(x - 1.4, 12, x - 2.4, 8.4, 1.1);
    g.line(x + 1.4, 12, x + 2.4, 8.4, 1.1);
  }
}

void landFeature(Glyph& g) {
  g.pie(8, 13.2, 6.6, 0, 180);
  g.line(0.8, 13.6, 15.2, 13.6, 1.2);
}
void arch(Glyph& g) {
  g.pie(8, 9, 6.6, 0, 180);
  g.box(1.4, 9, 13.2, 5.4);
  g.cut();
  g.pie(8, 14.6, 4, 0, 180);
}
void cliff(Glyph& g) {
  g.line(1, 4.6, 15, 4.6, 1.6);
  for (qreal x : {2.0, 5.0, 8.0, 11.0, 14.0}) g.line(x, 4.6, x + 0.8, 9.6, 1.1);
}
void crater(Glyph& g) {
  g.ring(8, 8, 5.8, 1.4);
  for (int i = 0; i < 8; ++i) {
    static constexpr std::array<QPointF, 8> kDir{{{1, 0}, {0.707, 0.707}, {0, 1},
                                                  {-0.707, 0.707}, {-1, 0}, {-0.707, -0.707},
                                                  {0, -1}, {0.707, -0.707}}};
    const QPointF d = kDir[static_cast<size_t>(i)];
    g.line(8 + d.x() * 5.6, 8 + d.y() * 5.6, 8 + d.x() * 3.4, 8 + d.y() * 3.4, 1);
  }
}
void forest(Glyph& g) {
  g.fill({{8, 0.8}, {12.2, 6.4}, {3.8, 6.4}});
  g.fill({{8, 3.6}, {13.4, 10.8}, {2.6, 10.8}});
  g.box(7.1, 10.6, 1.8, 3.8);
}
void lava(Glyph& g) {
  for (qreal y : {4.0, 8.0, 12.0}) g.wave(1.2, 14.8, y, 1.3, 5, 2.1);
}
void pillar(Glyph& g) {
  g.box(5.8, 3, 4.4, 10.4);
  g.box(4.2, 1.6, 7.6, 1.8);
  g.box(4.2, 12.8, 7.6, 1.8);
}
void rock(Glyph& g) {
  g.fill({{1, 14}, {4, 7}, {6, 9.6}, {9, 2.8}, {12, 8.6}, {13.4, 7}, {15, 14}});
}
void summit(Glyph& g) {
  g.fill({{8, 2.2}, {14.8, 13.6}, {1.2, 13.6}});
}

void orthodox(Glyph& g) {
  g.line(8, 1.2, 8, 14.8, 1.5);
  g.line(6.2, 3.4, 9.8, 3.4, 1.2);
  g.line(3.8, 6.6, 12.2, 6.6, 1.5);
  g.line(5.4, 12.2, 10.6, 10, 1.2);
}
void catholic(Glyph& g) {
  g.box(7, 1.2, 2, 13.6);
  g.box(3.4, 4.6, 9.2, 2);
}
void protestant(Glyph& g) {
  g.box(7.2, 1, 1.6, 10.4);
  g.box(4.4, 3.8, 7.2, 1.6);
  g.box(5, 11.6, 6, 1.3);
  g.box(3.6, 13.4, 8.8, 1.4);
}
void mosque(Glyph& g) {
  g.disc(7, 8.4, 6);
  g.cut();
  g.disc(9.4, 7, 5);
  g.ink(Qt::white);
  g.star(12.4, 5, 2.2, 0.9);
}
void synagogue(Glyph& g) {
  g.outline({{8, 1.4}, {13.8, 11.2}, {2.2, 11.2}}, 1.3);
  g.outline({{8, 14.6}, {2.2, 4.8}, {13.8, 4.8}}, 1.3);
}
void pagoda(Glyph& g) {
  g.line(8, 0.4, 8, 3.4, 1);
  g.fill({{4.4, 3.2}, {11.6, 3.2}, {14, 5.2}, {2, 5.2}});
  g.box(5.4, 5.2, 5.2, 2.2);
  g.fill({{3.2, 7.4}, {12.8, 7.4}, {15.4, 9.6}, {0.6, 9.6}});
  g.box(4.8, 9.6, 6.4, 5);
  g.cut();
  g.box(7, 11, 2, 3.6);
}

void waypoint(Glyph& g) {
  g.line(4, 1, 4, 15, 1.4);
  g.ink(QColor(220, 0, 0));
  g.fill({{4.6, 1.4}, {14.6, 4.8}, {4.6, 8.4}});
}

constexpr IconArt kArt[] = {
    {1130, Badge::Circle, kManMade, manMade},
    {1131, Badge::Circle, kManMade, bridge},
    {1132, Badge::Circle, kManMade, building},
    {1133, Badge::Circle, kManMade, cemetery},
    {1134, Badge::Circle, kManMade, crossing},
    {1135, Badge::Circle, kManMade, dam},
    {1136, Badge::Circle, kManMade, locale},
    {1137, Badge::Circle, kMilitary, military},
    {1138, Badge::Circle, kManMade, mine},
    {1139, Badge::Circle, kManMade, oilField},
    {1140, Badge::Circle, kManMade, tower},
    {1141, Badge::Circle, kManMade, trail},
    {1142, Badge::Circle, kManMade, tunnel},
    {1143, Badge::Circle, kWell, well},
    {1144, Badge::Circle, kManMade, historicTown},
    {1160, Badge::Bare, kWater, waterFeature},
    {1161, Badge::Bare, kWater, arroyo},
    {1162, Badge::Bare, kWater, falls},
    {1163, Badge::Bare, kWater, geyser},
    {1164, Badge::Bare, kWater, island},
    {1165, Badge::Bare, kWater, lake},
    {1166, Badge::Bare, kWater, spring},
    {1167, Badge::Bare, kWater, stream},
    {1168, Badge::Bare, kWater, swamp},
    {1180, Badge::Bare, kLand, landFeature},
    {1181, Badge::Bare, kLand, arch},
    {1182, Badge::Bare, kLand, cliff},
    {1183, Badge::Bare, kLand, crater},
    {1184, Badge::Bare, kWood, forest},
    {1185, Badge::Bare, kLava, lava},
    {1186, Badge::Bare, kLand, pillar},
    {1187, Badge::Bare, kLand, rock},
    {1188, Badge::Bare, kLand, summit},
    {1220, Badge::Circle, kWorship, orthodox},
    {1221, Badge::Circle, kWorship, catholic},
    {1222, Badge::Circle, kWorship, protestant},
    {1223, Badge::Circle, kWorship, mosque},
    {1224, Badge::Circle, kWorship, synagogue},
    {1225, Badge::Circle, kWorship, pagoda},
    {1400, Badge::Bare, kWaypoint, waypoint},
};

}  // namespace

std::span<const IconArt> natureIcons() { return kArt; }

}  // namespace orvel::icon_art
