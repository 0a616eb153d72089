#pragma once
// Layout of an .orv map: header fields, the ten code tables and the records of the level
// table and the blocks. Shared by the reader and the writer.
#include <cstddef>
#include <cstdint>

namespace orvel {

inline constexpr uint32_t kOrvVersion = 2;
inline constexpr size_t kOrvMinSize = 564;
inline constexpr size_t kOrvHeaderSize = kOrvMinSize;

// Header fields (byte offsets, little-endian).
inline constexpr size_t kOrvMagicAt = 0;        // "GORV"
inline constexpr size_t kOrvVersionAt = 4;
inline constexpr size_t kOrvFileSizeAt = 8;
inline constexpr size_t kOrvBoundsAt = 16;      // west, south, east, north; map units x 256
inline constexpr size_t kOrvCodeTablesAt = 428;
inline constexpr size_t kOrvSharedLabelsAt = 432;
inline constexpr size_t kOrvSharedIndexBitsAt = 436;
inline constexpr size_t kOrvLevelTableAt = 440;
inline constexpr size_t kOrvLevelCountAt = 444;
inline constexpr size_t kOrvBiasXAt = 448;
inline constexpr size_t kOrvBiasYAt = 452;

// The code tables, in file order.
enum OrvTable : int {
  kTableCharsA = 0,
  kTableLengthsA = 1,
  kTableCharsB = 2,
  kTableLengthsB = 3,
  kTablePointTypes = 4,
  kTableLineTypes = 5,
  kTableAreaTypes = 6,
  kTableDeltaX = 7,
  kTableDeltaY = 8,
  kTablePointCount = 9,  // points of a line or area minus one
  kOrvTableCount = 10
};

// Two-bit label selectors at the start of an object (first bit is bit 0).
inline constexpr uint32_t kLabelNone = 0;
inline constexpr uint32_t kLabelInlineA = 1;
inline constexpr uint32_t kLabelShared = 2;
inline constexpr uint32_t kLabelInlineB = 3;

inline constexpr size_t kOrvLevelEntrySize = 8;  // first block offset, block count, bits
inline constexpr size_t kOrvBlockHeaderSize = 16;
inline constexpr uint32_t kOrvDataOffsetMask = 0xFFFFFF;  // block word: object data offset

// The label keeps at most this many characters.
inline constexpr int kOrvLabelMax = 255;

// Number of binary digits of v: 0 for 0, 1 for 1, 2 for 2 and 3, ...
constexpr unsigned bitWidth(uint32_t v) {
  unsigned n = 0;
  while (v != 0) {
    ++n;
    v >>= 1;
  }
  return n;
}

}  // namespace orvel
