// libFuzzer target: any bytes as a GPX file. The reader takes a file whole or refuses it and
// keeps nothing; what it takes, written out as Orvel writes GPX, reads back with the same
// tracks, segments, points, routes and waypoints.
#include <cstddef>
#include <cstdint>

#include <QByteArray>
#include <QString>

#include "fuzz_check.h"
#include "gpx/gpx_reader.h"
#include "gpx/gpx_writer.h"

namespace {

bool sameShape(const orvel::GpxData& a, const orvel::GpxData& b) {
  if (a.tracks.size() != b.tracks.size() || a.routes.size() != b.routes.size() ||
      a.waypoints.size() != b.waypoints.size()) {
    return false;
  }
  for (size_t t = 0; t < a.tracks.size(); ++t) {
    if (a.tracks[t].segments.size() != b.tracks[t].segments.size()) return false;
    for (size_t s = 0; s < a.tracks[t].segments.size(); ++s) {
      if (a.tracks[t].segments[s].points.size() != b.tracks[t].segments[s].points.size()) return false;
    }
  }
  for (size_t r = 0; r < a.routes.size(); ++r) {
    if (a.routes[r].points.size() != b.routes[r].points.size()) return false;
  }
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const QByteArray bytes = QByteArray::fromRawData(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
  orvel::GpxData read;
  QString error;
  if (!orvel::readGpx(bytes, read, error)) {
    FUZZ_CHECK(read == orvel::GpxData{});  // nothing half-read is kept
    FUZZ_CHECK(!error.isEmpty());
    return 0;
  }
  orvel::GpxData again;
  FUZZ_CHECK(orvel::readGpx(orvel::gpxDocument(read), again, error));
  FUZZ_CHECK(sameShape(read, again));
  return 0;
}
