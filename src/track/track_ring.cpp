#include "track/track_ring.h"

#include <atomic>

#include "track/le_bytes.h"

namespace orvel {
namespace {

constexpr size_t kNextIndexOffset = 0;
constexpr size_t kWrappedOffset = 4;
constexpr size_t kPointsOffset = 8;

uint8_t* slot(TrackRing ring, uint32_t index) { return ring.data() + kPointsOffset + 8 * size_t{index}; }

}  // namespace

bool trackRingRange(ConstTrackRing ring, TrackRingRange& range) {
  const uint32_t next = le::load32(ring.data() + kNextIndexOffset);
  const uint32_t wrapped = le::load32(ring.data() + kWrappedOffset);
  if (next >= kTrackSlots || wrapped > 1) return false;
  range.wrappedFrom = wrapped ? next : kTrackSlots;
  range.end = next;
  return true;
}

TrackPoint trackRingSlot(ConstTrackRing ring, uint32_t index) {
  const uint8_t* p = ring.data() + kPointsOffset + 8 * size_t{index};
  return {static_cast<Semicircles>(le::load32(p)), le::load32(p + 4)};
}

std::vector<TrackPoint> trackRingPoints(ConstTrackRing ring) {
  std::vector<TrackPoint> points;
  points.reserve(kTrackSlots);
  forEachTrackPoint(ring, [&](const TrackPoint& p) { points.push_back(p); });
  return points;
}

void appendTrackPoint(TrackRing ring, Semicircles lon, Semicircles lat, bool startsSegment) {
  TrackRingRange range;
  const bool valid = trackRingRange(ring, range);
  const uint32_t next = valid ? range.end : 0;
  const uint32_t breakBit = startsSegment ? kTrackBreakFlag : 0;
  const uint32_t after = next + 1 == kTrackSlots ? 0 : next + 1;
  if ((valid && range.wrappedFrom != kTrackSlots) || after == 0) {
    // The ring is full once this point is in: the slot after it becomes the oldest. Marking
    // that point as a segment start changes nothing drawn (nothing comes before the oldest),
    // but while the slot below is rewritten, the half-written point that the header still
    // counts as the oldest is cut off from the rest instead of joined to it by a false line.
    uint8_t* oldest = slot(ring, after) + 4;
    le::store32(oldest, le::load32(oldest) | kTrackBreakFlag);
  }
  // A kill can come between any two instructions: the fences keep the compiler from moving
  // a store across them, so the file sees the stores in the order written here.
  std::atomic_signal_fence(std::memory_order_seq_cst);
  uint8_t* p = slot(ring, next);
  le::store32(p, static_cast<uint32_t>(lon));
  le::store32(p + 4, (static_cast<uint32_t>(lat) & ~kTrackBreakFlag) | breakBit);
  std::atomic_signal_fence(std::memory_order_seq_cst);
  // The header last, one word at a time. At the wrap `wrapped` goes first: the full ring
  // then stays visible (its newest point, cut off, standing first) rather than reading as
  // empty.
  if (next + 1 == kTrackSlots) {
    le::store32(ring.data() + kWrappedOffset, 1);
    std::atomic_signal_fence(std::memory_order_seq_cst);
    le::store32(ring.data() + kNextIndexOffset, 0);
  } else {
    if (!valid) le::store32(ring.data() + kWrappedOffset, 0);
    std::atomic_signal_fence(std::memory_order_seq_cst);
    le::store32(ring.data() + kNextIndexOffset, next + 1);
  }
}

}  // namespace orvel
