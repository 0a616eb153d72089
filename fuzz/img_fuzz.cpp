// libFuzzer target: arbitrary bytes opened as a map file, loaded, and decoded at several
// views as the map page would draw them (labels read, points projected; see map_walk.h).
// Finds reads outside the bytes (AddressSanitizer), undefined arithmetic
// (UndefinedBehaviorSanitizer) and crashes in loading and decoding.
#include <cstddef>
#include <cstdint>
#include <memory>

#include "map/current_map.h"
#include "map_walk.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  // libFuzzer's buffer is exactly the input's size, so a read past the end is caught.
  const orvel::Bytes bytes(data, size);
  std::unique_ptr<orvel::MapFile> map = orvel::createMapFile(bytes);
  if (!map || !map->load(bytes)) return 0;
  orvel::fuzz::walkMap(*map, {9u, 20u}, 9u);
  return 0;
}
