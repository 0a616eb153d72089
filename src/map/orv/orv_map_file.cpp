#include "map/orv/orv_map_file.h"

#include <cstring>

#include "map/format/byte_reader.h"

namespace orvel {
namespace {

uint32_t u32At(Bytes file, size_t offset) {
  uint32_t value = 0;
  readU32At(file, offset, value);
  return value;
}

}  // namespace

bool OrvMapFile::probe(Bytes file) {
  return file.size() >= kOrvMinSize && std::memcmp(file.data(), "GORV", 4) == 0 &&
         u32At(file, kOrvVersionAt) == kOrvVersion && u32At(file, kOrvFileSizeAt) == file.size();
}

bool OrvMapFile::load(Bytes file) {
  file_ = file;
  // Boundaries are stored in 1/256 map units.
  bounds_.west = static_cast<int32_t>(u32At(file, kOrvBoundsAt)) >> 8;
  bounds_.south = static_cast<int32_t>(u32At(file, kOrvBoundsAt + 4)) >> 8;
  bounds_.east = static_cast<int32_t>(u32At(file, kOrvBoundsAt + 8)) >> 8;
  bounds_.north = static_cast<int32_t>(u32At(file, kOrvBoundsAt + 12)) >> 8;
  sharedLabels_ = u32At(file, kOrvSharedLabelsAt);
  sharedIndexBits_ = u32At(file, kOrvSharedIndexBitsAt);
  levelTable_ = u32At(file, kOrvLevelTableAt);
  levelCount_ = u32At(file, kOrvLevelCountAt);
  biasX_ = static_cast<int32_t>(u32At(file, kOrvBiasXAt));
  biasY_ = static_cast<int32_t>(u32At(file, kOrvBiasYAt));

  size_t pos = u32At(file, kOrvCodeTablesAt);
  size_t childBudget = OrvLookupTable::kMaxChildTables;
  for (OrvLookupTable& table : tables_) pos = table.build(file, pos, childBudget);

  const size_t maxPoints = size_t{tables_[kTablePointCount].largestSymbol()} + 1;
  mapPoints_.assign(maxPoints, MapPoint{});
  return true;
}

int OrvMapFile::readLabelText(OrvBitReader& reader, bool setA, char16_t* out, size_t end) const {
  const OrvLookupTable& lengths = tables_[setA ? kTableLengthsA : kTableLengthsB];
  const OrvLookupTable& chars = tables_[setA ? kTableCharsA : kTableCharsB];
  const uint32_t length = lengths.decode(reader);
  int kept = 0;
  auto keep = [&](uint16_t symbol) {
    if (symbol < 32 || kept >= kOrvLabelMax) return;
    if (out) out[kept] = static_cast<char16_t>(symbol);
    ++kept;
  };
  for (uint32_t i = 0; i < length; ++i) {
    if (reader.nextByte() > end) break;  // past the data it may take
    // The text is never read further than a label's most characters, all kept ones in any
    // file the converter writes; a longer one is damaged, and each object naming it would
    // read it again. Skipping a label must still reach its end.
    if (out != nullptr && i >= static_cast<uint32_t>(kOrvLabelMax)) break;
    const uint64_t before = reader.bitPosition();
    const uint16_t symbol = chars.decode(reader);
    keep(symbol);
    if (reader.bitPosition() == before) {
      // A code of no bits: every further character is this one again, from the same place.
      for (++i; i < length && kept < kOrvLabelMax && symbol >= 32; ++i) keep(symbol);
      break;
    }
  }
  return kept;
}

int OrvMapFile::getLabel(uint32_t labelRef, char16_t* out) {
  out[0] = 0;
  if (labelRef >= file_.size()) return 0;
  OrvBitReader reader(file_, labelRef);
  const uint32_t selector = reader.readBits(2);
  const int length = readLabelText(reader, selector == kLabelInlineA, out, file_.size());
  out[length] = 0;
  return length;
}

bool OrvMapFile::level(uint32_t index, OrvLevel& out) const {
  const uint64_t at = uint64_t{levelTable_} + uint64_t{index} * kOrvLevelEntrySize;
  if (index >= levelCount_ || at + kOrvLevelEntrySize > file_.size()) return false;
  ByteReader reader(file_, static_cast<size_t>(at));
  return reader.u32le(out.firstBlock) && reader.u16le(out.blockCount) && reader.u16le(out.bits);
}

int OrvMapFile::chooseLevel(int32_t zoomLevel) const {
  if (levelCount_ == 0) return -1;
  int chosen = 0;
  OrvLevel entry;
  for (uint32_t i = 0; i < levelCount_ && level(i, entry); ++i) {
    if (int32_t{entry.bits} <= zoomLevel) chosen = static_cast<int>(i);
  }
  return chosen;
}

}  // namespace orvel
