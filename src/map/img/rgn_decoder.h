#pragma once
// Decoding of the RGN object records of an IMG map into MapObjects for a consumer.
//
// The decoder hands over every record of every subdivision it visits, in drawing order:
// polygons of all visited subdivisions, then their polylines, then their points (for each
// subdivision its points section, then its indexed points section). It does not apply the
// rules that belong to drawing only (never-drawn polygon types, too few points, culling of
// each object by its box and size on screen); drawing applies them with isDrawnObject() and
// pointBounds(), so that a listing of decoded objects shows everything drawing looked at.
//
// Labels: MapObject::labelRef is always a plain reference into the LBL label data (not yet
// multiplied by the label offset shift), 0 for none. The two indirections of the label
// field are resolved here:
//   polygons and polylines, bit 23 set and NET data present: the field's low 22 bits are an
//     offset into the NET road data; the reference is the low 22 bits of the 3 bytes there.
//     Refused when fewer than 20 bytes run from that offset to the end of netData.
//   points, bit 22 set and POI properties present: the same with an offset into the POI
//     properties; refused when fewer than 4 bytes run from there to the end of poiProperties.
//   Otherwise the reference is the field's low 22 bits.
// A refused indirection, like a record header or bit stream that does not fit in its
// section, ends that section; decoding goes on with the next one.
//
// Memory: one scratch buffer of kMaxObjectPoints points per section walk; nothing is
// allocated per object and nothing is kept between calls.
#include <cstdint>
#include <span>

#include "map/img/img_map_file.h"
#include "map/img/img_subdivision.h"
#include "map/format/map_file.h"
#include "geo/units.h"

namespace orvel {

// Label field bits (3 bytes after the type byte).
inline constexpr uint32_t kLabelRefMask = 0x3FFFFF;
inline constexpr uint32_t kLineExtraBit = 0x400000;     // polylines: one extra bit per point
inline constexpr uint32_t kLineNetLabel = 0x800000;     // polygons, polylines: offset into NET
inline constexpr uint32_t kPointPoiLabel = 0x400000;    // points: offset into POI properties
inline constexpr uint32_t kPointHasSubtype = 0x800000;  // points: a subtype byte follows

// Room that must remain from an indirection's offset to the end of its data.
inline constexpr size_t kNetLabelTail = 20;
inline constexpr size_t kPoiLabelTail = 4;

// What decoding needs of a loaded map. All spans are views into the map's bytes.
struct ImgDecodeInput {
  std::span<const ImgLevel> levels;
  std::span<const ImgSubdivision> subdivisions;  // every level, in file order
  Bytes rgnData;                                 // section starts are relative to this
  Bytes netData;        // from the NET road data to the end of the file; empty without NET
  Bytes poiProperties;  // from the POI properties to the end of the file; empty when none
};

// The input for a loaded map. The indirection checks are made against the end of the file,
// so netData and poiProperties run on from their start to the end of the map's bytes.
ImgDecodeInput makeImgDecodeInput(const ImgMapFile& map);
// The same for one tile (indexed) of the map's bytes `file`.
ImgDecodeInput makeImgDecodeInput(const ImgTile& tile, Bytes file);

// The level drawn for a detail threshold (bits per coordinate of the zoom step). Walking the
// levels in file order, starting from 0: an inherited level i makes i + 1 the choice, any
// other level whose bits do not exceed the threshold becomes the choice itself. The result
// is clamped to the last level, so a map of inherited levels only draws its last level.
// -1 when there are no levels.
int selectLevel(std::span<const ImgLevel> levels, int threshold);

// Whether a subdivision's bounds meet the visible area (edges inclusive).
bool isSubdivisionVisible(const ImgSubdivision& sub, const MapRect& visible);

// Decodes one section of one subdivision and returns the number of objects handed over.
int decodeSection(const ImgDecodeInput& in, const ImgSubdivision& sub, ImgSection section,
                  ObjectConsumer& consumer);

// One of the three passes of drawing order: polygons, polylines, points (each subdivision's
// points section, then its indexed points section).
enum class ImgPass : uint8_t { kPolygons, kLines, kPoints };

// One pass over every visible subdivision of one level.
void decodeImgLevelPass(const ImgDecodeInput& in, int level, const MapRect& visible, ImgPass pass,
                        ObjectConsumer& consumer);

// Every visible subdivision of one level, in drawing order.
void decodeImgLevel(const ImgDecodeInput& in, int level, const MapRect& visible, ObjectConsumer& consumer);

// The level selected for zoomLevelThreshold, in drawing order.
void decodeImgView(const ImgDecodeInput& in, const MapRect& visible, int zoomLevelThreshold,
                   ObjectConsumer& consumer);

// The IMG map's own test of what is drawn at all: polygons of the drawn types
// (isDrawnPolygonType) with at least 3 points, lines of at least 2 points, every point.
// Culling against the view is left to drawing.
inline constexpr size_t kMinDrawnPolygonPoints = 3;
inline constexpr size_t kMinDrawnLinePoints = 2;
bool isDrawnObject(const MapObject& object);

}  // namespace orvel
