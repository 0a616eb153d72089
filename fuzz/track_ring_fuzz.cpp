// libFuzzer target: any bytes as Tracks.bin, sized as opening the store sizes the file
// (cut, or filled with zeros, to 80008 bytes). The ring reads without harm; the points
// appended after it are the newest, in order, after what was there (the oldest dropping
// out of a full ring); a ring that read as empty starts afresh.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "fuzz_check.h"
#include "track/track_ring.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace orvel;
  std::vector<uint8_t> file(data, data + std::min(size, kTrackFileSize));
  file.resize(kTrackFileSize);
  const TrackRing ring(file.data(), kTrackFileSize);
  std::vector<TrackPoint> expected = trackRingPoints(ring);
  FUZZ_CHECK(expected.size() <= kTrackSlots);

  // A few points derived from the input, the first of them beginning a segment.
  const uint32_t seed =
      size >= 4 ? static_cast<uint32_t>(data[size - 1] | data[size - 2] << 8 | data[size - 3] << 16) : 7;
  const uint32_t count = 1 + seed % 5;
  for (uint32_t i = 0; i < count; ++i) {
    const Semicircles lon = static_cast<Semicircles>(seed * 2654435761u + i);
    const Semicircles lat = static_cast<Semicircles>((seed + i) * 40503u) >> 1;
    appendTrackPoint(ring, lon, lat, i == 0);
    expected.push_back({lon, (static_cast<uint32_t>(lat) & ~kTrackBreakFlag) | (i == 0 ? kTrackBreakFlag : 0)});
  }
  if (expected.size() > kTrackSlots) expected.erase(expected.begin(), expected.end() - kTrackSlots);
  const std::vector<TrackPoint> now = trackRingPoints(ring);
  FUZZ_CHECK(now.size() == expected.size());
  for (size_t i = 0; i < now.size(); ++i) {
    FUZZ_CHECK(now[i].lon == expected[i].lon && now[i].latitude() == expected[i].latitude());
    // Only the oldest point of a full ring may have gained a break.
    if (i > 0 || now.size() < kTrackSlots) FUZZ_CHECK(now[i].latAndBreak == expected[i].latAndBreak);
  }
  return 0;
}
