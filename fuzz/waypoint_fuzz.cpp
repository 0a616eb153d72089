// libFuzzer target: any bytes as Waypoints.bin. The reader keeps the whole records before
// any damage; those records, saved as the store saves them, read back to the same bytes.
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "fuzz_check.h"
#include "track/waypoint_file.h"

namespace {

std::string saved(const std::vector<orvel::Waypoint>& waypoints) {
  std::string bytes = orvel::waypointFileHeader();
  for (const orvel::Waypoint& w : waypoints) orvel::appendWaypointRecord(bytes, w);
  return bytes;
}

std::span<const uint8_t> asBytes(const std::string& text) {
  return {reinterpret_cast<const uint8_t*>(text.data()), text.size()};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::vector<orvel::Waypoint> found;
  orvel::parseWaypointFile({data, size}, found);
  const std::string first = saved(found);
  std::vector<orvel::Waypoint> again;
  FUZZ_CHECK(orvel::parseWaypointFile(asBytes(first), again));
  FUZZ_CHECK(again.size() == found.size());
  FUZZ_CHECK(saved(again) == first);
  return 0;
}
