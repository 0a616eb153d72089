#pragma once
// Least-significant-bit-first reading over the whole file. Bytes past the end read as zero
// and are never touched, so a decoder may run on whatever the file says; callers compare
// bytePos() with the end of the data they meant to read and stop there.
#include <cstddef>
#include <cstdint>
#include <span>

namespace orvel {

class OrvBitReader {
 public:
  OrvBitReader(std::span<const uint8_t> file, size_t pos) : file_(file), pos_(pos) {}

  uint8_t byteAt(size_t index) const { return index < file_.size() ? file_[index] : 0; }

  // The next bits as a lookup index: the 8 bits from the current bit, read at byte `pos`.
  uint32_t peek8(size_t pos) const {
    return ((uint32_t{byteAt(pos)} | uint32_t{byteAt(pos + 1)} << 8) >> bit_) & 0xFF;
  }

  uint32_t readBit() {
    const uint32_t value = (byteAt(pos_) >> bit_) & 1u;
    advance(1);
    return value;
  }
  // `count` bits, first bit in bit 0; bits beyond the 32nd are consumed and dropped.
  uint32_t readBits(uint32_t count) {
    const uint32_t kept = count < 32 ? count : 32;
    // The kept bits lie in at most five bytes from the current one; gathered a byte at a
    // time rather than a bit at a time, which is most of the cost of walking object data.
    const uint32_t bytes = (bit_ + kept + 7) / 8;
    uint64_t window = 0;
    for (uint32_t i = 0; i < bytes; ++i) window |= uint64_t{byteAt(pos_ + i)} << (8 * i);
    const auto value = static_cast<uint32_t>((window >> bit_) & ((uint64_t{1} << kept) - 1));
    advance(count);
    return value;
  }
  // Moves on by `count` bits.
  void advance(uint64_t count) {
    const uint64_t bits = bit_ + count;
    const uint64_t bytes = bits >> 3;
    // Once far past any file the position stops growing: every later read gives zeros.
    pos_ = bytes > kFar || pos_ > kFar ? kFar : pos_ + static_cast<size_t>(bytes);
    bit_ = static_cast<unsigned>(bits & 7);
  }
  // Sets the byte position after a lookup walked `bytes` bytes and `bits` more bits.
  void setPosition(size_t pos, unsigned bit) {
    pos_ = pos;
    bit_ = bit;
  }

  size_t pos() const { return pos_; }
  unsigned bit() const { return bit_; }
  // The position in bits from the start of the file, to tell whether a decode consumed any.
  uint64_t bitPosition() const { return uint64_t{pos_} * 8 + bit_; }
  // The first whole byte after the bits consumed.
  size_t nextByte() const { return pos_ + (bit_ != 0 ? 1 : 0); }

 private:
  static constexpr uint64_t kFar = uint64_t{1} << 40;

  std::span<const uint8_t> file_;
  size_t pos_ = 0;
  unsigned bit_ = 0;
};

}  // namespace orvel
