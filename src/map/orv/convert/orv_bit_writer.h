#pragma once
// Least-significant-bit-first writing: the first bit written is bit 0 of the first byte.
#include <cstddef>
#include <cstdint>
#include <vector>

namespace orvel {

class OrvBitWriter {
 public:
  // The low `count` bits of `value` (count <= 32), bit 0 first.
  void put(uint32_t value, unsigned count) {
    for (unsigned i = 0; i < count; ++i) putBit((value >> i) & 1u);
  }
  void putBit(uint32_t bit) {
    if (bit_ == 0) bytes_.push_back(0);
    if (bit) bytes_.back() = static_cast<uint8_t>(bytes_.back() | (1u << bit_));
    bit_ = (bit_ + 1) & 7u;
  }
  // Pads with zero bits to the next whole byte.
  void align() { bit_ = 0; }
  size_t size() const { return bytes_.size(); }
  const std::vector<uint8_t>& bytes() const { return bytes_; }
  std::vector<uint8_t>& bytes() { return bytes_; }

 private:
  std::vector<uint8_t> bytes_;
  unsigned bit_ = 0;
};

}  // namespace orvel
