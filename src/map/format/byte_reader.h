#pragma once
// A forward cursor over bytes in place. Every read checks the end first and says whether it
// succeeded, so a record is read as one chain: r.u8(a) && r.u16le(b) && r.u24le(c).
// A failed read leaves the output and the cursor unchanged.
#include <cstddef>
#include <cstdint>
#include <span>

namespace orvel {

class ByteReader {
 public:
  ByteReader() = default;
  explicit ByteReader(std::span<const uint8_t> bytes, size_t pos = 0) : bytes_(bytes), pos_(pos) {}

  size_t pos() const { return pos_; }
  size_t size() const { return bytes_.size(); }
  // Bytes left from the cursor; 0 when the cursor lies past the end.
  size_t remaining() const { return pos_ < bytes_.size() ? bytes_.size() - pos_ : 0; }
  bool atEnd() const { return remaining() == 0; }
  std::span<const uint8_t> bytes() const { return bytes_; }

  // Moves the cursor; a position past the end is allowed, but every later read fails.
  void seek(size_t pos) { pos_ = pos; }
  bool skip(size_t count) {
    if (count > remaining()) return false;
    pos_ += count;
    return true;
  }

  bool u8(uint8_t& out) { return readLe(1, out); }
  bool u16le(uint16_t& out) { return readLe(2, out); }
  bool u24le(uint32_t& out) { return readLe(3, out); }
  bool u32le(uint32_t& out) { return readLe(4, out); }
  // The next `count` bytes as a view into the same buffer.
  bool bytes(size_t count, std::span<const uint8_t>& out) {
    if (pos_ > bytes_.size() || count > remaining()) return false;
    out = bytes_.subspan(pos_, count);
    pos_ += count;
    return true;
  }

 private:
  template <typename T>
  bool readLe(size_t width, T& out) {
    if (width > remaining()) return false;
    T value = 0;
    for (size_t i = 0; i < width; ++i) value |= static_cast<T>(static_cast<T>(bytes_[pos_ + i]) << (8 * i));
    out = value;
    pos_ += width;
    return true;
  }

  std::span<const uint8_t> bytes_;
  size_t pos_ = 0;
};

// Little-endian values at a fixed offset, for headers read field by field.
// Each returns false (and leaves `out` alone) when the value does not lie wholly inside.
inline bool readU8At(std::span<const uint8_t> b, size_t off, uint8_t& out) { return ByteReader(b, off).u8(out); }
inline bool readU16At(std::span<const uint8_t> b, size_t off, uint16_t& out) { return ByteReader(b, off).u16le(out); }
inline bool readU24At(std::span<const uint8_t> b, size_t off, uint32_t& out) { return ByteReader(b, off).u24le(out); }
inline bool readU32At(std::span<const uint8_t> b, size_t off, uint32_t& out) { return ByteReader(b, off).u32le(out); }

}  // namespace orvel
