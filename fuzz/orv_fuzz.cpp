// libFuzzer target: arbitrary bytes opened as an .orv map, loaded, and decoded at several
// views as the map page would draw them (labels read, points projected; see map_walk.h).
// The signature, version and stored size are written over the input's first bytes so
// that nearly every input gets past recognition and into the code tables and object data.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>

#include "map/current_map.h"
#include "map/orv/orv_format.h"
#include "map_walk.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  // Exactly the input's size, so that a read past the end is caught.
  std::unique_ptr<uint8_t[]> exact(new uint8_t[size]);
  if (size > 0) std::memcpy(exact.get(), data, size);
  if (size >= orvel::kOrvMinSize) {
    std::memcpy(exact.get(), "GORV", 4);
    const auto length = static_cast<uint32_t>(size);
    for (size_t i = 0; i < 4; ++i) {
      exact[orvel::kOrvVersionAt + i] = static_cast<uint8_t>(orvel::kOrvVersion >> (8 * i));
      exact[orvel::kOrvFileSizeAt + i] = static_cast<uint8_t>(length >> (8 * i));
    }
  }
  const orvel::Bytes file(exact.get(), size);

  std::unique_ptr<orvel::MapFile> map = orvel::createMapFile(file);
  if (!map || !map->load(file)) return 0;
  orvel::fuzz::walkMap(*map, {16u, 26u}, 16u);
  return 0;
}
