#pragma once
// One row of the map object type catalogue: a Garmin type code (or a range of codes), its
// English name and references to the drawing objects it is drawn with. Rows are constants;
// the drawing objects themselves live in MapStyles (map_styles.h).
#include <cstdint>

namespace orvel {

// The pens the catalogue draws lines with (style, width in pixels, colour in the comment).
enum class PenId : uint8_t {
  None,                // no pen (second pens only)
  Tram,                // solid 2px (0,0,0)
  DepthMajor,          // solid 2px (0,255,255)
  DepthIntermediate,   // solid 1px (0,255,255)
  DepthMinor,          // dashed 1px (0,255,255)
  LandMajor,           // solid 2px (137,80,24)
  LandIntermediate,    // solid 1px (137,80,24)
  LandMinor,           // dashed 1px (137,80,24)
  Border,              // dashed 1px (0,200,100)
  Shoreline,           // solid 1px (0,0,128)
  IntermittentStream,  // dashed 1px (0,0,255)
  Stream,              // solid 1px (0,0,255)
  RailroadBase,        // solid 3px (0,0,0)
  RailroadTies,        // dashed 1px (255,255,255), drawn over RailroadBase
  Trail,               // dashed 1px (0,0,0); also ferries
  Street,              // solid 1px (255,0,0)
  MainRoad,            // solid 2px (255,0,0)
  PrincipalHighway,    // solid 3px (230,0,0)
  HighwayCasing,       // solid 4px (100,50,50)
  HighwayInner,        // solid 2px (196,100,66), drawn over HighwayCasing
  Default,             // dashed 1px (255,0,0): lines of unknown type, pipelines, power lines
  Count
};

// Label styles: a font and a text colour. A = the map label font (areas and lines, also
// rotated along lines); P12..P18 = the point label fonts of that pixel height.
enum class LabelId : uint8_t {
  None,       // no style of its own: the kind's default applies
  ABlack,     // font A, (0,0,0)
  ANavy,      // font A, (0,0,128): water areas
  ABlue,      // font A, (0,0,255): streams and rivers
  AGreen,     // font A, (0,200,100): borders
  ABrown,     // font A, (137,80,24): land contours
  ACyan,      // font A, (0,255,255): depth contours
  P12Black,   // point font 12, (0,0,0)
  P12Grey,    // point font 12, (96,96,96): the default point label style
  P12Cyan,    // point font 12, (0,255,255): depth spots
  P12Brown,   // point font 12, (137,80,24): elevation spots
  P14Black,   // point font 14, (0,0,0)
  P16Black,   // point font 16, (0,0,0)
  P18Black,   // point font 18, (0,0,0)
  Count
};

enum class FillKind : uint8_t { None, Solid, Pattern };

// A polygon fill: a solid colour (value = 0xRRGGBB) or a pattern bitmap (value = 116..122).
struct FillRef {
  FillKind kind = FillKind::None;
  uint32_t value = 0;
};

struct TypeStyle {
  uint16_t key = 0;       // polygons, lines: the Garmin type; points: type << 8 | subtype
  uint16_t rangeEnd = 0;  // 0: the row covers its key alone; else key..rangeEnd inclusive
  const char* name = "";  // English
  FillRef fill;           // polygons
  PenId pen = PenId::None;        // lines: main pen
  PenId secondPen = PenId::None;  // lines: drawn over the main pen
  uint16_t icon = 0;      // points: icon id (1000..1225), 0 = none
  LabelId label = LabelId::None;
};

}  // namespace orvel
