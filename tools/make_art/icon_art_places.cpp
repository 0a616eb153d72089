// Symbols for settlements, sea hazards, food and drink, lodging, sights and sport.
#include <array>

#include "make_art/icon_glyph.h"

namespace orvel::icon_art {
namespace {

constexpr QRgb kSettlement = qRgb(0, 0, 0);
constexpr QRgb kHazard = qRgb(150, 0, 120);
constexpr QRgb kExit = qRgb(0, 120, 70);
constexpr QRgb kFood = qRgb(214, 110, 20);
constexpr QRgb kLodging = qRgb(0, 92, 170);
constexpr QRgb kCulture = qRgb(128, 64, 160);
constexpr QRgb kSport = qRgb(40, 140, 60);

// Settlements: the bigger the place, the bigger the mark.
void cityRing(Glyph& g, qreal r) {
  g.ink(Qt::white);
  g.disc(8, 8, r);
  g.ink(Qt::black);
  g.ring(8, 8, r - 0.6, 1.6);
  g.disc(8, 8, r * 0.42);
}
void bigCity(Glyph& g) { cityRing(g, 6); }
void largeCity(Glyph& g) { cityRing(g, 4.8); }
void city(Glyph& g) {
  g.disc(8, 8, 3.6);
  g.ink(Qt::white);
  g.disc(8, 8, 1.3);
}
void town(Glyph& g) { g.disc(8, 8, 2.8); }
void village(Glyph& g) { g.disc(8, 8, 2); }

void wreckHull(Glyph& g) {
  g.line(2, 8, 14, 8, 1.3);
  g.line(5, 5, 5, 11, 1.2);
  g.line(8, 4.5, 8, 11.5, 1.2);
  g.line(11, 5, 11, 11, 1.2);
}
void sweepBar(Glyph& g) { g.lines({{2, 4.5}, {2, 2}, {14, 2}, {14, 4.5}}, 1.1); }
void obstruction(Glyph& g) { g.dottedRing(8, 8, 6, 6, 12, 0.9); }
void wreck(Glyph& g) {
  g.fill({{1.5, 9}, {14.5, 9}, {12, 12.5}, {4, 12.5}});
  g.line(8, 9, 10.5, 2.5, 1.3);
  g.line(5, 9, 6, 5.5, 1.1);
}
void dangerousWreck(Glyph& g) {
  g.dottedRing(8, 8, 7, 4.8, 14, 0.7);
  g.line(3.5, 8, 12.5, 8, 1.2);
  g.line(6, 6, 6, 10, 1.1);
  g.line(8, 5.5, 8, 10.5, 1.1);
  g.line(10, 6, 10, 10, 1.1);
}
void submergedWreck(Glyph& g) { wreckHull(g); }
void sweptWreck(Glyph& g) {
  sweepBar(g);
  g.line(2, 10, 14, 10, 1.3);
  g.line(5, 7.5, 5, 12.5, 1.2);
  g.line(8, 7, 8, 13, 1.2);
  g.line(11, 7.5, 11, 12.5, 1.2);
}
void visibleObstruction(Glyph& g) {
  g.dottedRing(8, 8, 6, 6, 12, 0.9);
  g.disc(8, 8, 2.5);
}
void sweptObstruction(Glyph& g) {
  sweepBar(g);
  g.dottedRing(8, 10, 4.8, 4.8, 10, 0.8);
}
void fourDots(Glyph& g) {
  g.disc(4, 4, 0.9);
  g.disc(12, 4, 0.9);
  g.disc(4, 12, 0.9);
  g.disc(12, 12, 0.9);
}
void awashRock(Glyph& g) {
  g.line(8, 2.5, 8, 13.5, 1.4);
  g.line(3.2, 5.2, 12.8, 10.8, 1.4);
  g.line(3.2, 10.8, 12.8, 5.2, 1.4);
  fourDots(g);
}
void submergedRock(Glyph& g) {
  g.line(8, 3, 8, 13, 1.5);
  g.line(3, 8, 13, 8, 1.5);
  fourDots(g);
}
void sounding(Glyph& g) {
  g.line(8, 1.5, 8, 7, 1.1);
  g.fill({{6.3, 7}, {9.7, 7}, {10.8, 14}, {5.2, 14}});
}

void exitRamp(Glyph& g) {
  g.lines({{6, 14.5}, {6, 9.5}, {10.5, 5}}, 2.2);
  g.fill({{13, 2.5}, {12.2, 8.3}, {7.2, 3.3}});
}

void dining(Glyph& g) {
  g.line(3.5, 1.8, 3.5, 6, 1);
  g.line(5.2, 1.8, 5.2, 6, 1);
  g.line(6.9, 1.8, 6.9, 6, 1);
  g.lines({{3.5, 6}, {4, 7.6}, {5.2, 8.2}, {6.4, 7.6}, {6.9, 6}}, 1.1);
  g.line(5.2, 8, 5.2, 14.3, 1.7);
  g.fill({{10.6, 1.6}, {12.8, 3}, {12.8, 8.8}, {10.6, 8.8}});
  g.line(11.7, 8.5, 11.7, 14.3, 1.7);
}
void bar(Glyph& g) {
  g.fill({{2.5, 2.5}, {13.5, 2.5}, {8, 8.8}});
  g.line(8, 8.5, 8, 13, 1.3);
  g.line(4.8, 13.6, 11.2, 13.6, 1.5);
  g.disc(12.2, 2.3, 1.5);
}

void lodging(Glyph& g) {
  g.line(2.2, 3.5, 2.2, 13.5, 1.7);
  g.box(2.2, 8.2, 12.2, 2.6);
  g.line(13.6, 10, 13.6, 13.5, 1.7);
  g.ellipse(5, 6.5, 1.8, 1.4);
  g.box(7.3, 5.2, 7.2, 2.6, 1);
}
void camping(Glyph& g) {
  g.fill({{8, 2}, {14.8, 13.5}, {1.2, 13.5}});
  g.cut();
  g.fill({{8, 7}, {10.6, 13.6}, {5.4, 13.6}});
}

void attraction(Glyph& g) { g.star(8, 8.6, 7, 2.9); }
void amusementPark(Glyph& g) {
  g.ring(8, 6.8, 5, 1.2);
  g.line(3, 6.8, 13, 6.8, 0.8);
  g.line(8, 1.8, 8, 11.8, 0.8);
  g.line(4.5, 3.3, 11.5, 10.3, 0.8);
  g.line(11.5, 3.3, 4.5, 10.3, 0.8);
  g.lines({{4.5, 14.5}, {8, 6.8}, {11.5, 14.5}}, 1.4);
  g.line(3.5, 14.5, 12.5, 14.5, 1.2);
}
void museum(Glyph& g) {
  g.fill({{8, 1.5}, {15, 5.4}, {1, 5.4}});
  for (qreal x : {2.6, 5.5, 8.4, 11.3}) g.box(x, 6.4, 2.1, 6);
  g.box(1.2, 12.9, 13.6, 1.8);
}
void library(Glyph& g) {
  g.fill({{1.2, 3.5}, {7.4, 4.8}, {7.4, 13.8}, {1.2, 12.5}});
  g.fill({{8.6, 4.8}, {14.8, 3.5}, {14.8, 12.5}, {8.6, 13.8}});
}
void landmark(Glyph& g) {
  g.box(1.5, 5, 13, 8.8, 1.5);
  g.box(5.2, 3.2, 5.6, 2.5, 0.6);
  g.cut();
  g.disc(8, 9.3, 3.1);
  g.ink(Qt::white);
  g.disc(8, 9.3, 1.8);
}
void school(Glyph& g) {
  g.fill({{4, 8}, {12, 8}, {12, 11.8}, {8, 13.4}, {4, 11.8}});
  g.cut();
  g.fill({{8, 1.8}, {16, 6.4}, {8, 11}, {0, 6.4}});
  g.ink(Qt::white);
  g.fill({{8, 3}, {14.6, 6.4}, {8, 9.8}, {1.4, 6.4}});
  g.line(13.8, 6.6, 13.8, 11.5, 0.9);
}
void park(Glyph& g) {
  g.disc(8, 6, 5);
  g.box(7.1, 9, 1.8, 5.8);
}
void zoo(Glyph& g) {
  g.ellipse(8, 10.6, 3.6, 3);
  g.disc(3.6, 6.6, 1.6);
  g.disc(6.6, 3.9, 1.6);
  g.disc(9.4, 3.9, 1.6);
  g.disc(12.4, 6.6, 1.6);
}
void worship(Glyph& g) {
  g.fill({{3.5, 8.5}, {8, 5}, {12.5, 8.5}, {12.5, 14.5}, {3.5, 14.5}});
  g.line(8, 0.8, 8, 5, 1.3);
  g.line(6.3, 2.4, 9.7, 2.4, 1.3);
  g.cut();
  g.box(6.8, 10.5, 2.4, 4.2, 1);
}
void entertainment(Glyph& g) {
  g.ellipse(5, 12, 2.3, 1.8);
  g.ellipse(11.6, 10.5, 2.3, 1.8);
  g.line(7, 12, 7, 4.2, 1.2);
  g.line(13.6, 10.5, 13.6, 2.7, 1.2);
  g.fill({{6.4, 3.3}, {14.2, 1.6}, {14.2, 4}, {6.4, 5.7}});
}
void theatre(Glyph& g) {
  g.ellipse(8, 8, 5.8, 6.5);
  g.cut();
  g.ellipse(5.6, 6.2, 1.4, 0.95);
  g.ellipse(10.4, 6.2, 1.4, 0.95);
  g.arc(8, 7.5, 3.6, 205, 130, 1.3);
}
void cinema(Glyph& g) {
  g.box(1.5, 3.5, 13, 9);
  g.cut();
  for (qreal x : {2.6, 5.3, 8.0, 10.7, 13.4}) {
    g.box(x - 0.6, 4.3, 1.2, 1.2);
    g.box(x - 0.6, 10.5, 1.2, 1.2);
  }
  g.box(3.5, 6.6, 9, 3);
}
void casino(Glyph& g) {
  g.box(2.3, 2.3, 11.4, 11.4, 2.2);
  g.cut();
  for (QPointF pip : {QPointF(5.2, 5.2), QPointF(8, 8), QPointF(10.8, 10.8),
                      QPointF(10.8, 5.2), QPointF(5.2, 10.8)}) {
    g.disc(pip.x(), pip.y(), 1.25);
  }
}

void golf(Glyph& g) {
  g.line(6, 1.5, 6, 13, 1.2);
  g.fill({{6, 1.5}, {13.5, 4.4}, {6, 7.3}});
  g.ellipse(7, 13.6, 4.6, 1.4);
}
void skiing(Glyph& g) {
  g.lines({{2, 12.5}, {12, 2}, {13.6, 1.6}}, 1.6);
  g.lines({{14, 12.5}, {4, 2}, {2.4, 1.6}}, 1.6);
  g.line(3.5, 14.5, 6.5, 14.5, 1);
  g.line(9.5, 14.5, 12.5, 14.5, 1);
}
void bowling(Glyph& g) {
  g.ellipse(5, 10.4, 2.7, 3.8);
  g.ellipse(5, 3.8, 1.6, 2);
  g.box(4.2, 4.8, 1.6, 3);
  g.disc(11.4, 11, 3.3);
  g.cut();
  g.disc(10.5, 9.7, 0.65);
  g.disc(12.2, 9.6, 0.65);
  g.disc(11.6, 11.3, 0.65);
}
void iceSkating(Glyph& g) {
  g.fill({{3.5, 1.8}, {8, 1.8}, {8, 6.6}, {12.6, 8.2}, {13.4, 10.6}, {3.5, 10.6}});
  g.line(2.5, 13.4, 14, 13.4, 1.3);
  g.line(5, 10.5, 5, 13.4, 1);
  g.line(11.5, 10.5, 11.5, 13.4, 1);
}
void swimming(Glyph& g) {
  g.disc(11.5, 4.6, 1.9);
  g.lines({{2.5, 9}, {6.5, 5.5}, {10, 8.5}}, 1.7);
  g.wave(1, 15, 11, 1, 4.7, 1.3);
  g.wave(1, 15, 14.2, 1, 4.7, 1.3);
}
void sportsCentre(Glyph& g) {
  // A football: a ring, the middle pentagon and the seams running out from its corners.
  static constexpr std::array<QPointF, 5> kCorner{
      {{8, 5.4}, {10.5, 7.2}, {9.5, 10.1}, {6.5, 10.1}, {5.5, 7.2}}};
  static constexpr std::array<QPointF, 5> kRim{
      {{8, 1.8}, {13.9, 6.1}, {11.7, 13}, {4.3, 13}, {2.1, 6.1}}};
  g.ring(8, 8, 6.2, 1.3);
  g.fill({kCorner[0], kCorner[1], kCorner[2], kCorner[3], kCorner[4]});
  for (size_t i = 0; i < kCorner.size(); ++i) {
    g.line(kCorner[i].x(), kCorner[i].y(), kRim[i].x(), kRim[i].y(), 1);
  }
}

void spot(Glyph& g) { g.disc(8, 8, 1.9); }

constexpr IconArt kArt[] = {
    {1000, Badge::Bare, kSettlement, bigCity},
    {1001, Badge::Bare, kSettlement, largeCity},
    {1002, Badge::Bare, kSettlement, city},
    {1003, Badge::Bare, kSettlement, town},
    {1004, Badge::Bare, kSettlement, village},
    {1010, Badge::Bare, kHazard, obstruction},
    {1011, Badge::Bare, kHazard, wreck},
    {1012, Badge::Bare, kHazard, dangerousWreck},
    {1013, Badge::Bare, kHazard, submergedWreck},
    {1014, Badge::Bare, kHazard, sweptWreck},
    {1015, Badge::Bare, kHazard, visibleObstruction},
    {1016, Badge::Bare, kHazard, sweptObstruction},
    {1017, Badge::Bare, kHazard, awashRock},
    {1018, Badge::Bare, kHazard, submergedRock},
    {1019, Badge::Bare, kHazard, sounding},
    {1030, Badge::Square, kExit, exitRamp},
    {1031, Badge::Circle, kFood, dining},
    {1032, Badge::Circle, kLodging, lodging},
    {1033, Badge::Circle, kLodging, camping},
    {1034, Badge::Circle, kCulture, attraction},
    {1035, Badge::Circle, kCulture, amusementPark},
    {1036, Badge::Circle, kCulture, museum},
    {1037, Badge::Circle, kCulture, library},
    {1038, Badge::Circle, kCulture, landmark},
    {1039, Badge::Circle, kCulture, school},
    {1040, Badge::Circle, kSport, park},
    {1041, Badge::Circle, kCulture, zoo},
    {1042, Badge::Circle, kCulture, worship},
    {1043, Badge::Circle, kCulture, entertainment},
    {1044, Badge::Circle, kCulture, theatre},
    {1045, Badge::Circle, kFood, bar},
    {1046, Badge::Circle, kCulture, cinema},
    {1047, Badge::Circle, kCulture, casino},
    {1048, Badge::Circle, kSport, golf},
    {1049, Badge::Circle, kSport, skiing},
    {1050, Badge::Circle, kSport, bowling},
    {1051, Badge::Circle, kSport, iceSkating},
    {1052, Badge::Circle, kSport, swimming},
    {1053, Badge::Circle, kSport, sportsCentre},
    {1111, Badge::Bare, kSettlement, spot},
};

}  // namespace

std::span<const IconArt> placeIcons() { return kArt; }

}  // namespace orvel::icon_art
