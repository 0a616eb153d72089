// Symbols for shops, services, emergency and government, airports, public transport and
// outdoor amenities.

#include <QPainter>

#include "make_art/icon_glyph.h"

namespace orvel::icon_art {
namespace {

constexpr QRgb kShop = qRgb(180, 40, 130);
constexpr QRgb kPharmacy = qRgb(0, 140, 70);
constexpr QRgb kService = qRgb(70, 90, 120);
constexpr QRgb kGovernment = qRgb(120, 80, 50);
constexpr QRgb kMedical = qRgb(210, 30, 30);
constexpr QRgb kPolice = qRgb(20, 50, 130);
constexpr QRgb kAir = qRgb(30, 70, 150);
constexpr QRgb kBus = qRgb(0, 110, 190);
constexpr QRgb kTram = qRgb(200, 80, 30);
constexpr QRgb kTrolleybus = qRgb(0, 140, 140);
constexpr QRgb kUnderground = qRgb(210, 30, 40);
constexpr QRgb kRail = qRgb(70, 70, 70);
constexpr QRgb kWaterSide = qRgb(0, 110, 170);
constexpr QRgb kOutdoor = qRgb(90, 130, 40);
constexpr QRgb kInformation = qRgb(30, 110, 180);
constexpr QRgb kDanger = qRgb(220, 30, 30);

void car(Glyph& g, qreal dy) {
  g.box(1.3, 8 + dy, 13.4, 4.2, 1.3);
  g.fill({{3.6, 8.3 + dy}, {5.4, 4.8 + dy}, {10.6, 4.8 + dy}, {12.4, 8.3 + dy}});
  g.cut();
  g.fill({{5.2, 7.9 + dy}, {6.2, 5.8 + dy}, {7.6, 5.8 + dy}, {7.6, 7.9 + dy}});
  g.fill({{8.4, 7.9 + dy}, {8.4, 5.8 + dy}, {9.8, 5.8 + dy}, {10.8, 7.9 + dy}});
  g.disc(4.6, 12.2 + dy, 2);
  g.disc(11.4, 12.2 + dy, 2);
  g.ink(Qt::white);
  g.disc(4.6, 12.2 + dy, 1.3);
  g.disc(11.4, 12.2 + dy, 1.3);
}
void bus(Glyph& g, qreal top) {
  const qreal h = 14 - top;
  g.box(3, top, 10, h - 1.5, 1.8);
  g.box(4, top + h - 2, 2, 2, 0.5);
  g.box(10, top + h - 2, 2, 2, 0.5);
  g.cut();
  g.box(4.3, top + 1.6, 7.4, h * 0.36, 0.5);
  g.disc(5.2, top + h - 3.6, 0.8);
  g.disc(10.8, top + h - 3.6, 0.8);
}
void trainFront(Glyph& g) {
  g.box(3.4, 1.6, 9.2, 10.8, 2.6);
  g.line(5, 12.5, 3.2, 15, 1.3);
  g.line(11, 12.5, 12.8, 15, 1.3);
  g.cut();
  g.box(5, 3.8, 6, 3.4, 0.6);
  g.disc(5.8, 9.8, 0.95);
  g.disc(10.2, 9.8, 0.95);
}
void cross(Glyph& g) {
  g.box(6.1, 2.2, 3.8, 11.6);
  g.box(2.2, 6.1, 11.6, 3.8);
}

void shopping(Glyph& g) {
  g.fill({{2.8, 6}, {13.2, 6}, {14.2, 14.5}, {1.8, 14.5}});
  g.arc(8, 6, 2.9, 0, 180, 1.4);
}
void departmentStore(Glyph& g) {
  g.fill({{5, 2.2}, {6.6, 2.2}, {8, 3.8}, {9.4, 2.2}, {11, 2.2}, {14.8, 5.6}, {12.6, 8.4},
          {11, 7.2}, {11, 14.2}, {5, 14.2}, {5, 7.2}, {3.4, 8.4}, {1.2, 5.6}});
}
void pharmacy(Glyph& g) { cross(g); }
void service(Glyph& g) {
  QPainter& p = g.painter();
  for (int i = 0; i < 8; ++i) {
    p.save();
    p.translate(8, 8);
    p.rotate(i * 45.0);
    g.box(-1.4, -7, 2.8, 3.2, 0.4);
    p.restore();
  }
  g.disc(8, 8, 4.9);
  g.cut();
  g.disc(8, 8, 2.1);
}
void fuel(Glyph& g) {
  g.box(2.2, 2.6, 7.4, 11.4, 1);
  g.line(1.2, 14.2, 10.6, 14.2, 1.4);
  g.lines({{9.4, 5}, {12.8, 7.2}, {12.8, 12}, {11.2, 12.6}}, 1.3);
  g.cut();
  g.box(3.6, 4.2, 4.6, 3.2, 0.4);
}
void autoRental(Glyph& g) {
  g.ring(3.8, 2.8, 1.6, 1.1);
  g.line(5.4, 2.8, 12.6, 2.8, 1.2);
  g.line(11, 2.8, 11, 4.4, 1.1);
  g.line(12.6, 2.8, 12.6, 4.4, 1.1);
  car(g, 1.6);
}
void autoRepair(Glyph& g) {
  g.line(3.6, 12.4, 10, 6, 2.4);
  g.disc(11.2, 4.8, 3.2);
  g.disc(3.4, 12.6, 1.6);
  g.cut();
  g.fill({{11.2, 4.8}, {13.2, 0.6}, {15.4, 2.8}});
  g.disc(11.2, 4.8, 1.2);
}
void postOffice(Glyph& g) {
  g.box(1.6, 3.6, 12.8, 9);
  g.cut();
  g.lines({{2.2, 4.3}, {8, 9}, {13.8, 4.3}}, 1.1);
}
void bank(Glyph& g) {
  g.box(1.2, 3.8, 13.6, 8.4, 0.8);
  g.cut();
  g.ring(8, 8, 2.3, 1.1);
  g.disc(3.6, 6, 0.8);
  g.disc(12.4, 10, 0.8);
}
void autoParts(Glyph& g) {
  g.ring(8, 8, 5.4, 2.6);
  g.disc(8, 8, 1.7);
  g.line(8, 3, 8, 13, 0.9);
  g.line(3, 8, 13, 8, 0.9);
}
void busStation(Glyph& g) { bus(g, 1.5); }
void fishing(Glyph& g) {
  g.ellipse(6.8, 8, 5.2, 3.4);
  g.fill({{10.8, 8}, {15.2, 4.2}, {15.2, 11.8}});
  g.cut();
  g.disc(4, 7.2, 0.75);
}
void divingWreck(Glyph& g) {
  g.fill({{1.5, 9}, {14.5, 9}, {12, 12.8}, {4, 12.8}});
  g.line(8, 9, 10.8, 2.2, 1.4);
  g.line(5, 9, 6, 5.2, 1.2);
}
void boatRamp(Glyph& g) {
  g.fill({{2, 8.6}, {13, 8.6}, {11, 11.6}, {4, 11.6}});
  g.line(7.4, 1.5, 7.4, 8.6, 0.9);
  g.fill({{7.9, 1.5}, {12.4, 7.8}, {7.9, 7.8}});
  g.line(0.8, 15, 15.2, 11.8, 1.3);
}
void picnic(Glyph& g) {
  g.box(1.8, 4.6, 12.4, 1.8);
  g.line(5.6, 6.4, 3.4, 14.4, 1.4);
  g.line(10.4, 6.4, 12.6, 14.4, 1.4);
  g.line(1.4, 10.6, 14.6, 10.6, 1.4);
}
void information(Glyph& g) {
  g.disc(8, 3.4, 1.8);
  g.box(6.8, 6.4, 2.6, 7);
  g.box(5.6, 6.4, 2, 1.3);
  g.box(5.4, 12.6, 5.4, 1.6);
}
void shower(Glyph& g) {
  g.lines({{3, 14.6}, {3, 2.6}, {9, 2.6}, {9, 4.6}}, 1.3);
  g.fill({{5.8, 4.6}, {12.2, 4.6}, {11, 6.6}, {7, 6.6}});
  for (qreal x : {6.8, 9.0, 11.2}) {
    g.line(x, 8.2, x + (x - 9) * 0.25, 10, 0.9);
    g.line(x + (x - 9) * 0.4, 11.6, x + (x - 9) * 0.6, 13.4, 0.9);
  }
}
void danger(Glyph& g) {
  g.fill({{8, 0.8}, {15.6, 14.6}, {0.4, 14.6}});
  g.ink(Qt::white);
  g.box(7.1, 5, 1.8, 5.6, 0.6);
  g.disc(8, 12.4, 1.05);
}
void marina(Glyph& g) {
  g.ring(8, 2.8, 1.5, 1.1);
  g.line(8, 4.2, 8, 14.2, 1.5);
  g.line(4.8, 6.4, 11.2, 6.4, 1.3);
  g.arc(8, 8.4, 5.6, 200, 140, 1.5);
}
void parking(Glyph& g) { g.letters("P", 12); }
void restroom(Glyph& g) {
  g.disc(4.6, 3.2, 1.7);
  g.box(2.8, 5.6, 3.6, 5.2, 0.8);
  g.line(3.8, 10.5, 3.8, 14.4, 1.2);
  g.line(5.4, 10.5, 5.4, 14.4, 1.2);
  g.disc(11.4, 3.2, 1.7);
  g.fill({{11.4, 5.3}, {14.4, 11}, {8.4, 11}});
  g.line(10.6, 11, 10.6, 14.4, 1.2);
  g.line(12.2, 11, 12.2, 14.4, 1.2);
  g.line(8, 1.6, 8, 14.6, 0.7);
}
void automobileClub(Glyph& g) {
  g.ring(8, 8, 5.6, 1.6);
  g.disc(8, 8, 1.8);
  g.line(2.6, 8, 13.4, 8, 1.5);
  g.line(8, 8, 8, 13.4, 1.5);
}
void carWash(Glyph& g) {
  g.drop(4, 0.4, 3.6);
  g.drop(8, 0.2, 3.6);
  g.drop(12, 0.4, 3.6);
  car(g, 2);
}
void telephone(Glyph& g) {
  g.arc(8, 10.5, 6, 25, 130, 2.4);
  g.ellipse(2.8, 8.6, 2.2, 1.6);
  g.ellipse(13.2, 8.6, 2.2, 1.6);
  g.box(5, 9.5, 6, 5, 1.2);
  g.cut();
  g.disc(8, 12, 1.2);
}
void government(Glyph& g) {
  g.pie(8, 6.2, 3.4, 0, 180);
  g.box(3.2, 6.2, 9.6, 6.6);
  g.box(1.8, 12.6, 12.4, 1.8);
  g.line(8, 3, 8, 0.4, 0.8);
  g.fill({{8, 0.4}, {10.6, 1.2}, {8, 2}});
  g.cut();
  for (qreal x : {4.8, 7.35, 9.9}) g.box(x, 8.2, 1.3, 3.2);
}
void hospital(Glyph& g) { cross(g); }
void police(Glyph& g) {
  g.fill({{8, 1.2}, {14, 3.4}, {13.2, 9}, {8, 14.8}, {2.8, 9}, {2, 3.4}});
  g.cut();
  g.star(8, 7.6, 3.2, 1.3);
}
void airport(Glyph& g) {
  g.fill({{8, 0.6},  {9.1, 2.2},   {9.1, 6},   {15, 9.4},  {15, 11},  {9.1, 9.2},
          {9.1, 12.6}, {11.2, 14}, {11.2, 15.2}, {8, 14.3}, {4.8, 15.2}, {4.8, 14},
          {6.9, 12.6}, {6.9, 9.2}, {1, 11},    {1, 9.4},   {6.9, 6},   {6.9, 2.2}});
}
void heliport(Glyph& g) { g.letters("H", 11); }
void tram(Glyph& g) {
  g.box(3, 4.6, 10, 8.8, 1.5);
  g.lines({{6, 4.6}, {9.6, 1.6}, {6.4, 0.8}}, 0.9);
  g.box(4, 13, 2, 1.8, 0.5);
  g.box(10, 13, 2, 1.8, 0.5);
  g.cut();
  g.box(4.2, 6, 3.2, 3.2, 0.4);
  g.box(8.6, 6, 3.2, 3.2, 0.4);
}
void trolleybus(Glyph& g) {
  g.line(6, 4.5, 10.5, 0.4, 0.8);
  g.line(8.4, 4.5, 12.9, 0.4, 0.8);
  bus(g, 4.2);
}
void underground(Glyph& g) { g.letters("M", 10.5); }

constexpr IconArt kArt[] = {
    {1070, Badge::Circle, kShop, shopping},
    {1071, Badge::Circle, kShop, departmentStore},
    {1072, Badge::Circle, kPharmacy, pharmacy},
    {1073, Badge::Circle, kService, service},
    {1074, Badge::Circle, kService, fuel},
    {1075, Badge::Circle, kService, autoRental},
    {1076, Badge::Circle, kService, autoRepair},
    {1077, Badge::Circle, kService, postOffice},
    {1078, Badge::Circle, kService, bank},
    {1079, Badge::Circle, kService, autoParts},
    {1080, Badge::Square, kBus, busStation},
    {1090, Badge::Circle, kWaterSide, fishing},
    {1091, Badge::Circle, kWaterSide, divingWreck},
    {1092, Badge::Circle, kWaterSide, boatRamp},
    {1093, Badge::Circle, kOutdoor, picnic},
    {1094, Badge::Circle, kInformation, information},
    {1095, Badge::Circle, kOutdoor, shower},
    {1096, Badge::Bare, kDanger, danger},
    {1097, Badge::Circle, kWaterSide, marina},
    {1098, Badge::Square, kBus, parking},
    {1099, Badge::Circle, kOutdoor, restroom},
    {1100, Badge::Circle, kService, automobileClub},
    {1101, Badge::Circle, kService, carWash},
    {1102, Badge::Circle, kService, telephone},
    {1103, Badge::Circle, kGovernment, government},
    {1104, Badge::Circle, kMedical, hospital},
    {1105, Badge::Circle, kPolice, police},
    {1106, Badge::Circle, kAir, airport},
    {1107, Badge::Square, kAir, airport},
    {1108, Badge::Circle, kAir, heliport},
    {1200, Badge::Circle, kBus, busStation},
    {1201, Badge::Circle, kTram, tram},
    {1202, Badge::Circle, kTrolleybus, trolleybus},
    {1203, Badge::Circle, kUnderground, underground},
    {1204, Badge::Circle, kRail, trainFront},
    {1205, Badge::Square, kRail, trainFront},
};

}  // namespace

std::span<const IconArt> serviceIcons() { return kArt; }

}  // namespace orvel::icon_art
