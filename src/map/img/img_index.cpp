#include "map/img/img_index.h"

#include <algorithm>
#include <array>

#include "map/format/byte_reader.h"
#include "geo/units.h"

namespace orvel {
namespace {

bool readRecord(ByteReader& r, bool withChild, ImgSubdivision& s) {
  uint16_t halfWidth = 0;
  uint16_t child = 0;
  const bool ok = r.u24le(s.rgnOffset) && r.u8(s.flags) && r.u24le(s.centreX) && r.u24le(s.centreY) &&
                  r.u16le(halfWidth) && r.u16le(s.halfHeight) && (!withChild || r.u16le(child));
  s.halfWidth = static_cast<uint16_t>(halfWidth & 0x7FFF);  // bit 15 marks the last subdivision
  return ok;
}

// v << shift in 32-bit wrap-around arithmetic, v given as a signed or unsigned 16-bit value.
uint32_t shifted(int32_t v, unsigned shift) { return static_cast<uint32_t>(v) << shift; }

int32_t add(int32_t a, uint32_t b) { return static_cast<int32_t>(static_cast<uint32_t>(a) + b); }
int32_t sub(int32_t a, uint32_t b) { return static_cast<int32_t>(static_cast<uint32_t>(a) - b); }

}  // namespace

bool readImgSubdivisions(std::span<const uint8_t> section, std::span<const ImgLevel> levels,
                         std::span<ImgSubdivision> out) {
  uint64_t upper = 0;  // entries of all levels but the last
  for (size_t i = 0; i + 1 < levels.size(); ++i) upper += levels[i].subdivisions;
  if (upper > out.size() || upper * kImgSubdivisionRecord > section.size()) return false;

  ByteReader r(section);
  size_t index = 0;
  for (; index < upper; ++index) readRecord(r, true, out[index]);
  while (index < out.size() && r.pos() + kImgLastLevelRecord < section.size()) {
    readRecord(r, false, out[index++]);
  }
  return true;
}

void placeImgSubdivisions(std::span<const ImgLevel> levels, std::span<ImgSubdivision> subdivisions) {
  size_t index = 0;
  for (size_t level = 0; level < levels.size(); ++level) {
    const unsigned shift = 24u - levels[level].bits;
    for (unsigned k = 0; k < levels[level].subdivisions && index < subdivisions.size(); ++k, ++index) {
      ImgSubdivision& s = subdivisions[index];
      s.level = static_cast<uint16_t>(level);
      s.shift = static_cast<uint8_t>(shift);
      const int32_t cx = signExtend24(s.centreX);
      const int32_t cy = signExtend24(s.centreY);
      const uint32_t halfWidth = shifted(static_cast<int16_t>(s.halfWidth), shift);
      // The half-height is signed when added and unsigned when subtracted: a value of
      // 0x8000 or more moves the north edge below the centre but the south edge far down.
      s.bounds.west = sub(cx, halfWidth);
      s.bounds.east = add(cx, halfWidth);
      s.bounds.south = sub(cy, shifted(s.halfHeight, shift));
      s.bounds.north = add(cy, shifted(static_cast<int16_t>(s.halfHeight), shift));
    }
  }
}

void findImgSections(std::span<const uint8_t> rgnData, std::span<ImgSubdivision> subdivisions) {
  static constexpr std::array<uint8_t, 4> kFlags{kImgFlagPoints, kImgFlagIndexedPoints, kImgFlagPolylines,
                                                 kImgFlagPolygons};
  const uint64_t rgnLength = rgnData.size();

  for (size_t i = 0; i < subdivisions.size(); ++i) {
    ImgSubdivision& s = subdivisions[i];
    std::array<int, 4> present{};
    size_t n = 0;
    for (int section = 0; section < 4; ++section) {
      if (s.flags & kFlags[static_cast<size_t>(section)]) present[n++] = section;
    }
    if (n == 0) continue;

    // A table of n - 1 offsets, one for each section after the first, precedes the data.
    const uint64_t table = s.rgnOffset;
    std::array<uint64_t, 5> starts{};
    starts[0] = table + 2 * (n - 1);
    if (starts[0] > rgnLength) continue;
    ByteReader r(rgnData, static_cast<size_t>(table));
    for (size_t j = 1; j < n; ++j) {
      uint16_t offset = 0;
      r.u16le(offset);  // cannot fail: the table lies inside the RGN data
      starts[j] = table + offset;
    }
    starts[n] = i + 1 < subdivisions.size() ? uint64_t{subdivisions[i + 1].rgnOffset} : rgnLength;

    for (size_t j = 0; j < n; ++j) {
      const uint64_t start = starts[j];
      const uint64_t end = std::min(starts[j + 1], rgnLength);
      if (start > rgnLength || end < start) continue;  // stays absent
      const auto section = static_cast<size_t>(present[j]);
      s.sectionStart[section] = static_cast<uint32_t>(start);
      s.sectionLength[section] = static_cast<uint32_t>(end - start);
    }
  }
}

}  // namespace orvel
