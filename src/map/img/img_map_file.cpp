#include "map/img/img_map_file.h"

#include <algorithm>
#include <new>

#include "app/core/message.h"
#include "map/img/byte_reader.h"
#include "map/img/img_container.h"
#include "map/img/img_index.h"

namespace orvel {
namespace {

constexpr const char* kUnsupported = "Не поддерживаемый формат файла либо файл поврежден.";
constexpr const char* kEncrypted = "Карта зашифрована.\n (ПРИМЕЧАНИЕ: Зашифрованные карты не поддерживаются.)";
constexpr const char* kNoMemory = "Не достаточно свободной памяти.";

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

bool refuse() {
  showMessage("%s", kUnsupported);
  return false;
}

}  // namespace

ImgMapFile::ImgMapFile() = default;
ImgMapFile::~ImgMapFile() = default;

bool ImgMapFile::probe(Bytes file) { return isImgContainer(file); }

bool ImgMapFile::load(Bytes file) {
  if (file.size() < 22) return refuse();

  // A non-zero key scrambles every byte, the header included: work on a descrambled copy.
  xorKey_ = imgXorKey(file);
  if (xorKey_ == 0) {
    file_ = file;
  } else {
    try {
      copy_.assign(file.begin(), file.end());
    } catch (const std::bad_alloc&) {
      showMessage("%s", kNoMemory);
      return false;
    }
    for (uint8_t& byte : copy_) byte ^= xorKey_;
    file_ = copy_;
  }

  const ImgDirectory dir = scanImgDirectory(file_);
  blockSize_ = dir.blockSize;
  tileName_ = dir.tileName;
  for (size_t i = 0; i < dir.subfiles.size(); ++i) subfileOffsets_[i] = dir.subfiles[i].offset;
  if (!dir.subfiles[kSubfileTre].found || !dir.subfiles[kSubfileRgn].found || !dir.subfiles[kSubfileLbl].found) {
    return refuse();
  }
  const uint32_t tre = dir.subfiles[kSubfileTre].offset;
  const uint32_t rgn = dir.subfiles[kSubfileRgn].offset;
  const uint32_t lbl = dir.subfiles[kSubfileLbl].offset;

  // Bounds, then the encryption flag.
  if (!headerInside(file_, tre, kTreHeaderUsed)) return refuse();
  uint32_t north = 0, east = 0, south = 0, west = 0;
  uint8_t treFlags = 0;
  readU24At(file_, tre + kTreNorth, north);
  readU24At(file_, tre + kTreEast, east);
  readU24At(file_, tre + kTreSouth, south);
  readU24At(file_, tre + kTreWest, west);
  readU8At(file_, tre + kTreFlags, treFlags);
  bounds_ = MapRect{signExtend24(west), signExtend24(south), signExtend24(east), signExtend24(north)};
  if (treFlags & kTreEncrypted) {
    showMessage("%s", kEncrypted);
    return false;
  }

  // Levels and the subdivision index.
  Bytes levelSection;
  Bytes subdivisionSection;
  if (!headerArea(file_, tre, kTreLevels, levelSection) ||
      !headerArea(file_, tre, kTreSubdivisions, subdivisionSection)) {
    return refuse();
  }
  const size_t levelCount = levelSection.size() / kLevelRecord;
  size_t subdivisionCount = 0;
  try {
    levels_.resize(levelCount);
  } catch (const std::bad_alloc&) {
    showMessage("%s", kNoMemory);
    return false;
  }
  for (size_t i = 0; i < levelCount; ++i) {
    const auto record = levelSection.subspan(i * kLevelRecord, kLevelRecord);
    ImgLevel& level = levels_[i];
    level.inherited = (record[0] & 0x80) != 0;
    level.zoom = static_cast<uint8_t>(record[0] & 0x7F);
    level.bits = record[1];
    level.subdivisions = static_cast<uint16_t>(record[2] | record[3] << 8);
    // Shifts of 24 - bits must stay within 0..23 for every later computation.
    if (level.bits < 1 || level.bits > 24) return refuse();
    subdivisionCount += level.subdivisions;
  }
  try {
    subdivisions_.resize(subdivisionCount);
  } catch (const std::bad_alloc&) {
    showMessage("%s", kNoMemory);
    return false;
  }
  if (!readImgSubdivisions(subdivisionSection, levels_, subdivisions_)) return refuse();
  placeImgSubdivisions(levels_, subdivisions_);

  if (!headerInside(file_, rgn, kRgnHeaderUsed) || !headerArea(file_, rgn, kRgnData, rgnData_)) return refuse();
  findImgSections(rgnData_, subdivisions_);

  // Labels.
  if (!headerInside(file_, lbl, kLblHeaderUsed)) return refuse();
  uint16_t lblHeaderLength = 0;
  readU16At(file_, lbl + kLblHeaderLength, lblHeaderLength);
  readU8At(file_, lbl + kLblShift, labelShift_);
  readU8At(file_, lbl + kLblCoding, labelCoding_);
  codePage_ = 0;
  if (lblHeaderLength >= kLblHeaderWithCodePage && !readU16At(file_, lbl + kLblCodePage, codePage_)) {
    return refuse();
  }
  switch (labelCoding_) {
    case 6: labelSchema_ = LabelSchema::SixBit; break;
    case 9: labelSchema_ = LabelSchema::Byte; break;
    case 10: labelSchema_ = LabelSchema::Coding10; break;
    default:
      showMessage("Unsupported label code schema: %d", labelCoding_);
      return false;
  }
  if (!headerArea(file_, lbl, kLblData, labelData_)) return refuse();
  uint32_t poiOffset = 0;
  uint32_t poiLength = 0;
  readU32At(file_, lbl + kLblPoiProperties, poiOffset);
  readU32At(file_, lbl + kLblPoiProperties + 4, poiLength);
  if (poiLength != 0 && !areaInside(file_, lbl, poiOffset, poiLength, poiProperties_)) return refuse();

  // Road data: from its offset to the end of NET (as far as the file goes).
  hasNet_ = dir.subfiles[kSubfileNet].found;
  if (hasNet_) {
    const ImgSubfile& net = dir.subfiles[kSubfileNet];
    if (!headerInside(file_, net.offset, kNetHeaderUsed)) return refuse();
    uint32_t roads = 0;
    readU32At(file_, net.offset + kNetRoads, roads);
    const uint64_t start = uint64_t{net.offset} + roads;
    const uint64_t end = std::min<uint64_t>(uint64_t{net.offset} + net.size, file_.size());
    if (start < end) netData_ = file_.subspan(static_cast<size_t>(start), static_cast<size_t>(end - start));
  }
  return true;
}

}  // namespace orvel
