#pragma once
// The bytes of Tracks.bin: the ring of the last 10000 recorded positions, read and appended
// to in place wherever the bytes are (the file's mapping in the program, a buffer elsewhere).
//
// Exactly 80008 bytes, little-endian: nextIndex (u32, the slot the next point goes to),
// wrapped (u32, 1 once the ring has been filled), then 10000 points of 8 bytes: longitude
// in semicircles (i32) and a word holding the latitude in its low 31 bits with the
// segment-break flag in bit 31.
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "geo/units.h"

namespace orvel {

inline constexpr uint32_t kTrackSlots = 10000;
inline constexpr size_t kTrackFileSize = 8 + 8 * size_t{kTrackSlots};  // 80008
inline constexpr uint32_t kTrackBreakFlag = 0x80000000u;

struct TrackPoint {
  Semicircles lon = 0;
  uint32_t latAndBreak = 0;

  // The low 31 bits, sign-extended from bit 30.
  Semicircles latitude() const { return static_cast<int32_t>(latAndBreak << 1) >> 1; }
  bool startsSegment() const { return (latAndBreak & kTrackBreakFlag) != 0; }
  friend bool operator==(const TrackPoint&, const TrackPoint&) = default;
};

using TrackRing = std::span<uint8_t, kTrackFileSize>;
using ConstTrackRing = std::span<const uint8_t, kTrackFileSize>;

// The valid slots, oldest first: [wrappedFrom, kTrackSlots) then [0, end).
struct TrackRingRange {
  uint32_t wrappedFrom = kTrackSlots;  // kTrackSlots: nothing before the wrap
  uint32_t end = 0;
};

// False when the header cannot have been written by us; the ring then counts as empty.
bool trackRingRange(ConstTrackRing ring, TrackRingRange& range);
TrackPoint trackRingSlot(ConstTrackRing ring, uint32_t index);

// Calls visit(const TrackPoint&) for every valid point, oldest first.
template <typename Visit>
void forEachTrackPoint(ConstTrackRing ring, Visit visit) {
  TrackRingRange range;
  if (!trackRingRange(ring, range)) return;
  for (uint32_t i = range.wrappedFrom; i < kTrackSlots; ++i) visit(trackRingSlot(ring, i));
  for (uint32_t i = 0; i < range.end; ++i) visit(trackRingSlot(ring, i));
}

std::vector<TrackPoint> trackRingPoints(ConstTrackRing ring);

// Stores the next point (an impossible header starts an empty ring), the header last, so
// that a process killed at any moment leaves a ring that reads as valid.
void appendTrackPoint(TrackRing ring, Semicircles lon, Semicircles lat, bool startsSegment);

}  // namespace orvel
