// libFuzzer target: any bytes as a MapSource file. A file read as whole is read the same when
// runs cut short by a kill are accepted too, and every track's points lie in its own bytes.
#include <cstddef>
#include <cstdint>

#include "fuzz_check.h"
#include "track/mps_reader.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::span<const uint8_t> bytes(data, size);
  const std::optional<orvel::MpsFile> whole = orvel::readMpsFile(bytes);
  const std::optional<orvel::MpsFile> cut = orvel::readMpsFile(bytes, true);
  if (whole) {
    FUZZ_CHECK(cut.has_value());
    FUZZ_CHECK(cut->tracks.size() == whole->tracks.size());
  }
  if (cut) {
    for (const orvel::MpsTrack& track : cut->tracks) {
      FUZZ_CHECK(track.pointBytes.size() == track.points.size() * orvel::kMpsPointSize);
      FUZZ_CHECK(track.pointBytes.empty() || (track.pointBytes.data() >= data && track.pointBytes.data() + track.pointBytes.size() <= data + size));
    }
  }
  return 0;
}
