#include "map/img/rgn_decoder.h"

#include <cstdint>

#include "map/catalogue/catalogue.h"
#include "map/img/rgn_stream.h"

namespace orvel {
namespace {

// Every read below is preceded by a check that the whole record lies inside `bytes`.
uint32_t u16(Bytes bytes, size_t at) { return bytes[at] | (bytes[at + 1] << 8); }
uint32_t u24(Bytes bytes, size_t at) { return u16(bytes, at) | (static_cast<uint32_t>(bytes[at + 2]) << 16); }

// The span from `part` to the end of `file`; empty when `part` is empty or lies elsewhere.
Bytes runToFileEnd(Bytes file, Bytes part) {
  if (part.empty()) return {};
  const auto fileStart = reinterpret_cast<uintptr_t>(file.data());
  const auto partStart = reinterpret_cast<uintptr_t>(part.data());
  if (partStart < fileStart || partStart - fileStart >= file.size()) return {};
  return file.subspan(partStart - fileStart);
}

// A position given as a signed 16-bit offset from the subdivision centre, in units of
// 2^shift. Unsigned arithmetic: a damaged index must wrap, not overflow.
MapPoint objectPoint(const ImgSubdivision& sub, uint32_t offsetX, uint32_t offsetY) {
  const unsigned shift = sub.shift & 31u;
  const auto dx = static_cast<uint32_t>(static_cast<int32_t>(static_cast<int16_t>(offsetX))) << shift;
  const auto dy = static_cast<uint32_t>(static_cast<int32_t>(static_cast<int16_t>(offsetY))) << shift;
  return MapPoint{static_cast<int32_t>(static_cast<uint32_t>(signExtend24(sub.centreX)) + dx),
                  static_cast<int32_t>(static_cast<uint32_t>(signExtend24(sub.centreY)) + dy)};
}

// The section's bytes, cut at the end of the RGN data; empty when absent.
Bytes sectionBytes(const ImgDecodeInput& in, const ImgSubdivision& sub, ImgSection section) {
  const uint32_t start = sub.sectionStart[section];
  const uint32_t length = sub.sectionLength[section];
  if (start == kNoSection || length == kNoSection || start >= in.rgnData.size()) return {};
  const size_t available = in.rgnData.size() - start;
  return in.rgnData.subspan(start, length < available ? length : available);
}

// Resolves an indirect label: the low 22 bits of the 3 bytes at `offset` in `data`, when
// at least `tail` bytes run from there to the end. False when refused.
bool indirectLabel(Bytes data, uint32_t offset, size_t tail, uint32_t& ref) {
  if (offset > data.size() || data.size() - offset < tail) return false;
  ref = u24(data, offset) & kLabelRefMask;
  return true;
}

int decodePolyRecords(const ImgDecodeInput& in, const ImgSubdivision& sub, Bytes bytes, bool lines,
                      ObjectConsumer& consumer) {
  MapPoint points[kMaxObjectPoints];
  int count = 0;
  size_t pos = 0;
  while (pos < bytes.size()) {
    const uint8_t head = bytes[pos];
    const bool longLength = (head & 0x80) != 0;
    const size_t headerSize = longLength ? 11 : 10;
    if (bytes.size() - pos < headerSize) break;
    const uint32_t label = u24(bytes, pos + 1);
    const uint32_t streamLength = longLength ? u16(bytes, pos + 8) : bytes[pos + 8];
    const uint8_t bitSizes = bytes[pos + headerSize - 1];
    if (bytes.size() - pos - headerSize < streamLength) break;

    uint32_t labelRef = label & kLabelRefMask;
    if ((label & kLineNetLabel) && !in.netData.empty() &&
        !indirectLabel(in.netData, label & kLabelRefMask, kNetLabelTail, labelRef)) {
      break;
    }
    const MapPoint first = objectPoint(sub, u16(bytes, pos + 4), u16(bytes, pos + 6));
    const bool extraBit = lines && (label & kLineExtraBit) != 0;
    const int n = decodePolyStream(bytes.subspan(pos + headerSize, streamLength), first, sub.shift,
                                   bitSizes, extraBit, points);
    const uint32_t type = head & (lines ? 0x3F : 0x7F);
    consumer.onObject(MapObject{lines ? ObjectKind::Line : ObjectKind::Polygon, type,
                                std::span<const MapPoint>(points, static_cast<size_t>(n)), labelRef});
    ++count;
    pos += headerSize + streamLength;
  }
  return count;
}

int decodePointRecords(const ImgDecodeInput& in, const ImgSubdivision& sub, Bytes bytes,
                       ObjectConsumer& consumer) {
  int count = 0;
  size_t pos = 0;
  while (bytes.size() - pos >= 8) {
    const uint32_t label = u24(bytes, pos + 1);
    size_t recordSize = 8;
    uint32_t subtype = 0;
    if (label & kPointHasSubtype) {
      if (bytes.size() - pos < 9) break;
      subtype = bytes[pos + 8];
      recordSize = 9;
    }
    uint32_t labelRef = label & kLabelRefMask;
    if ((label & kPointPoiLabel) && !in.poiProperties.empty() &&
        !indirectLabel(in.poiProperties, label & kLabelRefMask, kPoiLabelTail, labelRef)) {
      break;
    }
    const MapPoint point = objectPoint(sub, u16(bytes, pos + 4), u16(bytes, pos + 6));
    const uint32_t code = (static_cast<uint32_t>(bytes[pos]) << 8) | subtype;
    consumer.onObject(MapObject{ObjectKind::Point, code, std::span<const MapPoint>(&point, 1), labelRef});
    ++count;
    pos += recordSize;
  }
  return count;
}

}  // namespace

ImgDecodeInput makeImgDecodeInput(const ImgTile& tile, Bytes file) {
  ImgDecodeInput in;
  in.levels = tile.levels();
  in.subdivisions = tile.subdivisions();
  in.rgnData = tile.rgnData();
  in.netData = runToFileEnd(file, tile.netData());
  in.poiProperties = runToFileEnd(file, tile.poiProperties());
  return in;
}

ImgDecodeInput makeImgDecodeInput(const ImgMapFile& map) {
  ImgDecodeInput in;
  in.levels = map.levels();
  in.subdivisions = map.subdivisions();
  in.rgnData = map.rgnData();
  in.netData = runToFileEnd(map.fileBytes(), map.netData());
  in.poiProperties = runToFileEnd(map.fileBytes(), map.poiProperties());
  return in;
}

int selectLevel(std::span<const ImgLevel> levels, int threshold) {
  int chosen = 0;
  for (size_t i = 0; i < levels.size(); ++i) {
    if (levels[i].inherited) {
      chosen = static_cast<int>(i) + 1;
    } else if (levels[i].bits <= threshold) {
      chosen = static_cast<int>(i);
    }
  }
  if (chosen >= static_cast<int>(levels.size())) chosen = static_cast<int>(levels.size()) - 1;
  return chosen;
}

bool isSubdivisionVisible(const ImgSubdivision& sub, const MapRect& visible) {
  return intersects(sub.bounds, visible);
}

int decodeSection(const ImgDecodeInput& in, const ImgSubdivision& sub, ImgSection section,
                  ObjectConsumer& consumer) {
  const Bytes bytes = sectionBytes(in, sub, section);
  if (bytes.empty()) return 0;
  switch (section) {
    case kSectionPolygons: return decodePolyRecords(in, sub, bytes, false, consumer);
    case kSectionPolylines: return decodePolyRecords(in, sub, bytes, true, consumer);
    case kSectionPoints:
    case kSectionIndexedPoints: return decodePointRecords(in, sub, bytes, consumer);
  }
  return 0;
}

void decodeImgLevelPass(const ImgDecodeInput& in, int level, const MapRect& visible, ImgPass pass,
                        ObjectConsumer& consumer) {
  for (const ImgSubdivision& sub : in.subdivisions) {
    if (sub.level != level || !isSubdivisionVisible(sub, visible)) continue;
    switch (pass) {
      case ImgPass::kPolygons: decodeSection(in, sub, kSectionPolygons, consumer); break;
      case ImgPass::kLines: decodeSection(in, sub, kSectionPolylines, consumer); break;
      case ImgPass::kPoints:
        decodeSection(in, sub, kSectionPoints, consumer);
        decodeSection(in, sub, kSectionIndexedPoints, consumer);
        break;
    }
  }
}

void decodeImgLevel(const ImgDecodeInput& in, int level, const MapRect& visible, ObjectConsumer& consumer) {
  for (ImgPass pass : {ImgPass::kPolygons, ImgPass::kLines, ImgPass::kPoints}) {
    decodeImgLevelPass(in, level, visible, pass, consumer);
  }
}

void decodeImgView(const ImgDecodeInput& in, const MapRect& visible, int zoomLevelThreshold,
                   ObjectConsumer& consumer) {
  const int level = selectLevel(in.levels, zoomLevelThreshold);
  if (level >= 0) decodeImgLevel(in, level, visible, consumer);
}

bool isDrawnObject(const MapObject& object) {
  switch (object.kind) {
    case ObjectKind::Polygon:
      return isDrawnPolygonType(object.type) && object.points.size() >= kMinDrawnPolygonPoints;
    case ObjectKind::Line: return object.points.size() >= kMinDrawnLinePoints;
    case ObjectKind::Point: return true;
  }
  return false;
}

}  // namespace orvel
