#include "map/img/rgn_stream.h"

namespace orvel {
namespace {

// Reads bits least significant first. Positions past the end read as zero bits, so callers
// bound their loops by count() and may overshoot safely.
class BitCursor {
 public:
  explicit BitCursor(Bytes bytes) : bytes_(bytes), count_(static_cast<uint64_t>(bytes.size()) * 8) {}

  uint64_t used() const { return pos_; }
  uint64_t count() const { return count_; }

  // width 1 to 32. The bits lie in at most five bytes from the current one, gathered at once
  // rather than a byte at a time: reading deltas is most of the cost of decoding a level.
  uint32_t read(int width) {
    const uint64_t index = pos_ >> 3;
    const unsigned bit = static_cast<unsigned>(pos_ & 7);
    uint64_t window = 0;
    if (index + 5 <= bytes_.size()) {
      const uint8_t* p = bytes_.data() + index;
      window = uint64_t{p[0]} | uint64_t{p[1]} << 8 | uint64_t{p[2]} << 16 | uint64_t{p[3]} << 24 |
               uint64_t{p[4]} << 32;
    } else {
      for (uint64_t i = 0; index + i < bytes_.size() && i < 5; ++i) window |= uint64_t{bytes_[index + i]} << (8 * i);
    }
    pos_ += static_cast<uint64_t>(width);
    return static_cast<uint32_t>((window >> bit) & ((uint64_t{1} << width) - 1));
  }

 private:
  Bytes bytes_;
  uint64_t count_;
  uint64_t pos_ = 0;
};

struct AxisCoding {
  bool sharedSign = false;
  bool negative = false;  // the shared sign
  int width = 0;
};

int baseWidth(int nibble) { return nibble <= 9 ? nibble : 2 * nibble - 9; }

AxisCoding readAxisCoding(BitCursor& bits) {
  AxisCoding c;
  c.sharedSign = bits.read(1) != 0;
  if (c.sharedSign) c.negative = bits.read(1) != 0;
  return c;
}

// Deltas are computed in unsigned arithmetic: a corrupt stream may escape often enough to
// overflow 32 bits, which must wrap rather than be undefined.
uint32_t readDelta(BitCursor& bits, const AxisCoding& c) {
  if (c.sharedSign) {
    const uint32_t v = bits.read(c.width);
    return c.negative ? 0u - v : v;
  }
  // Own sign: the value equal to the top bit alone is an escape that adds top - 1 to the
  // magnitude and continues with another value of the same width.
  const uint32_t top = 1u << (c.width - 1);
  uint32_t v = bits.read(c.width);
  uint32_t extra = 0;
  while (v == top) {
    extra += top - 1u;
    v = bits.read(c.width);
  }
  return v >= top ? v - 2u * top - extra : v + extra;
}

// The delta in map units, wrapped into 24 bits the way the coordinates are.
uint32_t scaleDelta(uint32_t delta, int shift) {
  int32_t d = static_cast<int32_t>(delta << (static_cast<unsigned>(shift) & 31u));
  if (d >= 0x800000) d -= 0x1000000;
  return static_cast<uint32_t>(d);
}

}  // namespace

int decodePolyStream(Bytes stream, MapPoint first, int shift, uint8_t bitSizes, bool extraBit,
                     MapPoint* out) {
  BitCursor bits(stream);
  AxisCoding xc = readAxisCoding(bits);
  AxisCoding yc = readAxisCoding(bits);
  xc.width = baseWidth(bitSizes & 0x0F) + 2 + (xc.sharedSign ? 0 : 1);
  yc.width = baseWidth(bitSizes >> 4) + 2 + (yc.sharedSign ? 0 : 1);
  const uint64_t perPoint = static_cast<uint64_t>((extraBit ? 1 : 0) + xc.width + yc.width);

  out[0] = first;
  int kept = 1;
  uint32_t x = static_cast<uint32_t>(first.x);
  uint32_t y = static_cast<uint32_t>(first.y);
  while (bits.used() + perPoint <= bits.count()) {
    if (extraBit) bits.read(1);
    const uint32_t dx = readDelta(bits, xc);
    const uint32_t dy = readDelta(bits, yc);
    x += scaleDelta(dx, shift);
    y += scaleDelta(dy, shift);
    if (kept < kMaxObjectPoints) out[kept++] = MapPoint{static_cast<int32_t>(x), static_cast<int32_t>(y)};
  }
  return kept;
}

}  // namespace orvel
