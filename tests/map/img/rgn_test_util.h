#pragma once
// Builders for hand-made RGN bit streams and records, and a consumer that keeps copies.
#include <cstdint>
#include <vector>

#include "map/format/map_file.h"

namespace orvel::test {

// Appends bits least significant first, the order the stream decoder reads them.
class BitWriter {
 public:
  void put(uint32_t value, int width) {
    for (int i = 0; i < width; ++i) {
      if (bits_ % 8 == 0) bytes_.push_back(0);
      if ((value >> i) & 1u) bytes_.back() = static_cast<uint8_t>(bytes_.back() | (1u << (bits_ % 8)));
      ++bits_;
    }
  }
  const std::vector<uint8_t>& bytes() const { return bytes_; }
  size_t bits() const { return bits_; }

 private:
  std::vector<uint8_t> bytes_;
  size_t bits_ = 0;
};

struct KeptObject {
  ObjectKind kind;
  uint32_t type;
  std::vector<MapPoint> points;
  uint32_t labelRef;
};

class KeepingConsumer : public ObjectConsumer {
 public:
  void onObject(const MapObject& o) override {
    objects.push_back({o.kind, o.type, {o.points.begin(), o.points.end()}, o.labelRef});
  }
  std::vector<KeptObject> objects;
};

inline void putLe(std::vector<uint8_t>& out, uint32_t value, int bytes) {
  for (int i = 0; i < bytes; ++i) out.push_back(static_cast<uint8_t>(value >> (8 * i)));
}

}  // namespace orvel::test
