#include "map/img/img_tile.h"

#include <algorithm>
#include <new>

#include "map/format/byte_reader.h"
#include "map/img/img_index.h"

namespace orvel {
namespace {

// TRE header.
constexpr size_t kTreFlags = 0x0D;
constexpr uint8_t kTreEncrypted = 0x80;
constexpr size_t kTreNorth = 0x15;
constexpr size_t kTreEast = 0x18;
constexpr size_t kTreSouth = 0x1B;
constexpr size_t kTreWest = 0x1E;
constexpr size_t kTreLevels = 0x21;
constexpr size_t kTreSubdivisions = 0x29;
constexpr size_t kTreHeaderUsed = 0x31;
constexpr size_t kLevelRecord = 4;

// RGN header.
constexpr size_t kRgnData = 0x15;
constexpr size_t kRgnHeaderUsed = 0x1D;

// LBL header.
constexpr size_t kLblHeaderLength = 0x00;
constexpr size_t kLblData = 0x15;
constexpr size_t kLblShift = 0x1D;
constexpr size_t kLblCoding = 0x1E;
constexpr size_t kLblPoiProperties = 0x57;
constexpr size_t kLblHeaderUsed = 0x5F;
constexpr size_t kLblCodePage = 0xAA;
constexpr uint16_t kLblHeaderWithCodePage = 172;

// NET header.
constexpr size_t kNetRoads = 0x15;
constexpr size_t kNetHeaderUsed = 0x19;

// A header of `used` bytes at `offset` lies wholly inside the file.
bool headerInside(Bytes file, uint32_t offset, size_t used) { return uint64_t{offset} + used <= file.size(); }

// The area of `length` bytes at `base + offset`, if it lies wholly inside the file.
bool areaInside(Bytes file, uint64_t base, uint32_t offset, uint32_t length, Bytes& out) {
  const uint64_t start = base + offset;
  if (start + length > file.size()) return false;
  out = file.subspan(static_cast<size_t>(start), length);
  return true;
}

// An offset/length pair of a header, and the area it names inside the file.
bool headerArea(Bytes file, uint32_t headerAt, size_t field, Bytes& out) {
  uint32_t offset = 0;
  uint32_t length = 0;
  return readU32At(file, headerAt + field, offset) && readU32At(file, headerAt + field + 4, length) &&
         areaInside(file, headerAt, offset, length, out);
}

}  // namespace

size_t ImgTile::subdivisionCount() const {
  size_t count = 0;
  for (const ImgLevel& level : levels_) count += level.subdivisions;
  return count;
}

ImgTileStatus ImgTile::loadHeader(Bytes file) {
  const uint32_t tre = subfiles_[kSubfileTre].offset;

  // Bounds, then the encryption flag.
  if (!headerInside(file, tre, kTreHeaderUsed)) return ImgTileStatus::kUnsupported;
  uint32_t north = 0, east = 0, south = 0, west = 0;
  uint8_t treFlags = 0;
  readU24At(file, tre + kTreNorth, north);
  readU24At(file, tre + kTreEast, east);
  readU24At(file, tre + kTreSouth, south);
  readU24At(file, tre + kTreWest, west);
  readU8At(file, tre + kTreFlags, treFlags);
  bounds_ = MapRect{signExtend24(west), signExtend24(south), signExtend24(east), signExtend24(north)};
  if (treFlags & kTreEncrypted) return ImgTileStatus::kEncrypted;

  Bytes levelSection;
  if (!headerArea(file, tre, kTreLevels, levelSection) ||
      !headerArea(file, tre, kTreSubdivisions, subdivisionSection_)) {
    return ImgTileStatus::kUnsupported;
  }
  const size_t levelCount = levelSection.size() / kLevelRecord;
  try {
    levels_.resize(levelCount);
  } catch (const std::bad_alloc&) {
    return ImgTileStatus::kNoMemory;
  }
  for (size_t i = 0; i < levelCount; ++i) {
    const auto record = levelSection.subspan(i * kLevelRecord, kLevelRecord);
    ImgLevel& level = levels_[i];
    level.inherited = (record[0] & 0x80) != 0;
    level.zoom = static_cast<uint8_t>(record[0] & 0x7F);
    level.bits = record[1];
    level.subdivisions = static_cast<uint16_t>(record[2] | record[3] << 8);
    // Shifts of 24 - bits must stay within 0..23 for every later computation.
    if (level.bits < 1 || level.bits > 24) return ImgTileStatus::kUnsupported;
  }
  return ImgTileStatus::kOk;
}

ImgTileStatus ImgTile::loadIndex(Bytes file) {
  const uint32_t rgn = subfiles_[kSubfileRgn].offset;
  const uint32_t lbl = subfiles_[kSubfileLbl].offset;

  try {
    subdivisions_.resize(subdivisionCount());
  } catch (const std::bad_alloc&) {
    return ImgTileStatus::kNoMemory;
  }
  if (!readImgSubdivisions(subdivisionSection_, levels_, subdivisions_)) return ImgTileStatus::kUnsupported;
  placeImgSubdivisions(levels_, subdivisions_);

  if (!headerInside(file, rgn, kRgnHeaderUsed) || !headerArea(file, rgn, kRgnData, rgnData_)) {
    return ImgTileStatus::kUnsupported;
  }
  findImgSections(rgnData_, subdivisions_);

  // Labels.
  if (!headerInside(file, lbl, kLblHeaderUsed)) return ImgTileStatus::kUnsupported;
  uint16_t lblHeaderLength = 0;
  readU16At(file, lbl + kLblHeaderLength, lblHeaderLength);
  readU8At(file, lbl + kLblShift, labelShift_);
  readU8At(file, lbl + kLblCoding, labelCoding_);
  codePage_ = 0;
  if (lblHeaderLength >= kLblHeaderWithCodePage && !readU16At(file, lbl + kLblCodePage, codePage_)) {
    return ImgTileStatus::kUnsupported;
  }
  switch (labelCoding_) {
    case 6: labelSchema_ = LabelSchema::SixBit; break;
    case 9: labelSchema_ = LabelSchema::Byte; break;
    case 10: labelSchema_ = LabelSchema::Coding10; break;
    default: return ImgTileStatus::kBadLabelCoding;
  }
  if (!headerArea(file, lbl, kLblData, labelData_)) return ImgTileStatus::kUnsupported;
  uint32_t poiOffset = 0;
  uint32_t poiLength = 0;
  readU32At(file, lbl + kLblPoiProperties, poiOffset);
  readU32At(file, lbl + kLblPoiProperties + 4, poiLength);
  if (poiLength != 0 && !areaInside(file, lbl, poiOffset, poiLength, poiProperties_)) {
    return ImgTileStatus::kUnsupported;
  }

  // Road data: from its offset to the end of NET (as far as the file goes).
  if (hasNet()) {
    const ImgSubfile& net = subfiles_[kSubfileNet];
    if (!headerInside(file, net.offset, kNetHeaderUsed)) return ImgTileStatus::kUnsupported;
    uint32_t roads = 0;
    readU32At(file, net.offset + kNetRoads, roads);
    const uint64_t start = uint64_t{net.offset} + roads;
    const uint64_t end = std::min<uint64_t>(uint64_t{net.offset} + net.size, file.size());
    if (start < end) netData_ = file.subspan(static_cast<size_t>(start), static_cast<size_t>(end - start));
  }
  state_ = State::kIndexed;
  return ImgTileStatus::kOk;
}

}  // namespace orvel
