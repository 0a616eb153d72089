#pragma once
// Little-endian values in the track and waypoint files, read and written in place.
// Callers check the bounds; these only move the bytes. A value is moved with one copy, so a
// process killed between two stores never leaves half of one 32-bit field behind.
#include <bit>
#include <cstdint>
#include <cstring>

namespace orvel::le {

template <typename T>
T toLittle(T value) {
  if constexpr (std::endian::native == std::endian::big) {
    if constexpr (sizeof(T) == 2) return static_cast<T>(__builtin_bswap16(value));
    if constexpr (sizeof(T) == 4) return static_cast<T>(__builtin_bswap32(value));
    if constexpr (sizeof(T) == 8) return static_cast<T>(__builtin_bswap64(value));
  }
  return value;
}

inline uint16_t load16(const uint8_t* p) {
  uint16_t v;
  std::memcpy(&v, p, sizeof v);
  return toLittle(v);
}
inline uint32_t load32(const uint8_t* p) {
  uint32_t v;
  std::memcpy(&v, p, sizeof v);
  return toLittle(v);
}
inline uint64_t load64(const uint8_t* p) {
  uint64_t v;
  std::memcpy(&v, p, sizeof v);
  return toLittle(v);
}
inline float loadFloat(const uint8_t* p) { return std::bit_cast<float>(load32(p)); }
inline double loadDouble(const uint8_t* p) { return std::bit_cast<double>(load64(p)); }

inline void store16(uint8_t* p, uint16_t v) {
  v = toLittle(v);
  std::memcpy(p, &v, sizeof v);
}
inline void store32(uint8_t* p, uint32_t v) {
  v = toLittle(v);
  std::memcpy(p, &v, sizeof v);
}
inline void store64(uint8_t* p, uint64_t v) {
  v = toLittle(v);
  std::memcpy(p, &v, sizeof v);
}
inline void storeFloat(uint8_t* p, float v) { store32(p, std::bit_cast<uint32_t>(v)); }
inline void storeDouble(uint8_t* p, double v) { store64(p, std::bit_cast<uint64_t>(v)); }

}  // namespace orvel::le
