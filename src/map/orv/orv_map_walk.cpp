// Walking the object data of one level: blocks, their sections, and the objects in them.
#include <algorithm>

#include "map/format/byte_reader.h"
#include "map/catalogue/catalogue.h"
#include "map/orv/orv_map_file.h"

namespace orvel {
namespace {

OrvTable typeTable(ObjectKind kind) {
  switch (kind) {
    case ObjectKind::Polygon: return kTableAreaTypes;
    case ObjectKind::Line: return kTableLineTypes;
    case ObjectKind::Point: break;
  }
  return kTablePointTypes;
}

// Level coordinates to map units; wraps like the 32-bit arithmetic it stands for.
int32_t toUnits(uint32_t value, unsigned shift) { return static_cast<int32_t>(value << shift); }

}  // namespace

void OrvMapFile::decode(const MapView& view, const MapRect& visible, ObjectConsumer& consumer) {
  decodeLevel(chooseLevel(view.zoomLevel()), visible, consumer);
}

bool OrvMapFile::isDrawn(const MapObject& object) const {
  switch (object.kind) {
    case ObjectKind::Polygon: return isDrawnPolygonType(object.type) && object.points.size() >= kOrvMinDrawnPoints;
    case ObjectKind::Line: return object.points.size() >= kOrvMinDrawnPoints;
    case ObjectKind::Point: return true;
  }
  return false;
}

void OrvMapFile::decodeLevel(int levelIndex, const MapRect& visible, ObjectConsumer& consumer) {
  OrvLevel entry;
  if (levelIndex < 0 || !level(static_cast<uint32_t>(levelIndex), entry)) return;
  walkPass(entry, visible, ObjectKind::Polygon, consumer);
  walkPass(entry, visible, ObjectKind::Line, consumer);
  walkPass(entry, visible, ObjectKind::Point, consumer);
}

void OrvMapFile::walkPass(const OrvLevel& level, const MapRect& visible, ObjectKind pass,
                          ObjectConsumer& consumer) {
  const unsigned shift = static_cast<unsigned>(24 - int{level.bits}) & 31u;
  size_t pos = level.firstBlock;
  for (uint32_t k = 0; k < level.blockCount; ++k) {
    if (pos > file_.size() || file_.size() - pos < kOrvBlockHeaderSize) return;
    ByteReader reader(file_, pos);
    uint32_t x = 0, y = 0, word = 0;
    uint16_t w = 0, h = 0;
    if (!(reader.u32le(x) && reader.u32le(y) && reader.u16le(w) && reader.u16le(h) && reader.u32le(word))) return;

    // Section lengths of 0 to 3 bytes each: areas, lines, points.
    uint32_t lengths[3] = {0, 0, 0};
    bool complete = true;
    for (int i = 0; i < 3 && complete; ++i) {
      const unsigned count = (word >> (24 + 2 * i)) & 3u;
      for (unsigned j = 0; j < count && complete; ++j) {
        uint8_t byte = 0;
        complete = reader.u8(byte);
        lengths[i] |= uint32_t{byte} << (8 * j);
      }
    }
    if (!complete) return;
    pos = reader.pos();

    MapRect box;
    box.west = toUnits(x, shift);
    box.south = toUnits(y, shift);
    box.east = static_cast<int32_t>(static_cast<uint32_t>(box.west) + (uint32_t{w} << shift));
    box.north = static_cast<int32_t>(static_cast<uint32_t>(box.south) + (uint32_t{h} << shift));
    if (!intersects(box, visible)) continue;

    uint64_t start = word & kOrvDataOffsetMask;
    const int section = pass == ObjectKind::Polygon ? 0 : pass == ObjectKind::Line ? 1 : 2;
    for (int i = 0; i < section; ++i) start += lengths[i];
    const uint64_t end = std::min<uint64_t>(start + lengths[section], file_.size());
    if (start >= end) continue;
    walkSection(static_cast<size_t>(start), static_cast<size_t>(end), x, y, bitWidth(w), bitWidth(h), shift, pass,
                consumer);
  }
}

void OrvMapFile::walkSection(size_t start, size_t end, uint32_t blockX, uint32_t blockY, unsigned xBits,
                             unsigned yBits, unsigned shift, ObjectKind pass, ObjectConsumer& consumer) {
  const OrvLookupTable& types = tables_[typeTable(pass)];
  const OrvLookupTable& counts = tables_[kTablePointCount];
  const OrvLookupTable& deltaX = tables_[kTableDeltaX];
  const OrvLookupTable& deltaY = tables_[kTableDeltaY];
  if (mapPoints_.empty()) return;  // not loaded
  size_t pos = start;
  while (pos < end) {
    OrvBitReader reader(file_, pos);
    uint32_t labelRef = 0;
    const uint32_t selector = reader.readBits(2);
    if (selector == kLabelInlineA || selector == kLabelInlineB) {
      labelRef = static_cast<uint32_t>(pos);
      readLabelText(reader, selector == kLabelInlineA, nullptr, end);
    } else if (selector == kLabelShared) {
      const uint64_t at = uint64_t{sharedLabels_} + reader.readBits(sharedIndexBits_);
      if (at >= file_.size()) return;  // the rest of the section cannot be trusted
      labelRef = static_cast<uint32_t>(at);
    }
    if (reader.nextByte() > end) return;
    const uint32_t type = types.decode(reader);
    uint32_t x = blockX + reader.readBits(xBits);
    uint32_t y = blockY + reader.readBits(yBits);
    size_t n = 1;
    mapPoints_[0] = MapPoint{toUnits(x, shift), toUnits(y, shift)};
    if (pass != ObjectKind::Point) {
      n = std::min<size_t>(size_t{counts.decode(reader)} + 1, mapPoints_.size());
      for (size_t i = 1; i < n; ++i) {
        if (reader.nextByte() > end) return;
        const uint64_t before = reader.bitPosition();
        const uint32_t dx = uint32_t{deltaX.decode(reader)} - static_cast<uint32_t>(biasX_);
        const uint32_t dy = uint32_t{deltaY.decode(reader)} - static_cast<uint32_t>(biasY_);
        if (reader.bitPosition() == before) {
          // A step that takes no bits is every remaining step: the rest of the object is one
          // straight run, kept as its far end. Reading them one by one costs up to 65536
          // points for each byte of a damaged section.
          const auto steps = static_cast<uint32_t>(n - i);
          mapPoints_[i] = MapPoint{toUnits(x + dx * steps, shift), toUnits(y + dy * steps, shift)};
          n = i + 1;
          break;
        }
        x += dx;
        y += dy;
        mapPoints_[i] = MapPoint{toUnits(x, shift), toUnits(y, shift)};
      }
      if (pass == ObjectKind::Line) reader.readBit();  // carried, never used
    }
    if (reader.nextByte() > end) return;
    consumer.onObject(MapObject{pass, type, std::span<const MapPoint>(mapPoints_.data(), n), labelRef});
    pos = reader.nextByte();
  }
}

}  // namespace orvel
