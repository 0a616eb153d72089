#pragma once
// The program's own compact map format (*.orv). Only recognition exists so far; loading
// refuses every file.
#include <cstdint>

#include "map/map_file.h"

namespace orvel {

inline constexpr uint32_t kOrvVersion = 2;
inline constexpr size_t kOrvMinSize = 564;

class OrvMapFile final : public MapFile {
 public:
  // "GORV", version 2, and a stored size equal to the file's size.
  bool probe(Bytes file) override;
  bool load(Bytes file) override;
  void decode(const MapView& view, const MapRect& visible, ObjectConsumer& consumer) override;
  void draw(QPainter& painter, const MapView& view, const MapRect& visible) override;
  int getLabel(uint32_t labelRef, char16_t* out) override;
  void describe(MapFacts& facts) const override;
};

}  // namespace orvel
